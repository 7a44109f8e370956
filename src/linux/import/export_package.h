/// Finding the documents of a health export in what a person names: a file, an archive, a folder.
#pragma once

#include "linux/import/byte_source.h"
#include "linux/import/zip_archive.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// An export document: a file, or an entry of an archive.
struct ExportDocument {
    std::filesystem::path file;
    std::optional<ZipEntry> entry;
    std::uint64_t size = 0;

    ImportResult<std::unique_ptr<ByteSource>> open() const;
};

/// The export documents in `input`, found by what they contain, at least one. In a folder files and archives are
/// looked at down to four levels; links are not followed.
ImportResult<std::vector<ExportDocument>> findExports(const std::filesystem::path& input);

}  // namespace pedvar
