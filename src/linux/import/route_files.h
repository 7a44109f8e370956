/// The route files of a health export.
#pragma once

#include "linux/import/export_package.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

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
