#include "scratch.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tessera::test {

ScratchDir::ScratchDir() {
  std::string pattern = std::filesystem::temp_directory_path() / "tessera-test-XXXXXX";
  if (::mkdtemp(pattern.data()) == nullptr) {
    std::abort();
  }
  path_ = pattern;
}

ScratchDir::~ScratchDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string read_file(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void write_file(const std::string &path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

}  // namespace tessera::test
