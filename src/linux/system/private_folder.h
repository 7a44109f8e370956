/// Folders that nobody else can look into.
#pragma once

#include <filesystem>

namespace pedvar {

/// Makes the folder and those above it that are missing, for their owner only. 0, or the system's error number.
int makePrivateFolder(const std::filesystem::path& folder);

}  // namespace pedvar
