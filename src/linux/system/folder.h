/// The folder of a person's data.
#pragma once

#include <filesystem>

namespace pedvar {

/// Makes the folder, for its owner only, and those that are missing above it. 0, also when it is there already;
/// otherwise an error number.
int makeFolder(const std::filesystem::path& path);

}  // namespace pedvar
