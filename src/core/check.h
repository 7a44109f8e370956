/// Invariants that hold or end the process.
#pragma once

#include <string_view>

namespace pedvar {

/// Ends the process with `text` on standard error when `condition` is false. For broken invariants only: what a
/// person or a file can cause is an answer, not a check.
void check(bool condition, std::string_view text);

}  // namespace pedvar
