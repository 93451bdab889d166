/* String library: predicates, typed validation, address checks, transforms, tokenizer. */
#ifndef TESSERA_STRLIB_H
#define TESSERA_STRLIB_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* Type codes of StrValidateType. */
#define STR_TYPE_ANY 0U
#define STR_TYPE_NONE 1U
#define STR_TYPE_UINT8 2U
#define STR_TYPE_INT8 3U
#define STR_TYPE_UINT16 4U
#define STR_TYPE_INT16 5U
#define STR_TYPE_UINT32 6U
#define STR_TYPE_INT32 7U
#define STR_TYPE_UINT64 8U
#define STR_TYPE_INT64 9U
#define STR_TYPE_BOOLEAN 10U
#define STR_TYPE_IP_ADDRESS 14U

/* --- Predicates. Each returns exactly 1 (true) or 0 (false). ------------------------------- */

/* Number of bytes before the terminator; 0 for null. */
TESSERA_API unsigned int StrLength(const char *s);
/* 1 if `s` has no characters; null asserts and gives 0. */
TESSERA_API int32_t StrIsEmpty(const char *s);
/* 1 if the texts are byte for byte equal; a null argument asserts and gives 0. */
TESSERA_API int32_t StrEqual(const char *a, const char *b);
/* 1 if the texts are equal ignoring case (strcasecmp); a null argument asserts and gives 0. */
TESSERA_API int32_t StrEqualNoCase(const char *a, const char *b);
/* 1 if `needle` occurs in `haystack`; a null argument asserts and gives 0. */
TESSERA_API int32_t StrFind(const char *haystack, const char *needle);
/* 1 if every character of `s` is one of `domain`'s. A leading "0x" is skipped, so "0x" alone
 * lies in every domain. Null or empty `s`, or a null domain, gives 0. */
TESSERA_API int32_t StrIsInCharacterDomain(const char *s, const char *domain);
/* 1 if no character of `s` is one of `chars` (after a leading "0x"), 0 as soon as one is.
 * Null or empty `s`, or null `chars`, gives 0. */
TESSERA_API int32_t StrCharactersExist(const char *s, const char *chars);
/* 1 for "0x" followed by hexadecimal digits (lower-case x only). */
TESSERA_API int32_t StrIsHexValue(const char *s);
/* 1 for a leading '0' and octal digits. */
TESSERA_API int32_t StrIsOctalValue(const char *s);
/* 1 for decimal digits behind an optional '-' ("0x" prefix allowed). */
TESSERA_API int32_t StrIsNumeric(const char *s);
/* 1 for digits and dots behind an optional '-'. */
TESSERA_API int32_t StrIsNumericDot(const char *s);
/* 1 for letters only. */
TESSERA_API int32_t StrIsAlphabetic(const char *s);
/* 1 for letters and digits only. */
TESSERA_API int32_t StrIsAlphanumeric(const char *s);
/* 1 for letters, digits and underscores only. */
TESSERA_API int32_t StrIsAlphanumericUnderScore(const char *s);
/* 1 for the texts "1" and "0" only; null asserts twice and gives 0. */
TESSERA_API int32_t StrIsBoolean(const char *s);

/* --- Typed validation and conversion. -------------------------------------------------------- */

/* 1 if `value` is a valid value of type code `type` (STR_TYPE_*), else 0. Integer codes accept
 * at most 10 characters of decimal, "0x" hexadecimal or '0' octal text within the type's range. */
TESSERA_API int32_t StrValidateType(const char *value, uint32_t type);
/* StrValidateType with the code of the named type. The 64-bit checks accept no text. */
TESSERA_API int32_t StrIsUINT8(const char *s);
TESSERA_API int32_t StrIsUINT16(const char *s);
TESSERA_API int32_t StrIsUINT32(const char *s);
TESSERA_API int32_t StrIsUINT64(const char *s);
TESSERA_API int32_t StrIsINT8(const char *s);
TESSERA_API int32_t StrIsINT16(const char *s);
TESSERA_API int32_t StrIsINT32(const char *s);
TESSERA_API int32_t StrIsINT64(const char *s);

/* 1 for "Enabled" (any case) or a non-zero number, 0 for "Disabled" or zero. Texts other than
 * "1" and "0" assert first; null asserts and gives 0. */
