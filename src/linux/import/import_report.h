/// What an import did.
#pragma once

#include "core/personal_metrics.h"
#include "linux/health/sample_writer.h"
#include "linux/import/import_error.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// Why a record was not taken over.
enum class SkipReason {
    notAQuantity,      // a category, a correlation, a goal
    unknownUnit,       // a unit that does not measure what the type does
    badValue,          // not a finite number
    badDate,           // not a date, or an end before its start
    missingAttribute,  // without type, source, unit, value or date
    malformed,         // markup that cannot be read
    tooVaried,         // one more source or type, or a longer name, than any phone has
};
inline constexpr std::size_t skipReasonCount = 7;

/// "notAQuantity", "unknownUnit" ...
std::string_view nameOf(SkipReason reason);

/// Records by the reason for which they were skipped.
class SkipCounts {
public:
    std::int64_t& operator[](SkipReason reason) { return counts_[static_cast<std::size_t>(reason)]; }
    std::int64_t operator[](SkipReason reason) const { return counts_[static_cast<std::size_t>(reason)]; }
    std::int64_t total() const;
    SkipCounts& operator+=(const SkipCounts& other);
    bool operator==(const SkipCounts&) const = default;

private:
    std::array<std::int64_t, skipReasonCount> counts_{};
};

/// `read` is always `added` + `alreadyThere` + all `skipped`.
struct ImportCounts {
    std::int64_t read = 0;  // records, and pieces of malformed markup
    std::int64_t added = 0;
    std::int64_t alreadyThere = 0;
    SkipCounts skipped;
    std::int64_t workoutsRead = 0;
    std::int64_t workouts = 0;         // added
    std::int64_t workoutsSkipped = 0;  // without a source, an activity or dates that can be read
    std::int64_t routes = 0;           // added
    std::int64_t routesMissing = 0;    // named by a workout, not found beside the document
    std::uint64_t repairedBytes = 0;   // control bytes dropped, invalid UTF-8 replaced

    ImportCounts& operator+=(const ImportCounts& other);
};

/// What the person told the phone about themselves.
struct ExportedPerson {
    std::optional<std::chrono::year_month_day> dateOfBirth;
    std::optional<Gender> sex;
};

/// What became of one document, or of an input without one.
struct ImportedFile {
    std::string name;  // the path, for an archive with the entry behind it
    ImportCounts counts;
    bool endedEarly = false;           // the document breaks off; what was there was taken over
    std::optional<ImportError> error;  // why nothing could be taken over or, with `endedEarly`, not all
};

struct ImportReport {
    ImportCounts counts;  // of all files
    std::vector<ImportedFile> files;
    ExportedPerson person;              // of the newest export, as far as it says
    std::optional<StoreError> failure;  // the store could not be written; whole batches before stay
    bool wasStopped = false;            // by the person; whole batches before stay

    /// Everything that was named was read to its end and stored.
    bool isComplete() const;
};

}  // namespace pedvar
