#include "linux/import/health_importer.h"

#include "linux/import/batch_queue.h"
#include "linux/import/export_interpreter.h"
#include "linux/import/export_package.h"
#include "linux/import/route_files.h"
#include "platform/health_store.h"

#include <fmt/format.h>

#include <exception>
#include <thread>
#include <utility>
#include <vector>

namespace pedvar {

namespace {

/// Reads all documents, one after the other, into `queue`.
void readDocuments(const std::vector<ExportDocument>& documents, BatchQueue& queue) {
    for (const ExportDocument& document : documents) {
        const auto routes = routesOf(document);
        ExportInterpreter interpreter(queue, *routes, {});
        const auto source = document.open();
        interpreter.finish(source ? readExport(**source, interpreter) : std::unexpected(source.error()));
    }
}

std::string displayName(const ExportDocument& document) {
    std::string name = document.file.string();
    if (document.entry) name += ": " + document.entry->name;
    // A name in an archive is anybody's text and may end up on a terminal.
    for (char& c : name) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    }
    return name;
}

/// Writes the batches of one document after the other, with the numbers that the store gives its series and
/// sources.
class Import {
public:
    using ProgressHandler = std::function<void(const ImportProgress&)>;

    Import(SampleWriter& writer, ProgressHandler progress, std::stop_token stop)
        : writer_(writer), progress_(std::move(progress)), stop_(std::move(stop)) {}

    ImportReport run(std::span<const std::filesystem::path> inputs);

private:
    void find(std::span<const std::filesystem::path> inputs);
    void writeDocuments();
    StoreResult<> write(ImportBatch& batch);
    StoreResult<> addNumbers(const ImportBatch& batch);
    void finishDocument(const DocumentEnd& end);
    void refreshTotals();
    void tellProgress() const {
        if (progress_) progress_(state_);
    }

    SampleWriter& writer_;
    ProgressHandler progress_;
    std::stop_token stop_;
    ImportReport report_;
    ImportProgress state_;
    std::vector<ExportDocument> documents_;
    std::vector<std::size_t> files_;    // where in the report each document stands
    bool hasBegun_ = false;             // what the store counts as one import
    std::size_t current_ = 0;           // the document that is being written
    std::uint64_t bytesBefore_ = 0;     // of the documents before it
    std::vector<std::int32_t> series_;  // the store's number of each of the document's
    std::vector<std::int32_t> sources_;
    std::optional<Milliseconds> personDate_;
};

ImportReport Import::run(std::span<const std::filesystem::path> inputs) {
    find(inputs);
    writeDocuments();
    if (!report_.failure && !report_.wasStopped) refreshTotals();
    for (const ImportedFile& file : report_.files) report_.counts += file.counts;
    return std::move(report_);
}

void Import::find(std::span<const std::filesystem::path> inputs) {
    for (const std::filesystem::path& input : inputs) {
        auto found = findExports(input);
        if (!found) {
            report_.files.push_back({.name = input.string(), .error = found.error()});
            continue;
        }
        for (ExportDocument& document : *found) {
            files_.push_back(report_.files.size());
            report_.files.push_back({.name = displayName(document)});
            state_.bytesTotal += document.size;
            documents_.push_back(std::move(document));
        }
    }
}

void Import::writeDocuments() {
    BatchQueue queue;
    const std::jthread reader([this, &queue] {
        try {
            readDocuments(documents_, queue);
            queue.close();
        } catch (...) {
            queue.fail(std::current_exception());
        }
    });
    // However this function is left, the reader must not wait for it.
    struct Abandoning {
        BatchQueue& queue;
        ~Abandoning() { queue.abandon(); }
    } const abandoning{queue};

    while (auto batch = queue.next()) {
        if (stop_.stop_requested()) {
            report_.wasStopped = true;
            return;
        }
        if (auto written = write(*batch); !written) {
            report_.failure = std::move(written.error());
            return;
        }
        state_.bytesDone = bytesBefore_ + batch->bytesRead;
        state_.rows += batch->counts.read;
        if (batch->end) finishDocument(*batch->end);
        tellProgress();
    }
}

StoreResult<> Import::write(ImportBatch& batch) {
    ImportCounts counts = batch.counts;
    if (auto numbered = addNumbers(batch); !numbered) return numbered;
    if (!batch.samples.empty() || !batch.workouts.empty()) {
        for (SampleRow& row : batch.samples) {
            row.series = series_[static_cast<std::size_t>(row.series)];
            row.source = sources_[static_cast<std::size_t>(row.source)];
        }
        for (WorkoutRow& row : batch.workouts) row.source = sources_[static_cast<std::size_t>(row.source)];
        const auto written = writer_.write(batch.samples, batch.workouts);
        if (!written) return std::unexpected(written.error());
        counts.added = written->samplesAdded;
        counts.alreadyThere = static_cast<std::int64_t>(batch.samples.size()) - written->samplesAdded;
        counts.workouts = written->workoutsAdded;
        counts.routes = written->routesAdded;
    }
    report_.files[files_[current_]].counts += counts;
    return {};
}

StoreResult<> Import::addNumbers(const ImportBatch& batch) {
    if (!hasBegun_ && !(batch.newSeries.empty() && batch.newSources.empty())) {
        if (auto begun = writer_.beginImport(); !begun) return begun;
        hasBegun_ = true;
    }
    for (const SeriesName& name : batch.newSeries) {
        const auto number = writer_.series(name.type, name.unit);
        if (!number) return std::unexpected(number.error());
        series_.push_back(*number);
    }
    for (const SourceDescription& description : batch.newSources) {
        const auto number = writer_.source(description);
        if (!number) return std::unexpected(number.error());
        sources_.push_back(*number);
    }
    return {};
}

void Import::finishDocument(const DocumentEnd& end) {
    ImportedFile& file = report_.files[files_[current_]];
    if (end.outcome) {
        file.endedEarly = end.outcome->end == ReadOutcome::End::early;
        file.error = end.outcome->error;
        if (file.endedEarly && !file.error) {
            file.error = ImportError{
                ImportError::Kind::damaged,
                Phrase("\"{}\" ends in the middle. What is there was imported; copy it from the phone again and "
                       "import it for the rest.",
                       {file.name})};
        }
    } else {
        file.error = end.outcome.error();
        if (file.error->kind == ImportError::Kind::notAnExport) {
            file.error->message = Phrase("\"{}\" cannot be imported. {}", {file.name, file.error->message});
        }
    }
    if (!personDate_ || end.exportDate >= personDate_) {
        if (end.person.dateOfBirth) report_.person.dateOfBirth = end.person.dateOfBirth;
        if (end.person.sex) report_.person.sex = end.person.sex;
        personDate_ = end.exportDate;
    }
    bytesBefore_ += documents_[current_].size;
    ++current_;
    series_.clear();
    sources_.clear();
}

void Import::refreshTotals() {
    const auto refreshed = writer_.refreshTotals([this](double share) {
        state_.totalsDone = share;
        tellProgress();
        return !stop_.stop_requested();
    });
    if (!refreshed) report_.failure = refreshed.error();
}

}  // namespace

ImportReport HealthImporter::run(std::span<const std::filesystem::path> inputs,
                                 const std::function<void(const ImportProgress&)>& progress,
                                 std::stop_token stop) {
    return Import(*writer_, progress, std::move(stop)).run(inputs);
}

}  // namespace pedvar
