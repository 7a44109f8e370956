/// Finding the documents of a health export in what a person names: a file, an archive, a folder.
#pragma once

#include "linux/import/byte_source.h"
#include "linux/import/zip_archive.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
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

/// The route files that came with a document.
class RouteFiles {
public:
    virtual ~RouteFiles() = default;

    /// The text of the GPX file that `reference` ("/workout-routes/route_2024-05-01_6.30am.gpx") names; none when
    /// it did not come along or is none. The reference is compared with the names that are there, never used as a
    /// path.
    virtual std::optional<std::string> read(std::string_view reference) = 0;
};

/// For a file the folder "workout-routes" beside it, for an entry the archive.
std::unique_ptr<RouteFiles> routesOf(const ExportDocument& document);

}  // namespace pedvar
