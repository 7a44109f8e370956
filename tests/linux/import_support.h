/// Documents, rows and archives for tests of the import.
#pragma once

#include "linux/import/export_interpreter.h"
#include "linux/import_traces.h"

#include <doctest/doctest.h>
#include <fmt/format.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

/// Route files by the end of the reference.
class MemoryRoutes : public RouteFiles {
public:
    std::map<std::string, std::string, std::less<>> files;

    std::optional<std::string> read(std::string_view reference) override {
        const auto found = files.find(reference);
        return found == files.end() ? std::nullopt : std::optional(found->second);
    }
};

/// Everything that a document's batches hold, in one.
class Gathered : public BatchSink {
public:
    std::vector<SeriesName> series;
    std::vector<SourceDescription> sources;
    std::vector<SampleRow> samples;
    std::vector<WorkoutRow> workouts;
    ImportCounts counts;
    std::optional<DocumentEnd> end;
    int batches = 0;

    bool take(ImportBatch batch) override {
        series.insert(series.end(), batch.newSeries.begin(), batch.newSeries.end());
        sources.insert(sources.end(), batch.newSources.begin(), batch.newSources.end());
        samples.insert(samples.end(), batch.samples.begin(), batch.samples.end());
        for (WorkoutRow& row : batch.workouts) workouts.push_back(std::move(row));
        counts += batch.counts;
        end = std::move(batch.end);
        ++batches;
        return true;
    }
};

inline Gathered interpret(std::string_view content, MemoryRoutes routes = {},
                          ExportInterpreter::Limits limits = {}) {
    Gathered gathered;
    const std::string document = fmt::format("<HealthData locale=\"en_DE\">{}</HealthData>", content);
    TextSource source(document);
    ExportInterpreter interpreter(gathered, routes, limits);
    interpreter.finish(readExport(source, interpreter));
    CHECK(gathered.counts.read ==
          static_cast<std::int64_t>(gathered.samples.size()) + gathered.counts.skipped.total());
    return gathered;
}

/// Attributes of a record, each changed by name: `record({{"value", "7"}})`; an empty value leaves one out.
inline std::string record(const std::map<std::string, std::string>& changes = {}, std::string_view children = {}) {
    std::map<std::string, std::string> attributes{{"type", "HKQuantityTypeIdentifierStepCount"},
                                                  {"unit", "count"},
                                                  {"sourceName", "Anna’s iPhone"},
                                                  {"startDate", "2024-05-01 06:30:00 +0200"},
                                                  {"endDate", "2024-05-01 06:35:00 +0200"},
                                                  {"value", "120"}};
    for (const auto& [name, value] : changes) attributes[name] = value;
    std::string text = "<Record";
    for (const auto& [name, value] : attributes) {
        if (!value.empty()) text += fmt::format(" {}=\"{}\"", name, value);
    }
    return children.empty() ? text + "/>" : fmt::format("{}>{}</Record>", text, children);
}

}  // namespace pedvar
