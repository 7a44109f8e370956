/// Running the program as a person does.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace pedvar {

/// What became of one run.
struct Outcome {
    int exitCode = 0;
    std::string output;  // standard output
    std::string errors;  // standard error
};

/// Runs the program in `folder`, in Berlin, with English habits and a UTF-8 terminal's character set.
/// `environment` has further variables ("NAME=value"), which win.
Outcome runPedvar(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                  const std::vector<std::string>& environment = {});

/// Compares with a file of tests/cli/golden. With PEDVAR_REFRESH_GOLDEN in the environment the file is written
/// anew instead; look at the difference before you keep it.
void checkGolden(const std::string& name, const std::string& text);

}  // namespace pedvar
