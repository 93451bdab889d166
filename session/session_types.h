// The session type keywords shared by the identity and listing code.
#pragma once

#include <cstdint>
#include <string_view>

namespace tessera::session {

// The type code of a keyword, compared whole and case-sensitively; 0 when no keyword matches.
[[nodiscard]] std::uint32_t type_code(std::string_view keyword) noexcept;

// The type keyword of a child kind: "vKVM" for 0, "vMedia" for 1, null for any other kind.
[[nodiscard]] const char *child_keyword(std::uint32_t kind) noexcept;

}  // namespace tessera::session
