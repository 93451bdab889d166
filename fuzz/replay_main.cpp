// Runs a fuzz harness once over every file of the given corpus folders, for builds without
// libFuzzer. Any crash or sanitizer report fails the test that runs it.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv) {
  std::size_t inputs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto &entry : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (!entry.is_regular_file()) {
        continue;
      }
      std::ifstream file(entry.path(), std::ios::binary);
      const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
      ++inputs;
    }
  }
  std::printf("replayed %zu inputs\n", inputs);
  return 0;
}
