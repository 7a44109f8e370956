/// Telling UTF-8 from other bytes.
#pragma once

#include <cstddef>
#include <string_view>

namespace pedvar {

/// U+FFFD, which stands for bytes that are no UTF-8.
inline constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

/// The number of bytes, 1 to 4, of the well-formed character that `text` begins with; 0 when it begins with none.
std::size_t characterLength(std::string_view text);

}  // namespace pedvar
