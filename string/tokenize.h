// Internal piece of the tokenizer, visible to the unit tests of the static build.
#pragma once

#include <cstddef>

namespace tessera::strlib {

// The longest token StrTokenize delivers; longer ones are cut to this many characters.
inline constexpr std::size_t kMaxTokenCharacters = 1027;

}  // namespace tessera::strlib

// Grows the argument vector `argv`, whose size in bytes `size` points at, by `text`: makes a new
// block with the old tokens and `text`, frees `argv` and returns the new block. When the block
// can't be allocated it returns `argv` as it was: the text is lost, `*size` stays increased.
extern "C" char **strArgvAppend(char **argv, const char *text, std::size_t *size);
