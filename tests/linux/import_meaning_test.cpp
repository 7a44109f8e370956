/// What records, devices and workouts of an export are taken for.
#include "linux/import/export_values.h"
#include "linux/import/source_identity.h"
#include "linux/import_support.h"

#include "core/date.h"

using namespace pedvar;

TEST_CASE("dates of exports are moments, and anything else is none") {
    ExportDateParser dates;
    const auto unix = [&](std::string_view text) {
        const auto found = dates.parse(text);
        return found ? std::optional(*found / 1000 + referenceEpoch.count()) : std::nullopt;
    };
    CHECK(unix("2026-04-20 10:29:50 +0200") == 1776673790);
    CHECK(unix("2026-03-16 09:00:00 -0400") == 1773666000);
    CHECK(unix("2026-03-16 09:00:00 -0400") == 1773666000);  // again, remembered
    CHECK(unix("2026-03-16 09:00:00 +0000") == 1773651600);
    CHECK(unix("2026-03-17 09:00:00 +0530") == 1773718200);
    CHECK(unix("2000-02-29 23:59:59 +0000") == 951868799);
    for (const std::string_view text : {"",
                                        "invalid",
                                        "2026-03-02",
                                        "2026-03-02T09:10:00-05:00",
                                        "2026-03-02 09:10:00 Z",
                                        "2026-03-02 09:10:00",
                                        "2026-03-02 9:10:00 AM -0500",
                                        "2026-03-02 09:10:00 -05:0",
                                        "2026-02-29 09:10:00 +0000",
                                        "2026-13-01 09:10:00 +0000",
                                        "2026-00-01 09:10:00 +0000",
                                        "2026-03-32 09:10:00 +0000",
                                        "2026-03-02 24:00:00 +0000",
                                        "2026-03-02 09:60:00 +0000",
                                        "2026-03-02 09:10:60 +0000",
                                        "2026-03-02 09:10:00 +2400",
                                        "2026-03-02 09:10:00 +0060",
                                        "2026-03-02 0 :10:00 +0000",
                                        "2026-03-02 09:10:00  0000",
                                        "2026-03-02x09:10:00 +0000",
                                        "-026-03-02 09:10:00 +0000"}) {
        CAPTURE(text);
        CHECK(!dates.parse(text));
    }
    CHECK(unix("2026-03-17 09:00:00 +0530") == 1773718200);  // what failed has left nothing behind
}

TEST_CASE("a source is its name, kind and hardware, whatever its address and software are") {
    const auto watch = [](std::string_view address, std::string_view software) {
        return fmt::format(
            "<<HKDevice: {}>, name:Apple Watch, manufacturer:Apple Inc., model:Watch, "
            "hardware:Watch2,4, software:{}, creation date:2024-05-01 06:30:00 +0000>",
            address, software);
    };
    const SourceDescription expected{SourceKind::watch, "Anna’s Apple\u00A0Watch", "Watch2,4"};
    CHECK(describeSource(expected.name, watch("0x282a45810", "4.3.1")) == expected);
    CHECK(describeSource(expected.name, watch("0x1", "10.0")) == expected);
    CHECK(describeSource("A", "<<HKDevice: 0x0, name:A, model:iPhone, hardware:iPhone14,2>>").hardware ==
          "iPhone14,2");
    CHECK(describeSource("A", "<<HKDevice: 0x0>, name:Anna, the, model:X, hardware:H>").hardware == "H");

    struct Case {
        std::string_view name;
        std::string_view device;
        SourceKind kind;
    };
    for (const Case& each : std::vector<Case>{
             {"Anna", "<<HKDevice: 0x0>, name:x, model:iPhone>", SourceKind::phone},
             {"Anna’s iPhone", "", SourceKind::phone},
             {"Apple Watch de Anna", "", SourceKind::watch},
             {"Anna’s Apple\u00A0Watch", "", SourceKind::watch},
             {"Mi Band 7", "", SourceKind::band},
             {"Tracking Husband", "", SourceKind::application},  // neither a ring nor a band
             {"Anna’s iPhone", "<<HKDevice: 0x0>, name:Ring, manufacturer:R, model:R3>", SourceKind::band},
             {"Pedvar", "<<HKDevice: 0x0>, name:iPhone, hardware:iPhone14,2>", SourceKind::own},
             {"MyFitnessPal", "", SourceKind::application},
             {"", "", SourceKind::application},
         }) {
        CAPTURE(each.name);
        CHECK(describeSource(each.name, each.device).kind == each.kind);
    }
}

