#include "core/record_reader.h"
#include "recording/checkpoint_store.h"
#include "recording/pending_workouts.h"
#include "support/fake_document_parts.h"
#include "support/sample_sessions.h"
#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <limits>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

constexpr auto whenDue = CheckpointTiming::whenDue;
constexpr auto forced = CheckpointTiming::forced;

struct Recording {
    VirtualTime time{Date{738'000'000s}};
    FakeDocumentParts documents;
    SessionHistory history{documents};
    CheckpointStore checkpoints{documents, history};

    InProgressState state(int points) const { return sampleCheckpoint(1, points, time.now()); }

    /// Whether a checkpoint of now was written.
    bool saves(CheckpointTiming timing) {
        const int before = documents.writes;
        REQUIRE(checkpoints.save(state(1), timing));
        return documents.writes > before;
    }

    std::string document() const { return documents.document(inProgressKey); }
    bool hasRoute() const { return documents.state.lists.contains(routeList(uuidOf(1))); }
    std::vector<UUID> pending() { return PendingWorkouts(documents).sessions(); }
};

/// What the next process finds.
struct NextStart {
    explicit NextStart(Recording& recording)
        : history(recording.documents), checkpoints(recording.documents, history) {
        auto result = checkpoints.restore(recording.time.now());
        REQUIRE(result);
        state = std::move(*result);
    }

    SessionHistory history;
    CheckpointStore checkpoints;
    std::optional<InProgressState> state;
};

}  // namespace

TEST_CASE_FIXTURE(Recording, "two checkpoints within 5 seconds write once unless the second is forced") {
    CHECK(saves(whenDue));
    time.advance(4.9s);
    CHECK(!saves(whenDue));
    time.setClock(Date{738'000'005s});
    CHECK(saves(whenDue));
    time.advance(1s);
    CHECK(saves(forced));
    time.advance(4.9s);
    CHECK(!saves(whenDue));
    time.setClock(time.now() - 1h);
    CHECK(saves(whenDue));
    REQUIRE(checkpoints.clear());
    CHECK(saves(whenDue));
}

TEST_CASE_FIXTURE(Recording, "a checkpoint that could not be written is due at once") {
    documents.failure = DefaultsError{"no space"};
    CHECK(!checkpoints.save(state(3), whenDue));
    documents.failure.reset();
    CHECK(saves(whenDue));
    time.advance(5s);
    documents.failure = DefaultsError{"no space"};
    CHECK(!checkpoints.save(state(10), whenDue));
    documents.failure.reset();
    REQUIRE(checkpoints.save(state(20), whenDue));
    CHECK(document() == encodeJson(state(20)));
}

TEST_CASE_FIXTURE(Recording, "a number that cannot be stored is told and leaves the last checkpoint") {
    REQUIRE(saves(forced));
    const std::string before = document();
    InProgressState bad = state(1);
    bad.totalDistance = std::numeric_limits<double>::infinity();
    CHECK(!checkpoints.save(bad, forced));
    CHECK(document() == before);
}

