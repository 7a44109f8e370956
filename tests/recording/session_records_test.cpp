#include "core/record_reader.h"
#include "recording/session_documents.h"
#include "support/sample_sessions.h"

#include <doctest/doctest.h>

#include <limits>

using namespace pedvar;

namespace {

const std::string pointText =
    R"({"id":"00000000-0000-0000-0000-000000000000","latitude":52.5,"longitude":13.4,"timestamp":738000000.25,)"
    R"("horizontalAccuracy":4.5,"verticalAccuracy":3,"course":271.25})";

}  // namespace

TEST_CASE("a session is stored with its keys in order and nothing for what is absent") {
    CHECK(encodeJson(sampleSession(0xab, 1)) ==
          R"({"id":"000000AB-0000-0000-0000-000000000000","activityType":"hike","startTime":738000000.5,)"
          R"("endTime":738003600.75,"isActive":false,"steps":4171,"distance":3000,"duration":1800,"calories":180,)"
          R"("averagePace":10,"route":[)" +
              pointText + R"(],"elevationGain":12.5})");
    ActivitySession still = sampleSession(1, 0);
    still.averagePace = averagePace(60, 0);
    CHECK(encodeJson(still)->find("averagePace") == std::string::npos);
    CHECK(!averagePace(60, std::numeric_limits<double>::denorm_min()));
}

TEST_CASE("a checkpoint is stored with its keys in order, and read back it is the same document") {
    InProgressState state = sampleCheckpoint(1, 1, Date{Seconds{738'000'900}});
    state.japaneseProgramRawValue = "iwt";
    const std::string text =
        R"({"session":{"id":"00000001-0000-0000-0000-000000000000","activityType":"hike","startTime":738000000.5,)"
        R"("isActive":true,"steps":4001,"distance":3000,"duration":1800,"calories":180,"averagePace":10,"route":[)" +
        pointText +
        R"(],"elevationGain":12.5},"sessionStartDate":738000000.5,"totalPausedTime":1.5,"routePoints":[)" +
        pointText +
        R"(],"isPaused":false,"currentSteps":17,"currentDistance":2000,"currentDuration":900,"currentCalories":100,)"
        R"("elevationGain":3.5,"currentElevation":40.25,"totalDistance":2000,"elapsedTime":900,)"
        R"("japaneseProgramRawValue":"iwt","japanesePhaseSecondsRemaining":0,"japaneseIsIWTFastPhase":false,)"
        R"("japaneseCurrentIWTSet":0,"japaneseIWTCompletedSets":0,"japaneseIWTCurrentPhaseIsFast":false,)"
        R"("japaneseGuidanceFinished":false,"checkpointDate":738000900})";
    CHECK(encodeJson(state) == text);
    CHECK(encodeJson(readJson<InProgressState>(text).value()) == text);
}

TEST_CASE("copies of a route share its points until one of them goes another way") {
    Route first = sampleRoute(2);
    const Route before = first;
    CHECK(first == before);
    first.push_back(samplePoint(2));
    CHECK(first != before);
    CHECK(&first[0] == &before[0]);
    CHECK(before.size() == 2);
    CHECK(std::distance(before.begin(), before.end()) == 2);

    Route second = before;
    second.push_back(samplePoint(3));
    CHECK(first.back() == samplePoint(2));
    CHECK(second.back() == samplePoint(3));
    CHECK(second.size() == 3);
    CHECK(std::ranges::equal(sampleRoute(2), before));
}

TEST_CASE("a location with any number that is not finite makes no point") {
    const CLLocation good{.latitude = 1,
                          .longitude = 2,
                          .altitude = 3,
                          .horizontalAccuracy = 4,
                          .verticalAccuracy = 5,
                          .course = 6,
                          .speed = 7,
                          .timestamp = Date{Seconds{8}}};
    const auto point = locationPoint(uuidOf(1), good);
    REQUIRE(point);
    CHECK(locationOf(*point) == good);
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        for (double CLLocation::* const field :
             {&CLLocation::latitude, &CLLocation::longitude, &CLLocation::altitude,
              &CLLocation::horizontalAccuracy, &CLLocation::verticalAccuracy, &CLLocation::course,
              &CLLocation::speed}) {
            CLLocation location = good;
            location.*field = bad;
            CHECK(!locationPoint(uuidOf(1), location));
        }
        CLLocation location = good;
        location.timestamp = Date{Seconds{bad}};
        CHECK(!locationPoint(uuidOf(1), location));
    }
}

TEST_CASE("what a receiver does not know is absent from the point") {
    const auto point = locationPoint(uuidOf(1), {.altitude = 100, .horizontalAccuracy = 5});
    REQUIRE(point);
    CHECK(
        encodeJson(*point) ==
        R"({"id":"00000001-0000-0000-0000-000000000000","latitude":0,"longitude":0,"timestamp":0,"horizontalAccuracy":5})");
    CHECK(locationPoint(uuidOf(1), {.course = 0, .speed = 0})->course == 0.0);
}

TEST_CASE("the activity types are stored by name and have their factors by position") {
    const std::pair<ActivityType, int> factors[] = {
        {ActivityType::walk, 50}, {ActivityType::run, 80}, {ActivityType::hike, 60}, {ActivityType::cycle, 40}};
    for (std::size_t i = 0; i < std::size(factors); ++i) {
        CHECK(caseIndex(factors[i].first) == i);
        CHECK(calorieFactor(factors[i].first) == factors[i].second);
    }
    CHECK(encodeJson(ActivityType::cycle) == "\"cycle\"");
    CHECK(displayName(ActivityType::cycle) == "Cycling");
    CHECK(symbolName(ActivityType::hike) == "figure.hiking");
}

TEST_CASE("holes are filled two deep, and what is no hole stays text") {
    const auto list = [](std::string_view name) -> std::vector<Part> {
        if (name == "numbers") return {{0, "1,2"}, {5, "3"}};
        if (name == "loop") return {{0, "{" + Hole{"loop", 0}.text() + "}"}, {1, Hole{"numbers", 3}.text()}};
        return {};
    };
    CHECK(wholeDocument("[" + Hole{"numbers", 0}.text() + "][" + Hole{"none", 0}.text() + "]", list) ==
          "[1,2,3][]");
    CHECK(wholeDocument(Hole{"loop", 0}.text(), list) == "{{},},1,2,3");
    CHECK(wholeDocument("[\x1a"
                        "1",
                        list) ==
          "[\x1a"
          "1");
    const auto around = takeHolesOut("a" + Hole{"x", 12}.text() +
                                     "b\x1a\x1a"
                                     "c\x1ay\x1f-\x1a");
    CHECK(around.text == "abc");
    CHECK(around.holes == std::vector<Hole>{{"x", 12}, {"", 0}, {"y", 0}});
}