TEST_CASE("records become rows in kept units, and those that cannot are counted by reason") {
    const Gathered found = interpret(
        record() +
        record({{"type", "HKQuantityTypeIdentifierDistanceWalkingRunning"}, {"unit", "km"}, {"value", "1.5"}}) +
        record({{"type", "HKQuantityTypeIdentifierDistanceWalkingRunning"}, {"unit", "mi"}, {"value", "1"}}) +
        record({{"type", "HKQuantityTypeIdentifierActiveEnergyBurned"}, {"unit", "kJ"}, {"value", "4.184"}}) +
        record({{"type", "HKQuantityTypeIdentifierUnheardOf"}, {"unit", "furlong"}, {"value", "-2e3"}}) +
        record({{"value", "&#49;2&#x30;"}, {"endDate", "2024-05-01 04:30:00 +0000"}}));
    REQUIRE(found.samples.size() == 6);
    CHECK(found.series == std::vector<SeriesName>{{"HKQuantityTypeIdentifierStepCount", "count"},
                                                  {"HKQuantityTypeIdentifierDistanceWalkingRunning", "m"},
                                                  {"HKQuantityTypeIdentifierActiveEnergyBurned", "kcal"},
                                                  {"HKQuantityTypeIdentifierUnheardOf", "furlong"}});
    CHECK(found.sources == std::vector<SourceDescription>{{SourceKind::phone, "Anna’s iPhone", ""}});
    CHECK(found.samples[0].start == 736'230'600'000);
    CHECK(found.samples[0].duration == 300'000);
    CHECK(found.samples[1].value == 1500);
    CHECK(found.samples[2].value == doctest::Approx(1609.344));
    CHECK(found.samples[2].series == found.samples[1].series);
    CHECK(found.samples[3].value == doctest::Approx(1));
    CHECK(found.samples[4].value == -2000);
    CHECK(found.samples[5].value == 120);
    CHECK(found.samples[5].duration == 0);

    struct Case {
        std::map<std::string, std::string> changes;
        SkipReason reason;
    };
    for (const Case& each : std::vector<Case>{
             {{{"type", "HKCategoryTypeIdentifierSleepAnalysis"}, {"unit", ""}}, SkipReason::notAQuantity},
             {{{"type", "HKDataTypeSleepDurationGoal"}}, SkipReason::notAQuantity},
             {{{"unit", "km"}}, SkipReason::unknownUnit},
             {{{"unit", "paces"}}, SkipReason::unknownUnit},
             {{{"unit", ""}}, SkipReason::missingAttribute},
             {{{"type", ""}}, SkipReason::missingAttribute},
             {{{"sourceName", ""}}, SkipReason::missingAttribute},
             {{{"startDate", ""}}, SkipReason::missingAttribute},
             {{{"endDate", ""}}, SkipReason::missingAttribute},
             {{{"value", ""}}, SkipReason::missingAttribute},
             {{{"value", "many"}}, SkipReason::badValue},
             {{{"value", "1 "}}, SkipReason::badValue},
             {{{"value", "1,5"}}, SkipReason::badValue},
             {{{"value", "nan"}}, SkipReason::badValue},
             {{{"value", "inf"}}, SkipReason::badValue},
             {{{"value", "1e999"}}, SkipReason::badValue},
             {{{"type", "HKQuantityTypeIdentifierDistanceWalkingRunning"}, {"unit", "km"}, {"value", "1e308"}},
              SkipReason::badValue},
             {{{"startDate", "yesterday"}}, SkipReason::badDate},
             {{{"endDate", "2024-05-01 06:29:59 +0200"}}, SkipReason::badDate},
             {{{"sourceName", std::string(1100, 'x')}}, SkipReason::tooVaried},
         }) {
        const Gathered skipped = interpret(record(each.changes) + record());
        CAPTURE(nameOf(each.reason));
        CHECK(skipped.counts.read == 2);
        CHECK(skipped.counts.skipped[each.reason] == 1);
        CHECK(skipped.samples.size() == 1);
    }
}

TEST_CASE("a record is hand-typed when its metadata say so, and finished when it ends") {
    const std::string_view typed = "<MetadataEntry key=\"HKWasUserEntered\" value=\"1\"/>";
    const Gathered found = interpret(record() + record({}, typed) +
                                     record({}, "<MetadataEntry key=\"HKWasUserEntered\" value=\"0\"/>") +
                                     record({}, fmt::format("<List>{}</List>", typed)));
    REQUIRE(found.samples.size() == 4);
    CHECK(found.sources == std::vector<SourceDescription>{{SourceKind::phone, "Anna’s iPhone", ""},
                                                          {SourceKind::handTyped, "Anna’s iPhone", ""}});
    CHECK(found.samples[1].source == 1);
    CHECK(found.samples[2].source == 0);
    CHECK(found.samples[3].source == 0);  // not the record's own metadata

    // One that is cut off might still become hand-typed.
    const std::string whole = record({}, typed);
    Gathered cut;
    MemoryRoutes routes;
    const std::string document = "<HealthData>" + record() + whole.substr(0, whole.find("<Meta"));
    TextSource source(document);
    ExportInterpreter interpreter(cut, routes, {});
    interpreter.finish(readExport(source, interpreter));
    CHECK(cut.samples.size() == 1);
    CHECK(cut.counts.read == 1);
}

TEST_CASE("records inside a correlation or another record are read too") {
    CHECK(interpret(fmt::format("<Correlation>{}{}</Correlation>", record(), record())).samples.size() == 2);
    CHECK(interpret(record({}, record({{"value", "7"}}))).samples.size() == 2);
}

TEST_CASE("numbers of sources and series go on from batch to batch") {
    std::string content;
    for (int i = 0; i < 5; ++i) content += record({{"sourceName", fmt::format("App {}", i / 2)}});
    const Gathered found = interpret(content, {}, {.rowsPerBatch = 1, .bytesPerBatch = 1 << 20});
    REQUIRE(found.sources.size() == 3);
    for (std::size_t i = 0; i < 5; ++i) CHECK(found.samples[i].source == static_cast<std::int32_t>(i / 2));

    std::string varied;
    for (int i = 0; i < 6000; ++i) varied += record({{"sourceName", fmt::format("App {}", i)}});
    CHECK(interpret(varied).counts.skipped[SkipReason::tooVaried] == 1000);
}

TEST_CASE("the person and the export's date are told") {
    const Gathered found = interpret(
        "<ExportDate value=\"2001-01-01 00:00:07 +0000\"/>"
        "<Me HKCharacteristicTypeIdentifierDateOfBirth=\"1990-05-20\" "
        "HKCharacteristicTypeIdentifierBiologicalSex=\"HKBiologicalSexFemale\"/>");
    REQUIRE(found.end);
    CHECK(found.end->exportDate == 7000);
    CHECK(found.end->person.dateOfBirth == std::chrono::year(1990) / 5 / 20);
    CHECK(found.end->person.sex == Gender::female);
    const Gathered silent = interpret(
        "<Me HKCharacteristicTypeIdentifierDateOfBirth=\"\" "
        "HKCharacteristicTypeIdentifierBiologicalSex=\"HKBiologicalSexNotSet\"/>");
    CHECK(!silent.end->person.dateOfBirth);
    CHECK(!silent.end->person.sex);
}

namespace {

std::string workout(std::string_view attributes, std::string_view children) {
    return fmt::format(
        "<Workout workoutActivityType=\"HKWorkoutActivityTypeWalking\" sourceName=\"Anna’s Watch\" "
        "startDate=\"2024-05-01 06:00:00 +0000\" endDate=\"2024-05-01 07:00:00 +0000\" {}>{}</Workout>",
        attributes, children);
}

std::string statistic(std::string_view type, std::string_view values) {
    return fmt::format("<WorkoutStatistics type=\"HKQuantityTypeIdentifier{}\" {}/>", type, values);
}

}  // namespace

TEST_CASE("a workout's totals come from its own statistics, else from its attributes") {
    const std::string_view attributes =
        "duration=\"30\" durationUnit=\"min\" totalDistance=\"5\" totalDistanceUnit=\"km\" "
        "totalEnergyBurned=\"300\" "
        "totalEnergyBurnedUnit=\"Cal\"";
    const auto only = [](const Gathered& found) {
        REQUIRE(found.workouts.size() == 1);
        return found.workouts.front();
    };
    const WorkoutRow byAttributes = only(interpret(workout(attributes, "")));
    CHECK(byAttributes.duration == 1800);
    CHECK(byAttributes.distance == 5000);
    CHECK(byAttributes.activeEnergy == doctest::Approx(300));

    const std::string part = "<WorkoutActivity uuid=\"1\">" +
                             statistic("DistanceWalkingRunning", "sum=\"9\" unit=\"km\"") +
                             "<MetadataEntry key=\"Only\" value=\"part\"/></WorkoutActivity>";
    const std::string own =
        statistic("DistanceCycling", "sum=\"4\" unit=\"km\"") +
        statistic("DistanceWalkingRunning", "sum=\"6\" unit=\"km\"") +
        statistic("HeartRate", "average=\"120\" minimum=\"90\" maximum=\"150\" unit=\"count/min\"") +
        statistic("RunningPower", "average=\"x\" maximum=\"431\" unit=\"W\"") +
        "<WorkoutEvent type=\"p\"><MetadataEntry key=\"Event\" value=\"1\"/></WorkoutEvent>"
        "<MetadataEntry key=\"K\" value=\"a &amp; b\"/><MetadataEntry key=\"K\" value=\"a &amp; b\"/>";
    const WorkoutRow row = only(interpret(workout(attributes, own + part + part)));
    CHECK(row.distance == 6000);  // by the type of its activity; the parts are not added
    CHECK(row.activeEnergy == doctest::Approx(300));
    REQUIRE(row.statistics.size() == 4);
    CHECK(row.statistics[2] ==
          WorkoutStatistic{"HKQuantityTypeIdentifierHeartRate", "count/min", std::nullopt, 120, 90, 150});
    CHECK(row.statistics[3].unit == "W");
    CHECK(!row.statistics[3].average);
    CHECK(row.metadata == std::vector<std::pair<std::string, std::string>>{{"K", "a & b"}});

    // The only part is the workout.
    const WorkoutRow whole = only(interpret(workout("", part)));
    CHECK(whole.distance == 9000);
    CHECK(whole.metadata.size() == 1);
    CHECK(whole.duration == 3600);

    const Gathered skipped =
        interpret("<Workout/><Workout workoutActivityType=\"a\" startDate=\"\" endDate=\"\"/>" +
                  workout("", "<MetadataEntry key=\"HKWasUserEntered\" value=\"1\"/>"));
    CHECK(skipped.counts.workoutsRead == 3);
    CHECK(skipped.counts.workoutsSkipped == 2);
    CHECK(skipped.sources.front().kind == SourceKind::handTyped);
}

TEST_CASE("routes are found by their references, missing ones counted, points of old exports become a file") {
    MemoryRoutes routes;
    routes.files = {{"/workout-routes/a.gpx", "<gpx/>"}};
    const Gathered found = interpret(
        workout(
            "",
            "<WorkoutRoute><MetadataEntry key=\"Route\" value=\"1\"/><FileReference "
            "path=\"/workout-routes/a.gpx\"/>"
            "</WorkoutRoute><WorkoutRoute><FileReference path=\"/workout-routes/b.gpx\"/></WorkoutRoute>"
            "<WorkoutRoute>"
            "<Location date=\"2024-05-01 08:00:01 +0200\" latitude=\"52.5\" longitude=\"13.25\" altitude=\"34.5\" "
            "horizontalAccuracy=\"5\" verticalAccuracy=\"-1\" course=\"-1\" speed=\"0.0000001\"/>"
            "<Location date=\"2024-05-01 08:00:02 +0200\" latitude=\"91\" longitude=\"13.25\"/>"
            "<Location date=\"never\" latitude=\"52.5\" longitude=\"13.25\"/>"
            "<Location date=\"2024-05-01 08:00:03 +0200\" latitude=\"-0.1\" longitude=\"-179.123456789\"/>"
            "</WorkoutRoute>"),
        routes);
    CHECK(found.counts.routesMissing == 1);
    REQUIRE(found.workouts.size() == 1);
    CHECK(found.workouts[0].metadata.empty());
    REQUIRE(found.workouts[0].routes.size() == 2);
    CHECK(found.workouts[0].routes[1].name == "a.gpx");
    CHECK(found.workouts[0].routes[1].gpx == "<gpx/>");
    CHECK(found.workouts[0].routes[0].name == "route_2024-05-01_06.00.01Z.gpx");
    CHECK(found.workouts[0].routes[0].gpx == R"(<?xml version="1.0" encoding="UTF-8"?>
<gpx version="1.1" creator="Pedvar" xmlns="http://www.topografix.com/GPX/1/1">
  <trk>
    <name>Route 2024-05-01 06:00:01Z</name>
    <trkseg>
      <trkpt lon="13.25" lat="52.5"><ele>34.5</ele><time>2024-05-01T06:00:01Z</time><extensions><speed>0.0000001</speed><hAcc>5</hAcc></extensions></trkpt>
      <trkpt lon="-179.123456789" lat="-0.1"><time>2024-05-01T06:00:03Z</time></trkpt>
    </trkseg>
  </trk>
</gpx>
)");
}
