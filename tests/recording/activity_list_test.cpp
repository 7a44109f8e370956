#include "recording/activity_list.h"
#include "support/sample_sessions.h"

#include <doctest/doctest.h>

using namespace pedvar;

namespace {

Date at(double minute) {
    return Date{Seconds{60 * minute}};
}

SavedSession walked(double from, double to) {
    return {{.id = uuidOf(1), .startTime = at(from), .endTime = at(to), .duration = 60 * (to - from)}, 0};
}

WorkoutData workout(double from, double to, const char* source, const char* kind = "Walking") {
    return {.activityType = std::string("HKWorkoutActivityType") + kind,
            .start = at(from),
            .end = at(to),
            .duration = 60 * (to - from),
            .source = {1, source}};
}

/// "source+copy+copy", newest first.
std::string sources(const std::vector<Activity>& list) {
    std::string result;
    for (const Activity& activity : list) {
        if (!result.empty()) result += ' ';
        result += activity.source;
        for (const Activity::Copy& copy : activity.copies) result += "+" + copy.source;
    }
    return result;
}

}  // namespace

TEST_CASE("copies share at least half of the longer one's time") {
    CHECK(sources(activityList({}, {workout(0, 60, "A"), workout(30, 60, "B")})) == "A+B");
    CHECK(sources(activityList({}, {workout(0, 60, "A"), workout(30.1, 60, "B")})) == "B A");
    CHECK(sources(activityList({}, {workout(0, 60, "A"), workout(60, 120, "B")})) == "B A");
    CHECK(sources(activityList({}, {workout(0, 90, "A"), workout(5, 6, "B"), workout(10, 95, "C")})) == "B A+C");
    CHECK(sources(activityList({walked(0, 60)}, {workout(2, 58, "Watch"), workout(500, 510, "Watch")})) ==
          "Watch Pedvar+Watch");
    CHECK(sources(activityList({walked(60, 10)}, {workout(0, 60, "A"), workout(60, 60, "Watch")})) ==
          "Pedvar+Watch A");  // the clock was set back
    CHECK(activityList({}, {}).empty());
}

TEST_CASE("the history stands before workouts, an own one before one with a route, and takes what it lacks") {
    WorkoutData own = workout(0, 50, "Pedvar");
    own.source.isOwn = true;
    WorkoutData watch = workout(0, 60, "Watch");
    watch.id = 7;
    watch.routeCount = 1;
    watch.elevationGain = 12;
    watch.distance = 4000;
    CHECK(sources(activityList({}, {workout(0, 70, "App"), watch, own})) == "Pedvar+Watch+App");

    SavedSession session = walked(0, 60);
    session.session.distance = 4100;
    const auto list = activityList({session, walked(0, 60)}, {watch});
    REQUIRE(list.size() == 2);  // two sessions of the history are never one
    CHECK(list[0].distance == 4100);
    CHECK(list[0].elevationGain == 12);
    CHECK(!list[0].points);
    CHECK(list[0].routeWorkout == 7);
    CHECK(list[0].id == session.session.id);
    CHECK(list[0].copies.front().id == activityList({}, {watch}).front().id);
}

TEST_CASE("a workout is known by what it is, not by where it stands in a store") {
    WorkoutData moved = workout(0, 60, "A");
    moved.id = 12;
    moved.source.id = 5;
    moved.distance = 5000;
    const Activity known = activityList({}, {workout(0, 60, "A")}).front();
    const Activity same = activityList({}, {moved}).front();
    CHECK(same.id == known.id);
    CHECK(same.averagePace == 12);
    for (const WorkoutData& other :
         {workout(0, 60, "B"), workout(0, 61, "A"), workout(1, 60, "A"), workout(0, 60, "A", "Hiking")}) {
        CHECK(activityList({}, {other}).front().id != known.id);
    }
}

TEST_CASE("only what Pedvar records has a type") {
    const auto list = activityList({}, {workout(0, 1, "A", "Hiking"), workout(5, 6, "A", "MindAndBody")});
    CHECK(list[0].kind == "MindAndBody");
    CHECK(!list[0].type);
    CHECK(list[1].type == ActivityType::hike);
}
