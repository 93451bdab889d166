// The in-place transforms and the copying filters on exact-size buffers: they never grow a text
// or touch a byte past it, and their results say whether the text got shorter.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "../harness.h"
#include "tessera/strlib.h"

using tessera::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  if (size == 0) return 0;
  const char set[] = {static_cast<char>(data[0] == 0 ? ' ' : data[0]), ',', '\0'};
  const auto original = tessera::fuzz::exact_text(data + 1, size - 1);
  const std::string before(original.get());

  auto text = tessera::fuzz::exact_text(data + 1, size - 1);
  const int32_t cleaned = StrSeparatorClean(text.get());
  const std::string_view after(text.get());
  check(after.size() <= before.size());
  check(cleaned == (after.size() != before.size() ? 1 : 0));
  if (before.find(',') == std::string::npos) check(after == before);
  check(after.find(" ,") == std::string_view::npos && after.find(", ") == std::string_view::npos);
  check(after == "," || after.find(",,") == std::string_view::npos);

  text = tessera::fuzz::exact_text(data + 1, size - 1);
  const int32_t trimmed = StrTrim2End(text.get(), set);
  const std::string_view trimmed_text(text.get());
  check(trimmed == (trimmed_text.size() != before.size() ? 1 : 0));
  check(before.find(trimmed_text) != std::string::npos);

  text = tessera::fuzz::exact_text(data + 1, size - 1);
  check(StrTrimLeft(text.get()) == 1 && StrTrimRight(text.get()) == 1);
  check(StrToLower(text.get()) == 1 && StrToUpper(text.get()) == 1);

  const std::size_t room = 2 * before.size() + 1;
  tessera::fuzz::Block dst(static_cast<char *>(std::malloc(room)));
  StrAddLineFeed(dst.get(), original.get());
  StrEscapePercent(dst.get(), original.get());
  tessera::fuzz::forget_reports();
  return 0;
}
