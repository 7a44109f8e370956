/// Real exports of many phones, where a collection of them lies beside the project.
#include "linux/import/export_package.h"
#include "linux/import_support.h"
#include "platform/health_store.h"
#include "support/temporary_folder.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <functional>

using namespace pedvar;
using nlohmann::json;

namespace {

const std::filesystem::path corpus = PEDVAR_CORPUS;

/// Counts the elements of a document that an expectation counts.
class Counting : public ExportHandler {
public:
    json counts{
        {"records", json::object()}, {"workouts", json::object()}, {"routes_files", 0}, {"route_locations", 0}};
    int malformed = 0;

    void startElement(const Tag& tag) override {
        std::string scratch;
        const auto count = [&](const char* group, std::string_view attribute) {
            json& number = counts[group][std::string(valueOf(*tag.find(attribute), scratch))];
            number = number.is_null() ? 1 : number.get<int>() + 1;
        };
        if (tag.name == "Record") count("records", "type");
        if (tag.name == "Workout") count("workouts", "workoutActivityType");
        if (tag.name == "FileReference") counts["routes_files"] = counts["routes_files"].get<int>() + 1;
        if (tag.name == "Location") counts["route_locations"] = counts["route_locations"].get<int>() + 1;
    }
    void endElement(std::string_view) override {}
    void malformedMarkup() override { ++malformed; }
    bool wantsMore(std::uint64_t) override { return true; }
};

Gathered interpreted(const ExportDocument& document) {
    Gathered gathered;
    const auto routes = routesOf(document);
    ExportInterpreter interpreter(gathered, *routes, {});
    interpreter.finish(readExport(**document.open(), interpreter));
    return gathered;
}

double stepSum(const Gathered& gathered) {
    double sum = 0;
    for (const SampleRow& row : gathered.samples) {
        const SeriesName& series = gathered.series[static_cast<std::size_t>(row.series)];
        if (series.type == HKQuantityTypeIdentifierStepCount) sum += row.value;
    }
    return sum;
}

void checkDocument(const ExportDocument& document, const json& expected) {
    Counting counting;
    const auto outcome = readExport(**document.open(), counting);
    REQUIRE(outcome);
    CHECK(counting.malformed == 0);
    for (const auto& [name, value] : counting.counts.items()) CHECK(value == expected[name]);
    // An independent reader that stops at a broken document type has no say in what comes after it.
    CHECK((outcome->end == ReadOutcome::End::complete) == expected["wellformed"].get<bool>());

    const Gathered gathered = interpreted(document);
    int categories = 0, records = 0, workouts = 0;
    for (const auto& [type, count] : expected["records"].items()) {
        records += count.get<int>();
        if (!type.starts_with("HKQuantityTypeIdentifier")) categories += count.get<int>();
    }
    for (const auto& [type, count] : expected["workouts"].items()) workouts += count.get<int>();
    CHECK(gathered.counts.read == records);
    CHECK(gathered.counts.skipped.total() == categories);
    CHECK(gathered.workouts.size() == static_cast<std::size_t>(workouts));
    CHECK(stepSum(gathered) == expected["step_sum"].get<double>());
}

}  // namespace

TEST_CASE("the exports of a collection read with the counts of an independent reader") {
    const auto expectations = corpus / "expected_export_open.json";
    if (!std::filesystem::exists(expectations)) {
        MESSAGE("no collection beside the project");
        return;
    }
    const json files = json::parse(readFile(expectations));
    for (const auto& [name, expected] : files.items()) {
        CAPTURE(name);
        const auto found = findExports(corpus / name);
        if (expected.contains("zip_error")) {
            CHECK(found.error().kind == ImportError::Kind::damaged);
        } else if (expected.contains("health_documents")) {
            REQUIRE(found);
            REQUIRE(found->size() == expected["health_documents"].size());
            for (const ExportDocument& document : *found) {
                checkDocument(document, expected["health_documents"][document.entry->name]);
            }
        } else if (expected["root"] != "HealthData") {
            CHECK(found.error().kind == ImportError::Kind::notAnExport);
        } else {
            REQUIRE(found);
            checkDocument(found->front(), expected);
        }
    }
}

TEST_CASE("a collected package has the routes and totals of its workouts") {
    const auto package = corpus / "export/ahanalyzer__fragments.zip";
    if (!std::filesystem::exists(package)) {
        MESSAGE("no collection beside the project");
        return;
    }
    const Gathered gathered = interpreted(findExports(package)->front());
    std::size_t routes = 0;
    for (const WorkoutRow& row : gathered.workouts) {
        routes += row.routes.size();
        CAPTURE(row.activityType);
        CHECK(row.duration <= static_cast<double>(row.end - row.start) / 1000 + 1);
    }
    CHECK(routes == 4);
    const auto& half = gathered.workouts[4];  // a half marathon whose ascent only its one part has
    CHECK(half.distance == doctest::Approx(21132.8));
    CHECK(std::ranges::count(half.metadata,
                             std::pair<std::string, std::string>("HKElevationAscended", "42875 cm")) == 1);
}
