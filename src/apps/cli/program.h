/// The program from its arguments to its exit code.
#pragma once

#include "apps/cli/error.h"

#include <span>

namespace pedvar {

/// Runs the command that `arguments` (without the program's name) ask for. Writes the answer to standard output,
/// everything else to standard error.
ExitCode runProgram(std::span<const char* const> arguments);

}  // namespace pedvar