TEST_CASE_FIXTURE(Recording, "a checkpoint writes the new points once, at any length of the route") {
    InProgressState growing = state(1000);
    REQUIRE(checkpoints.save(growing, forced));
    const auto bytesOfFivePoints = [&] {
        for (int i = 0; i < 5; ++i) growing.routePoints.push_back(samplePoint(i));
        REQUIRE(checkpoints.save(growing, forced));
        return documents.bytesOfLastWrite;
    };
    const auto early = bytesOfFivePoints();
    for (int i = 0; i < 20'000; ++i) growing.routePoints.push_back(samplePoint(i));
    REQUIRE(checkpoints.save(growing, forced));
    CHECK(bytesOfFivePoints() == early + 2);  // one more digit in two counts
    CHECK(early < 3000);
    growing.session.route = growing.routePoints;
    CHECK(document() == encodeJson(growing));
}

TEST_CASE_FIXTURE(Recording, "a route that is not the stored one made longer is written anew") {
    REQUIRE(checkpoints.save(state(10), forced));
    SUBCASE("a shorter one") {
        REQUIRE(checkpoints.save(state(4), forced));
        CHECK(document() == encodeJson(state(4)));
    }
    SUBCASE("that of another session") {
        const auto other = sampleCheckpoint(2, 20);
        REQUIRE(checkpoints.save(other, forced));
        CHECK(document() == encodeJson(other));
        CHECK(!hasRoute());
    }
}

TEST_CASE_FIXTURE(Recording, "a checkpoint is resumed up to twelve hours later, and from the future") {
    REQUIRE(checkpoints.save(state(7), forced));
    const InProgressState saved = state(7);
    SUBCASE("at once") {}
    SUBCASE("after twelve hours to the second") {
        time.advance(43'200s);
    }
    SUBCASE("with the clock set back") {
        time.setClock(time.now() - 24h * 400);
    }
    const auto before = documents.state;
    NextStart next(*this);
    REQUIRE(next.state);
    CHECK(encodeJson(*next.state) == encodeJson(saved));
    CHECK(next.state->session.route == next.state->routePoints);
    CHECK(documents.state == before);

    next.state->routePoints.push_back(samplePoint(7));
    next.state->session.route = next.state->routePoints;
    REQUIRE(next.checkpoints.save(*next.state, whenDue));
    CHECK(document() == encodeJson(*next.state));
    CHECK(documents.list(routeList(uuidOf(1))).size() == 2);
}

TEST_CASE_FIXTURE(Recording, "a checkpoint a moment older is closed into the history as of its date") {
    REQUIRE(history.add(sampleSession(9)));
    REQUIRE(checkpoints.save(state(7), forced));
    const InProgressState saved = state(7);
    time.advance(43'200.001s);
    const NextStart next(*this);
    CHECK(!next.state);
    REQUIRE(next.history.savedSessions().size() == 2);
    const auto closed = next.history.wholeSession(uuidOf(1));
    REQUIRE(closed);
    CHECK(encodeJson(*closed) ==
          R"({"id":"00000001-0000-0000-0000-000000000000","activityType":"hike","startTime":738000000.5,)"
          R"("endTime":738000000,"isActive":false,"steps":17,"distance":2000,"duration":900,"calories":100,)"
          R"("averagePace":7.5,"route":)" +
              encodeJson(saved.routePoints).value() + R"(,"elevationGain":3.5})");
    CHECK(next.history.savedSessions()[0].session.id == uuidOf(1));
    CHECK(document().empty());
    CHECK(pending() == std::vector{uuidOf(1)});
}

TEST_CASE_FIXTURE(Recording, "a checkpoint that is of no use is removed with its route and nothing else") {
    REQUIRE(history.add(sampleSession(9)));
    REQUIRE(checkpoints.save(state(7), forced));
    std::string& frame = documents.state.frames[inProgressKey];
    SUBCASE("its session is not active") {
        frame.replace(frame.find("true"), 4, "false");
    }
    SUBCASE("it cannot be read") {
        frame.pop_back();
    }
    SUBCASE("it is no document in parts and cannot be read") {
        frame = "";
        documents.state.values.emplace(inProgressKey, Data{"{}"});
        documents.state.frames.erase(inProgressKey);
        documents.state.lists.erase(routeList(uuidOf(1)));
    }
    const NextStart next(*this);
    CHECK(!next.state);
    CHECK(document().empty());
    CHECK(!hasRoute());
    CHECK(documents.document(sessionsKey) == "[" + *encodeJson(sampleSession(9)) + "]");
    CHECK(pending().empty());
}

TEST_CASE_FIXTURE(Recording, "a damaged checkpoint cannot take lists of others with it") {
    REQUIRE(history.add(sampleSession(9)));
    documents.state.frames[inProgressKey] =
        Hole{sessionsKey, 1}.text() + Hole{routeList(uuidOf(9)), 2}.text() + Hole{"", 0}.text();
    const auto lists = documents.state.lists;
    CHECK(!NextStart(*this).state);
    CHECK(documents.state.lists == lists);
    CHECK(document().empty());
}

TEST_CASE_FIXTURE(Recording, "a start without a checkpoint writes nothing") {
    CHECK(!NextStart(*this).state);
    CHECK(documents.writes == 0);
}

TEST_CASE_FIXTURE(Recording, "a checkpoint that was written whole goes on in parts") {
    documents.state.values.emplace(inProgressKey, Data{encodeJson(state(5)).value()});
    NextStart next(*this);
    REQUIRE(next.state);
    REQUIRE(next.checkpoints.save(*next.state, forced));
    CHECK(documents.frame(inProgressKey));
    CHECK(document() == encodeJson(state(5)));
}

TEST_CASE_FIXTURE(Recording, "damaged points are missing from the resumed walk, which is stored anew") {
    for (const int points : {5, 10, 15}) REQUIRE(checkpoints.save(state(points), forced));
    auto& parts = documents.state.lists[routeList(uuidOf(1))];
    SUBCASE("in the middle") {
        std::next(parts.begin())->second = "?";
    }
    SUBCASE("at the end") {
        parts.rbegin()->second += "]";
    }
    NextStart next(*this);
    REQUIRE(next.state);
    CHECK(next.state->routePoints.size() == 10);
    for (int i = 0; i < 10; ++i) next.state->routePoints.push_back(samplePoint(i));
    next.state->session.route = next.state->routePoints;
    REQUIRE(next.checkpoints.save(*next.state, forced));
    CHECK(document() == encodeJson(*next.state));
}

TEST_CASE_FIXTURE(Recording, "finishing moves the walk to the history, whole or not at all") {
    REQUIRE(history.add(sampleSession(9)));
    REQUIRE(checkpoints.save(state(10), forced));
    const auto finished = sampleSession(1, 12);
    const auto before = documents.state;
    documents.failure = DefaultsError{"no space"};
    CHECK(!checkpoints.finish(finished));
    CHECK(documents.state == before);
    CHECK(history.savedSessions().size() == 1);
    documents.failure.reset();

    const int writes = documents.writes;
    REQUIRE(checkpoints.finish(finished));
    CHECK(documents.writes == writes + 1);
    CHECK(documents.bytesOfLastWrite < 2000);  // two points, not twelve
    CHECK(documents.document(sessionsKey) ==
          "[" + *encodeJson(finished) + "," + *encodeJson(sampleSession(9)) + "]");
    CHECK(document().empty());
    CHECK(pending() == std::vector{uuidOf(1)});
    CHECK(!NextStart(*this).state);

    REQUIRE(checkpoints.save(sampleCheckpoint(2, 3, time.now()), whenDue));
    REQUIRE(checkpoints.finish(sampleSession(2, 3)));
    CHECK(pending() == std::vector{uuidOf(1), uuidOf(2)});
    REQUIRE(PendingWorkouts(documents).remove(uuidOf(1)));
    REQUIRE(PendingWorkouts(documents).remove(uuidOf(1)));
    CHECK(pending() == std::vector{uuidOf(2)});
    CHECK(documents.document(pendingWorkoutsKey) == "[\"00000002-0000-0000-0000-000000000000\"]");
}

TEST_CASE_FIXTURE(Recording, "a walk that has joined the history is not closed or resumed again") {
    REQUIRE(checkpoints.save(state(3), forced));
    REQUIRE(history.add(sampleSession(8)));
    const std::string frame = documents.state.frames[inProgressKey];
    REQUIRE(checkpoints.finish(sampleSession(1, 3)));
    documents.state.frames[inProgressKey] = frame;  // as after a backup was played back
    CHECK(!NextStart(*this).state);
    CHECK(document().empty());
    CHECK(SessionHistory(documents).wholeSession(uuidOf(1))->route.size() == 3);
    CHECK(SessionHistory(documents).savedSessions().size() == 2);
}
