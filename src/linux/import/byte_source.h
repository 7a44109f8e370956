/// Bytes from wherever an export lies.
#pragma once

#include "linux/import/import_error.h"

#include <filesystem>
#include <memory>
#include <span>

namespace pedvar {

/// A stream of bytes that is asked for more.
class ByteSource {
public:
    virtual ~ByteSource() = default;

    /// Fills the front of `buffer`, which is not empty, and tells how many bytes it filled; 0 at the end.
    virtual ImportResult<std::size_t> read(std::span<char> buffer) = 0;

    /// The number of all bytes as far as it is known beforehand.
    virtual std::uint64_t size() const = 0;
};

ImportResult<std::unique_ptr<ByteSource>> openFile(const std::filesystem::path& path);

/// All of a source, or an error when it is longer than `longest` bytes.
ImportResult<std::string> readAll(ByteSource& source, std::size_t longest);

}  // namespace pedvar
