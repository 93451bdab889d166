// Build step of `tessera catalogue`: writes the library's property catalogue as C initializers
// ({legacy path, store key, type, default}, one row a line, the all-empty first row left out)
// into the file named by its argument. The catalogue is internal to libtessera.so.1, so the
// command gets it from the library's own table at build time rather than from a copy.
#include <cstdio>
#include <string>

#include "orb_cfg/orb_cfg_internal.h"

namespace {

std::string literal(const char *text) {
  std::string out = "\"";
  for (const char *c = text; *c != '\0'; ++c) {
    if (*c == '"' || *c == '\\') {
      out += '\\';
    }
    out += *c;
  }
  return out + "\"";
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s OUTPUT\n", argv[0]);
    return 2;
  }
  std::FILE *out = std::fopen(argv[1], "w");
  if (out == nullptr) {
    std::perror(argv[1]);
    return 1;
  }
  using tessera::orb_cfg::kPropertyRowCount;
  using tessera::orb_cfg::property_table;
  for (int32_t i = 1; i < kPropertyRowCount; ++i) {
    const auto &row = property_table[static_cast<std::size_t>(i)];
    std::fprintf(out, "{%s, %s, %d, %s},\n", literal(row.legacy_path()).c_str(),
                 literal(row.store_key()).c_str(), row.type, literal(row.default_value()).c_str());
  }
  return std::fclose(out) == 0 ? 0 : 1;
}
