/// Real exports of many phones, where a collection of them lies beside the project.
#include "linux/import/export_package.h"
#include "linux/import/route_files.h"
#include "linux/import_support.h"
#include "platform/health_store.h"
#include "support/temporary_folder.h"

#include <nlohmann/json.hpp>

#include <filesystem>

using namespace pedvar;
using nlohmann::json;

namespace {

const std::filesystem::path corpus = PEDVAR_CORPUS;

Gathered interpreted(const ExportDocument& document) {
    Gathered gathered;
    const auto routes = routesOf(document);
    ExportInterpreter interpreter(gathered, *routes, {});
    interpreter.finish(readExport(**document.open(), interpreter));
    return gathered;
}

void checkDocument(const ExportDocument& document, const json& expected) {
    const Gathered gathered = interpreted(document);
    json records = json::object(), workouts = json::object();
    double steps = 0;
    const auto count = [](json& group, const std::string& name) { group[name] = group.value(name, 0) + 1; };
    for (const SampleRow& row : gathered.samples) {
        const std::string& type = gathered.series[static_cast<std::size_t>(row.series)].type;
        count(records, type);
        if (type == HKQuantityTypeIdentifierStepCount) steps += row.value;
    }
    std::size_t routes = 0;
    for (const WorkoutRow& row : gathered.workouts) {
        count(workouts, row.activityType);
        routes += row.routes.size();
    }
    int categories = 0;
    for (const auto& [type, number] : expected["records"].items()) {
        if (type.starts_with("HKQuantityTypeIdentifier")) {
            CHECK(records.value(type, 0) == number);
        } else {
            categories += number.get<int>();
        }
    }
    CHECK(gathered.counts.skipped.total() == categories);
    CHECK(steps == expected["step_sum"]);
    CHECK(workouts == expected["workouts"]);
    // Workouts of some exports name a file twice.
    CHECK(static_cast<std::int64_t>(routes) + gathered.counts.routesMissing <= expected["routes_files"]);
    // An independent reader that stops at a broken document type has no say in what comes after it.
    REQUIRE(gathered.end->outcome);
    CHECK((gathered.end->outcome->end == ReadOutcome::End::complete) == expected["wellformed"]);
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
    CHECK(gathered.counts.routesMissing == 30);
    const auto& half = gathered.workouts[4];  // a half marathon whose ascent only its one part has
    CHECK(half.distance == doctest::Approx(21132.8));
    CHECK(std::ranges::count(half.metadata,
                             std::pair<std::string, std::string>("HKElevationAscended", "42875 cm")) == 1);
}
