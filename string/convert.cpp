// Typed value validation and conversion: whether a text is a value of a type code, and the
// conversions that turn a text into a number or a boolean. Numbers are parsed 32 bits wide on
// every target (string/number.h), so a tool gets the same value on the controller and elsewhere.
#include <cstring>

#include "string/domains.h"
#include "string/number.h"
#include "tessera/strlib.h"
#include "trace/report.h"

namespace {

using tessera::strlib::flag;
using tessera::strlib::to_signed32;
using tessera::strlib::to_unsigned32;

// The longest text an integer code accepts: sign and "0x" included, for every width.
constexpr std::size_t kMaxIntegerText = 10;

// Codes 2 to 7: the number of a numeric text of at most 10 characters against the type's range.
int32_t validate_integer(const char *value, uint32_t type) {
  if (value == nullptr) return 0;
  if (std::strlen(value) > kMaxIntegerText) {
    REPORT_DEBUG("Value is too long for datatype\n");
    return 0;
  }
  if (StrIsNumeric(value) == 0 && StrIsHexValue(value) == 0) return 0;
  const uint32_t number = to_unsigned32(value, 0);
  const auto signed_number = static_cast<int32_t>(number);
  switch (type) {
    case STR_TYPE_UINT8:
      return flag(number <= UINT8_MAX);
    case STR_TYPE_INT8:
      return flag(signed_number >= INT8_MIN && signed_number <= INT8_MAX);
    case STR_TYPE_UINT16:
      return flag(number <= UINT16_MAX);
    case STR_TYPE_INT16:
      return flag(signed_number >= INT16_MIN && signed_number <= INT16_MAX);
    default:  // UINT32 and INT32: any number that got here
      return 1;
  }
}

// Steps 1 and 2 of every conversion: false for null (after the assertion); a text that isn't a
// valid value of `type` asserts and is converted all the same.
bool check_conversion(const char *s, uint32_t type) {
  if (!REPORT_ASSERT(s != nullptr)) return false;
  static_cast<void>(REPORT_ASSERT(StrValidateType(s, type) == 1));
  return true;
}

// The base the conversions read with: 16 for a "0x" text, else 10.
unsigned conversion_base(const char *s) {
  return StrIsHexValue(s) == 1 ? 16U : 10U;
}

// The checked conversion of `s` as strtoul and as strtol read it; 0 for null.
uint32_t convert_unsigned(const char *s, uint32_t type) {
  return check_conversion(s, type) ? to_unsigned32(s, conversion_base(s)) : 0;
}
int32_t convert_signed(const char *s, uint32_t type) {
  return check_conversion(s, type) ? to_signed32(s, conversion_base(s)) : 0;
}

}  // namespace

extern "C" {

int32_t StrValidateType(const char *value, uint32_t type) {
  switch (type) {
    case STR_TYPE_ANY:
      return 1;
    case STR_TYPE_UINT8:
    case STR_TYPE_INT8:
    case STR_TYPE_UINT16:
    case STR_TYPE_INT16:
    case STR_TYPE_UINT32:
    case STR_TYPE_INT32:
      return validate_integer(value, type);
    case STR_TYPE_BOOLEAN:
      return flag(StrEqual(value, "1") == 1 || StrEqual(value, "0") == 1);
    case STR_TYPE_IP_ADDRESS:
      return StrIsIpAddress(value);
    default:  // none, the 64-bit codes (no rule), and codes without a rule
      return 0;
  }
}

int32_t StrIsUINT8(const char *s) {
  return StrValidateType(s, STR_TYPE_UINT8);
}
int32_t StrIsUINT16(const char *s) {
  return StrValidateType(s, STR_TYPE_UINT16);
}
int32_t StrIsUINT32(const char *s) {
  return StrValidateType(s, STR_TYPE_UINT32);
}
int32_t StrIsUINT64(const char *s) {
  return StrValidateType(s, STR_TYPE_UINT64);
}
int32_t StrIsINT8(const char *s) {
  return StrValidateType(s, STR_TYPE_INT8);
}
int32_t StrIsINT16(const char *s) {
  return StrValidateType(s, STR_TYPE_INT16);
}
int32_t StrIsINT32(const char *s) {
  return StrValidateType(s, STR_TYPE_INT32);
}
int32_t StrIsINT64(const char *s) {
  return StrValidateType(s, STR_TYPE_INT64);
}

int32_t StrToBoolean(const char *s) {
  if (!REPORT_ASSERT(s != nullptr)) return 0;
  static_cast<void>(REPORT_ASSERT(StrIsBoolean(s) == 1));
  if (StrEqualNoCase(s, "Enabled") == 1) return 1;
  if (StrEqualNoCase(s, "Disabled") == 1) return 0;
  return flag(to_signed32(s, 10) != 0);
}

uint32_t StrToUINT8(const char *s) {
  return convert_unsigned(s, STR_TYPE_UINT8) & 0xFFU;
}

uint32_t StrToUINT16(const char *s) {
  return convert_unsigned(s, STR_TYPE_UINT16) & 0xFFFFU;
}

uint32_t StrToUINT32(const char *s) {
  return convert_unsigned(s, STR_TYPE_UINT32);
}

uint64_t StrToUINT64(const char *s) {
  return convert_unsigned(s, STR_TYPE_UINT64);
}

int32_t StrToINT8(const char *s) {
  return static_cast<int8_t>(convert_signed(s, STR_TYPE_INT8));
}

int32_t StrToINT16(const char *s) {
  return static_cast<int16_t>(convert_signed(s, STR_TYPE_INT16));
}

int32_t StrToINT32(const char *s) {
  if (!check_conversion(s, STR_TYPE_INT32)) return 0;
  if (StrIsHexValue(s) == 1) return static_cast<int32_t>(to_unsigned32(s, 16));
  return to_signed32(s, 10);
}

int64_t StrToINT64(const char *s) {
  if (!check_conversion(s, STR_TYPE_INT64)) return 0;
  return to_signed32(s, 10);
}

}  // extern "C"
