/// What `--help` shows.
#pragma once

#include "apps/cli/texts.h"

#include <string>

namespace CLI {
class App;
}

namespace pedvar {

/// The help of a command, or of the program itself, in the person's language: descriptions, headings and the names
/// of values are looked up only now. `name` is what the person types for it.
std::string helpText(const CLI::App& command, const std::string& name, const Texts& text);

}  // namespace pedvar
