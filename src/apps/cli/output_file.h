/// Files that a person asked for.
#pragma once

#include "apps/cli/error.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace pedvar {

/// Writes a file beside the wanted one, which takes its place when it is whole: whoever reads meanwhile finds the
/// old one or the new one. What was not kept vanishes.
class OutputFile {
public:
    enum class Existing { keep, replace };

    /// Refuses a file that is there unless it may be replaced, and one that cannot be written.
    static CommandResult<OutputFile> create(const std::filesystem::path& path, Existing existing);

    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&&) = delete;
    ~OutputFile();

    /// Where it is written, for those who do not write it through `write`.
    const std::filesystem::path& unfinished() const { return unfinished_; }

    /// A failure is told by `keep`.
    void write(std::string_view text);
    CommandResult<void> keep();

private:
    OutputFile(std::filesystem::path target, Existing existing, std::filesystem::path unfinished, int descriptor)
        : target_(std::move(target)),
          existing_(existing),
          unfinished_(std::move(unfinished)),
          descriptor_(descriptor) {}

    std::filesystem::path target_;
    Existing existing_;
    std::filesystem::path unfinished_;
    int descriptor_;
    int failure_ = 0;  // an error number of the system
};

}  // namespace pedvar
