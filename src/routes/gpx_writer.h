/// Writing routes as GPX documents.
#pragma once

#include "core/date.h"
#include "platform/location.h"
#include "routes/iso8601.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// Writes one GPX 1.1 document with one track of one segment, point by point, so that it need not fit in memory.
/// Coordinates read back to the same bits.
class GPXWriter {
public:
    /// Takes the document piece by piece, some hundred kilobytes at a time.
    using Sink = std::move_only_function<void(std::string_view)>;

    /// `type` is a text for people; `start` is the time of the document.
    GPXWriter(Sink sink, std::string_view name, std::string_view type, Date start);

    /// A point without finite coordinates is left out, which no GPX document can hold. Likewise an altitude that
    /// is not finite, and a time outside of the years 0 to 9999.
    void add(const CLLocation& location);
    /// Ends the document. To be called once, after the last point.
    void finish();

private:
    void flush();

    Sink sink_;
    std::vector<char> piece_;
    std::size_t used_ = 0;  // of the piece
    ISO8601Formatter dateFormatter_;
};

/// A whole document in memory.
std::string writeGPX(std::span<const CLLocation> locations, std::string_view name, std::string_view type,
                     Date start);

}  // namespace pedvar
