/// Routes that older exports hold point by point.
#pragma once

#include "linux/health/route_text.h"
#include "linux/import/export_values.h"
#include "linux/import/tag.h"

#include <cstddef>
#include <optional>

namespace pedvar {

/// Turns `<Location>` elements into the GPX text that newer exports have in files of their own.
class LocationRoute {
public:
    /// Adds a point; one without a place or a time is left out, as is what it does not know (-1).
    void add(const Tag& location, ExportDateParser& dates);

    /// The route file; none without points.
    std::optional<WorkoutRouteFile> finish() const { return text_.finish(); }

    std::size_t size() const { return text_.size(); }

private:
    RouteText text_;
};

}  // namespace pedvar
