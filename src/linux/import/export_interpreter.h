/// What the elements of an export mean.
#pragma once

#include "linux/import/export_reader.h"
#include "linux/import/export_values.h"
#include "linux/import/import_batch.h"
#include "linux/import/numbering.h"
#include "linux/import/quantity_types.h"
#include "linux/import/raw_text_cache.h"
#include "linux/import/route_files.h"
#include "linux/import/workout_reader.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// Turns a document into batches of rows.
class ExportInterpreter : public ExportHandler {
public:
    /// Each batch but the last holds about `rowsPerBatch` samples or `bytesPerBatch` of the document.
    struct Limits {
        std::size_t rowsPerBatch = 50'000;
        std::uint64_t bytesPerBatch = 32 * 1024 * 1024;
    };

    ExportInterpreter(BatchSink& sink, RouteFiles& routes, Limits limits);

    void startElement(const Tag& tag) override;
    void endElement(std::string_view name) override;
    void malformedMarkup() override;
    bool wantsMore(std::uint64_t bytesRead) override;

    /// Hands over what is left, with the end of the document. What has not been finished in it is dropped: in the
    /// whole document it may turn out to be something else.
    void finish(const ImportResult<ReadOutcome>& outcome);

private:
    enum class Element : std::uint8_t {
        other,
        record,
        metadataEntry,
        workout,
        workoutStatistics,
        workoutActivity,
        workoutRoute,
        fileReference,
        location,
        me,
        exportDate,
    };
    static Element elementNamed(std::string_view name);

    /// The records of one type and unit.
    struct Series {
        std::optional<SkipReason> skip;  // why none of them is taken over
        SeriesName name;
        KeptUnit unit;
        std::optional<std::int32_t> number;
    };
    struct Source {
        SourceDescription description;
        std::optional<std::int32_t> measured;  // number of the source
        std::optional<std::int32_t> typed;     // number of its hand-typed entries
    };
    /// A record whose end is still to come.
    struct OpenRecord {
        Series* series;
        Source* source;
        SampleRow row;
        bool isHandTyped = false;
    };
    using RecordResult = std::expected<OpenRecord, SkipReason>;

    void startInWorkout(Element parent, const Tag& tag);
    RecordResult readRecord(const Tag& tag);
    void finishRecord();
    /// The row with its numbers.
    std::expected<SampleRow, SkipReason> completed(const OpenRecord& record);
    void startWorkout(const Tag& tag);
    void finishWorkout();
    void readPerson(const Tag& tag);

    Series& seriesOf(const Attribute& type, const Attribute* unit);
    Source& sourceOf(const Attribute& name, const Attribute* device);
    void handOver();

    BatchSink* sink_;
    RouteFiles* routes_;
    Limits limits_;
    ImportBatch batch_;
    std::uint64_t batchStart_ = 0;  // bytes of the document before the batch
    bool isWanted_ = true;

    std::vector<Element> path_;  // the open elements
    std::optional<RecordResult> record_;
    std::optional<WorkoutReader> workout_;
    std::optional<SourceDescription> workoutSource_;
    ExportedPerson person_;
    std::optional<Milliseconds> exportDate_;

    ExportDateParser dates_;
    RawTextCache<Series> seriesCache_;
    RawTextCache<Source> sourceCache_;
    Numbering<SeriesName> seriesNumbers_;
    Numbering<SourceDescription> sourceNumbers_;
};

}  // namespace pedvar
