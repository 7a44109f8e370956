/// Files that are databases.
#pragma once

#include <filesystem>

namespace pedvar {

/// Whether the file begins as databases of SQLite do.
bool isDatabase(const std::filesystem::path& file);

}  // namespace pedvar
