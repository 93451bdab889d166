// Every predicate, validator and conversion on arbitrary text: results are exactly 0 or 1,
// nothing reads or writes past its buffer, and StrIsValidIPv4Address agrees with a plain reading
// of its rule.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "../harness.h"
#include "tessera/strlib.h"

namespace {

void check_flag(int32_t result) {
  if (result != 0 && result != 1) std::abort();
}

// Four dot-separated fields of decimal digits, each at most 255 once leading zeros go.
bool plain_ipv4(std::string_view s) {
  std::vector<std::string_view> fields;
  for (std::size_t start = 0;;) {
    const std::size_t dot = s.find('.', start);
    fields.push_back(s.substr(start, dot == std::string_view::npos ? dot : dot - start));
    if (dot == std::string_view::npos) break;
    start = dot + 1;
  }
  if (fields.size() != 4) return false;
  for (std::string_view field : fields) {
    if (field.empty() || field.find_first_not_of("0123456789") != std::string_view::npos) {
      return false;
    }
    field.remove_prefix(std::min(field.find_first_not_of('0'), field.size()));
    if (field.size() > 3 || (field.size() == 3 && field > "255")) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  if (size == 0) return 0;
  const uint8_t selector = data[0];
  const auto text = tessera::fuzz::exact_text(data + 1, size - 1);
  const char *s = text.get();

  for (auto predicate : {StrIsEmpty,
                         StrIsHexValue,
                         StrIsOctalValue,
                         StrIsNumeric,
                         StrIsNumericDot,
                         StrIsAlphabetic,
                         StrIsAlphanumeric,
                         StrIsAlphanumericUnderScore,
                         StrIsBoolean,
                         StrIsUINT8,
                         StrIsUINT16,
                         StrIsUINT32,
                         StrIsUINT64,
                         StrIsINT8,
                         StrIsINT16,
                         StrIsINT32,
                         StrIsINT64,
                         StrToBoolean,
                         StrIsIpAddress,
                         StrIsValidIPv4Address,
                         StrIsDomainName,
                         StrIsValidDomainName,
                         StrIsValidEmailAddress}) {
    check_flag(predicate(s));
  }
  check_flag(StrValidateType(s, selector % 16));
  check_flag(StrIsInCharacterDomain(s, "0123456789."));
  check_flag(StrCharactersExist(s, ",; "));
  if (StrIsValidIPv4Address(s) != (plain_ipv4(s) ? 1 : 0)) std::abort();
  static_cast<void>(StrToUINT8(s) + StrToUINT16(s) + StrToUINT32(s) + StrToUINT64(s));
  static_cast<void>(StrToINT8(s) + StrToINT16(s) + StrToINT32(s) + StrToINT64(s));

  tessera::fuzz::Block out(static_cast<char *>(std::malloc(4)));
  check_flag(StrToIpAddress(s, reinterpret_cast<uint8_t *>(out.get()), 4));
  if (std::string_view(StrVerifyAddr(s)).size() > 99) std::abort();
  const uint32_t room = selector % 24;
  tessera::fuzz::Block when(static_cast<char *>(std::malloc(room == 0 ? 1 : room)));
  check_flag(StrToDisplayTime(s, when.get(), room));
  tessera::fuzz::forget_reports();
  return 0;
}
