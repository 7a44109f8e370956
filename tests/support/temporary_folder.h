/// A folder of its own for a test, gone afterwards.
#pragma once

#include "core/check.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace pedvar {

/// Where no disk slows thousands of writes down, if there is such a place.
inline std::filesystem::path memoryFolder() {
    const std::filesystem::path memory = "/dev/shm";
    return std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
}

class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::filesystem::path& within = std::filesystem::temp_directory_path())
        : path_((within / "pedvar-test-XXXXXX").string()) {
        check(mkdtemp(path_.data()) != nullptr, "no temporary folder can be made");
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }

    std::filesystem::path path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path() / name; }

private:
    std::string path_;
};

inline void writeFile(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace pedvar
