/// Zip archives, zip64 too, read without unpacking them.
#pragma once

#include "linux/import/byte_source.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace pedvar {

struct ZipEntry {
    std::string name;        // as the archive has it: text to compare and to show, never a path on disk
    std::uint64_t size = 0;  // unpacked, as the directory states it
    bool isEncrypted = false;
    std::uint64_t directoryOffset = 0;  // where the archive's directory describes it
    std::uint64_t directoryIndex = 0;
};

/// The files of an archive in the order of its directory; folders are left out.
ImportResult<std::vector<ZipEntry>> listZip(const std::filesystem::path& archive);

/// The unpacked bytes of an entry, stored or deflated. Each source reads on its own. A read fails where the packed
/// bytes break off or do not give the checksum of the directory.
ImportResult<std::unique_ptr<ByteSource>> openZipEntry(const std::filesystem::path& archive,
                                                       const ZipEntry& entry);

}  // namespace pedvar
