#include "linux/sqlite/database_file.h"

#include <array>
#include <fstream>
#include <string_view>

namespace pedvar {

bool isDatabase(const std::filesystem::path& file) {
    constexpr std::string_view beginning("SQLite format 3\0", 16);
    std::array<char, beginning.size()> found{};
    std::ifstream(file, std::ios::binary).read(found.data(), found.size());
    return std::string_view(found.data(), found.size()) == beginning;
}

}  // namespace pedvar