TESSERA_API int32_t StrToBoolean(const char *s);
/* The value of a decimal or "0x" hexadecimal text, parsed 32 bits wide and cut to the width of
 * the result. A text that fails its StrIs* check asserts and is converted all the same; null
 * asserts and gives 0. */
TESSERA_API uint32_t StrToUINT8(const char *s);
TESSERA_API uint32_t StrToUINT16(const char *s);
TESSERA_API uint32_t StrToUINT32(const char *s);
TESSERA_API uint64_t StrToUINT64(const char *s);
TESSERA_API int32_t StrToINT8(const char *s);
TESSERA_API int32_t StrToINT16(const char *s);
TESSERA_API int32_t StrToINT32(const char *s);
/* Decimal only: "0x10" gives 0. */
TESSERA_API int64_t StrToINT64(const char *s);

/* --- Address, host and mail checks. ---------------------------------------------------------- */

/* 1 for digits with exactly three dots, neither first nor last; fields are not measured. */
TESSERA_API int32_t StrIsIpAddress(const char *s);
/* 1 for four dot-separated decimal fields, each at most 255 (leading zeros allowed). */
TESSERA_API int32_t StrIsValidIPv4Address(const char *s);
/* Stores the four fields of dotted text `s` in `out`, first field first, each as the low byte of
 * its decimal value. `size` must be 4. 1 if exactly four fields were stored, else 0; bytes stored
 * before a failure stay. */
TESSERA_API int32_t StrToIpAddress(const char *s, uint8_t *out, uint32_t size);
/* The address part of `s`: behind the last ':' when `s` holds both ':' and '.' (an IPv4-mapped
 * IPv6 address), else all of `s`. Points to a static buffer of at most 99 characters that the
 * next call overwrites; not thread-safe. */
TESSERA_API const char *StrVerifyAddr(const char *s);
/* 1 for letters, digits, '-' and '.' with a letter or digit first. */
TESSERA_API int32_t StrIsDomainName(const char *s);
/* 1 for a host name that begins with a letter or digit, holds a dot and a letter, has no two
 * dots side by side and no blank or punctuation from ' ' to '@' other than '-' and '.'. */
TESSERA_API int32_t StrIsValidDomainName(const char *s);
/* 1 for local-part@domain.part with the characters a mail address allows; the local part may be
 * one quoted word. */
TESSERA_API int32_t StrIsValidEmailAddress(const char *s);

/* --- Transforms and tokenizer. --------------------------------------------------------------- */

/* ASCII case folding in place; 1, or 0 with an assertion for null. */
TESSERA_API int32_t StrToLower(char *s);
TESSERA_API int32_t StrToUpper(char *s);
/* Remove leading or trailing bytes outside 0x21 to 0x7E in place; 1, or 0 with an assertion
 * for null. */
TESSERA_API int32_t StrTrimLeft(char *s);
TESSERA_API int32_t StrTrimRight(char *s);
/* Trims the characters of `chars` from both ends of `s` in place, but never its first character;
 * 1 if the text got shorter. */
TESSERA_API int32_t StrTrim2End(char *s, const char *chars);
/* Normalises a comma-separated list in place: blanks around commas, commas at the ends and runs
 * of commas go. 1 if the text got shorter. */
TESSERA_API int32_t StrSeparatorClean(char *s);
/* Copies `src` to `dst` with a carriage return before every line feed. `dst` must hold twice the
 * length of `src` plus one. */
TESSERA_API void StrAddLineFeed(char *dst, const char *src);
/* Copies `src` to `dst` with every '%' doubled. `dst` must hold twice the length of `src` plus
 * one. */
TESSERA_API void StrEscapePercent(char *dst, const char *src);
/* Splits `s` at blanks into a null-terminated argument vector; single or double quotes group
 * blanks into a token and a backslash inside quotes takes the next character literally. Tokens
 * are cut to 1027 characters. The vector and its texts are one heap block: release it with one
 * free(). Null when memory is short. */
TESSERA_API char **StrTokenize(const char *s);
/* Writes the stamp "YYYYMMDDHHMMSS" of `time` as "MM/DD/YYYY HH:MM:SS" to `dst`, a buffer of
 * `size` bytes (at least 20). 1 on success; 0 with a report for bad arguments, leaving `dst`
 * empty. */
TESSERA_API int32_t StrToDisplayTime(const char *time, char *dst, uint32_t size);

TESSERA_END_DECLS

#endif /* TESSERA_STRLIB_H */
