/// Rows on their way from the reader of a document to the writer of the store.
#pragma once

#include "linux/health/samples.h"
#include "linux/import/export_reader.h"
#include "linux/import/import_report.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

struct SeriesName {
    std::string type;
    std::string unit;
    auto operator<=>(const SeriesName&) const = default;
};

/// What the end of a document tells.
struct DocumentEnd {
    ImportResult<ReadOutcome> outcome;
    ExportedPerson person;
    std::optional<Milliseconds> exportDate;
};

/// A run of a document. Rows number series and sources in the order in which the document's batches introduce
/// them.
struct ImportBatch {
    std::vector<SeriesName> newSeries;
    std::vector<SourceDescription> newSources;
    std::vector<SampleRow> samples;
    std::vector<WorkoutRow> workouts;
    std::size_t workoutBytes = 0;  // of all texts and routes of the workouts
    ImportCounts counts;           // of this run, as far as the reader knows: without what was added
    std::uint64_t bytesRead = 0;   // of the document, at the end of the run
    std::optional<DocumentEnd> end;
};

/// Takes batches over.
class BatchSink {
public:
    virtual ~BatchSink() = default;
    /// False when no more are wanted.
    virtual bool take(ImportBatch batch) = 0;
};

}  // namespace pedvar
