// The tokenizer against the reference splitter of the tests, with the block layout checked and,
// for some inputs, one block allocation failing.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "../harness.h"
#include "heap_seam.h"
#include "tessera/strlib.h"
#include "tests/string/strlib_test.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  if (size == 0) return 0;
  // The first byte chooses an allocation to fail: 0 for none, 1 for the first block, and so on.
  const std::uint32_t fail_at = data[0] % 16 < 4 ? data[0] % 16 : 0;
  const auto text = tessera::fuzz::exact_text(data + 1, size - 1);
  std::vector<std::string> expected = tessera::test::reference_tokens(text.get());
  char **argv = nullptr;
  {
    tessera::test::FailNthAllocation fail(fail_at);
    argv = StrTokenize(text.get());
  }
  if (fail_at == 1) {
    if (argv != nullptr) std::abort();
    return 0;
  }
  if (fail_at > 1 && fail_at - 2 < expected.size())
    expected.erase(expected.begin() + (fail_at - 2));
  const std::vector<std::string> tokens = tessera::test::tokens_of(argv);
  if (tokens != expected || !tessera::test::texts_follow_pointers(argv, tokens)) std::abort();
  std::free(static_cast<void *>(argv));
  return 0;
}
