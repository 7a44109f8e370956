/// What reading and writing JSON have in common.
#pragma once

#include <cstddef>
#include <string_view>

namespace pedvar {

/// How many bytes at the start of `text` stand for themselves within quotation marks.
std::size_t plainLength(std::string_view text);

}  // namespace pedvar
