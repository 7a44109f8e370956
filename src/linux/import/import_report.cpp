#include "linux/import/import_report.h"

#include <algorithm>
#include <numeric>

namespace pedvar {

std::string_view nameOf(ImportError::Kind kind) {
    switch (kind) {
        case ImportError::Kind::notFound:
            return "notFound";
        case ImportError::Kind::unreadable:
            return "unreadable";
        case ImportError::Kind::empty:
            return "empty";
        case ImportError::Kind::notAnExport:
            return "notAnExport";
        case ImportError::Kind::noExportInside:
            return "noExportInside";
        case ImportError::Kind::damaged:
            return "damaged";
        case ImportError::Kind::passwordProtected:
            return "passwordProtected";
        case ImportError::Kind::unsupportedEncoding:
            return "unsupportedEncoding";
    }
    return "unreadable";
}

std::string_view nameOf(SkipReason reason) {
    switch (reason) {
        case SkipReason::notAQuantity:
            return "notAQuantity";
        case SkipReason::unknownUnit:
            return "unknownUnit";
        case SkipReason::badValue:
            return "badValue";
        case SkipReason::badDate:
            return "badDate";
        case SkipReason::missingAttribute:
            return "missingAttribute";
        case SkipReason::malformed:
            return "malformed";
        case SkipReason::tooVaried:
            return "tooVaried";
    }
    return "malformed";
}

std::int64_t SkipCounts::total() const {
    return std::accumulate(counts_.begin(), counts_.end(), std::int64_t{0});
}

SkipCounts& SkipCounts::operator+=(const SkipCounts& other) {
    std::ranges::transform(counts_, other.counts_, counts_.begin(), std::plus{});
    return *this;
}

ImportCounts& ImportCounts::operator+=(const ImportCounts& other) {
    read += other.read;
    added += other.added;
    alreadyThere += other.alreadyThere;
    skipped += other.skipped;
    workoutsRead += other.workoutsRead;
    workouts += other.workouts;
    workoutsSkipped += other.workoutsSkipped;
    routes += other.routes;
    routesMissing += other.routesMissing;
    repairedBytes += other.repairedBytes;
    return *this;
}

bool ImportReport::isComplete() const {
    return !failure && !wasStopped &&
           std::ranges::none_of(files, [](const ImportedFile& file) { return file.endedEarly || file.error; });
}

}  // namespace pedvar
