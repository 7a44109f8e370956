#include "recording/session_history.h"
#include "core/record_reader.h"
#include "support/fake_document_parts.h"
#include "support/sample_sessions.h"

#include <doctest/doctest.h>

#include <limits>

using namespace pedvar;

namespace {

using NotFound = SessionHistory::NotFound;

/// The numbers of the sessions in the list, in its order.
std::vector<std::int64_t> numbers(const SessionHistory& history) {
    std::vector<std::int64_t> numbers;
    for (const auto& saved : history.savedSessions()) numbers.push_back(saved.session.steps - 4000);
    return numbers;
}
using Numbers = std::vector<std::int64_t>;

std::string text(const ActivitySession& session) {
    return encodeJson(session).value();
}

}  // namespace

TEST_CASE("the history is the array of its sessions, the latest added first, now and at the next start") {
    FakeDocumentParts documents;
    SessionHistory history(documents);
    CHECK(history.savedSessions().empty());
    CHECK(documents.writes == 0);
    for (const int number : {1, 2, 3}) REQUIRE(history.add(sampleSession(number, number * 100)));
    const std::string expected = "[" + text(sampleSession(3, 300)) + "," + text(sampleSession(2, 200)) + "," +
                                 text(sampleSession(1, 100)) + "]";
    CHECK(documents.document(sessionsKey) == expected);
    CHECK(history.version == 3);

    const SessionHistory again(documents);
    for (const SessionHistory* one : {&std::as_const(history), &again}) {
        CHECK(numbers(*one) == Numbers{3, 2, 1});
        CHECK(one->savedSessions()[1].pointCount == 200);
        CHECK(one->savedSessions()[1].session.route.isEmpty());
        CHECK(text(one->wholeSession(uuidOf(2)).value()) == text(sampleSession(2, 200)));
        CHECK(!one->wholeSession(uuidOf(4)));
    }
}

TEST_CASE("a session that is there already is not added again") {
    FakeDocumentParts documents;
    SessionHistory history(documents);
    REQUIRE(history.add(sampleSession(1)));
    const auto before = documents.state;
    CHECK(history.add(sampleSession(1, 5)));
    CHECK(documents.state == before);
    CHECK(numbers(history) == Numbers{1});
}

TEST_CASE("a session with a number that cannot be stored is refused and leaves the history as it was") {
    FakeDocumentParts documents;
    SessionHistory history(documents);
    ActivitySession session = sampleSession(1);
    session.elevationLoss = std::numeric_limits<double>::quiet_NaN();
    CHECK(!history.add(session));
    documents.failure = DefaultsError{"no space"};
    CHECK(!history.add(sampleSession(2)));
    CHECK(history.savedSessions().empty());
    CHECK(history.version == 0);
    CHECK(documents.state == FakeDocumentParts::State{});
}

TEST_CASE("changing the type keeps all else, deleting removes the route too") {
    FakeDocumentParts documents;
    SessionHistory history(documents);
    for (const int number : {1, 2, 3}) REQUIRE(history.add(sampleSession(number)));
    REQUIRE(history.changeType(uuidOf(2), ActivityType::cycle));
    ActivitySession changed = sampleSession(2);
    changed.activityType = ActivityType::cycle;
    CHECK(text(history.wholeSession(uuidOf(2)).value()) == text(changed));
    CHECK(documents.document(sessionsKey) ==
          "[" + text(sampleSession(3)) + "," + text(changed) + "," + text(sampleSession(1)) + "]");

    REQUIRE(history.remove(uuidOf(3)));
    CHECK(numbers(history) == Numbers{2, 1});
    CHECK(documents.document(sessionsKey) == "[" + text(changed) + "," + text(sampleSession(1)) + "]");
    CHECK(!documents.state.lists.contains(routeList(uuidOf(3))));
    CHECK(!history.remove(uuidOf(3)));
    CHECK(!history.changeType(uuidOf(3), ActivityType::run));
    REQUIRE(history.add(sampleSession(4)));
    CHECK(numbers(SessionHistory(documents)) == Numbers{4, 2, 1});
}

TEST_CASE("processes that change the history at the same time lose nothing of each other") {
    FakeDocumentParts documents;
    SessionHistory recorder(documents), other(documents);
    REQUIRE(recorder.add(sampleSession(1)));
    REQUIRE(other.add(sampleSession(2)));
    REQUIRE(recorder.add(sampleSession(3)));
    REQUIRE(recorder.changeType(uuidOf(2), ActivityType::run));
    REQUIRE(recorder.remove(uuidOf(1)));
    CHECK(!other.changeType(uuidOf(1), ActivityType::run));
    const SessionHistory history(documents);
    CHECK(numbers(history) == Numbers{3, 2});
    CHECK(history.savedSessions()[1].session.activityType == ActivityType::run);
}

TEST_CASE("a session is found by the beginning of its identifier when it is the only one") {
    FakeDocumentParts documents;
    SessionHistory history(documents);
    for (const int number : {0xa1, 0xa2, 0xb0}) REQUIRE(history.add(sampleSession(number)));
    CHECK(history.find("000000b") == uuidOf(0xb0));
    CHECK(history.find(uuidOf(0xa1).text()) == uuidOf(0xa1));
    CHECK(history.find("000000A") == std::unexpected(NotFound::several));
    for (const std::string& prefix : {std::string(), std::string("1"), uuidOf(0xa1).text() + "0"}) {
        CHECK(history.find(prefix) == std::unexpected(NotFound::none));
    }
}

TEST_CASE("one damaged session is set aside and the rest is kept") {
    FakeDocumentParts documents;
    {
        SessionHistory history(documents);
        for (const int number : {1, 2, 3}) REQUIRE(history.add(sampleSession(number)));
    }
    std::string& damaged = documents.state.lists[sessionsKey][-1];
    SUBCASE("not JSON") {
        damaged.erase(7);
    }
    SUBCASE("an unknown type") {
        damaged.replace(damaged.find("hike"), 4, "swim");
    }
    SUBCASE("nothing") {
        damaged.clear();
    }
    SUBCASE("another list in place of its route") {
        damaged.replace(damaged.find("02-"), 2, "01");
    }
    SUBCASE("a list where no value belongs") {
        damaged += Hole{"other", 1}.text();
    }
    const std::string bytes = damaged;
    const auto before = documents.state;

    SessionHistory history(documents);
    CHECK(numbers(history) == Numbers{3, 1});
    CHECK(history.unreadableCount() == 1);
    CHECK(documents.state == before);  // looking moves nothing
    REQUIRE(history.add(sampleSession(4)));
    CHECK(history.unreadableCount() == 0);
    CHECK(documents.document(sessionsKey) ==
          "[" + text(sampleSession(4)) + "," + text(sampleSession(3)) + "," + text(sampleSession(1)) + "]");
    CHECK(documents.list(setAsideKey) == std::vector<Part>{{0, bytes}});
    CHECK(documents.frame(setAsideKey));
    REQUIRE(history.add(sampleSession(2)));  // the one that was damaged, whose route is still there
    CHECK(numbers(history) == Numbers{2, 4, 3, 1});
}

TEST_CASE("points that cannot be read are missing from a route, and the count still tells") {
    FakeDocumentParts documents;
    SessionHistory history(documents);
    REQUIRE(history.add(sampleSession(1, 300)));
    auto& parts = documents.state.lists[routeList(uuidOf(1))];
    REQUIRE(parts.size() == 3);
    std::next(parts.begin())->second += "}";
    CHECK(history.wholeSession(uuidOf(1))->route.size() == 300 - 128);
    CHECK(SessionHistory(documents).savedSessions()[0].pointCount == 300);
}

TEST_CASE("a history that was written whole is taken over, damaged sessions apart") {
    FakeDocumentParts documents;
    const std::string whole = "[" + text(sampleSession(2, 200)) + ",{\"id\":1}," + text(sampleSession(1)) + "]";
    documents.state.values.emplace(sessionsKey, Data{whole});
    SessionHistory history(documents);
    CHECK(numbers(history) == Numbers{2, 1});
    CHECK(history.savedSessions()[0].pointCount == 200);
    CHECK(text(history.wholeSession(uuidOf(2)).value()) == text(sampleSession(2, 200)));
    CHECK(documents.document(sessionsKey) == whole);

    SUBCASE("when a session is added") {
        REQUIRE(history.add(sampleSession(3)));
        CHECK(numbers(SessionHistory(documents)) == Numbers{3, 2, 1});
    }
    SUBCASE("when one is deleted") {
        REQUIRE(history.remove(uuidOf(1)));
        CHECK(documents.document(sessionsKey) == "[" + text(sampleSession(2, 200)) + "]");
    }
    SUBCASE("also when another process was faster") {
        REQUIRE(SessionHistory(documents).add(sampleSession(4)));
        REQUIRE(history.add(sampleSession(3)));
        CHECK(numbers(SessionHistory(documents)) == Numbers{3, 4, 2, 1});
    }
    CHECK(documents.document(setAsideKey) == "[{\"id\":1}]");
    CHECK(text(SessionHistory(documents).wholeSession(uuidOf(2)).value()) == text(sampleSession(2, 200)));
}

TEST_CASE("a history that cannot be read at all is empty, and its bytes are kept beside") {
    for (const std::string& bytes : {std::string("[{}"), std::string("{}"), std::string(), std::string("[]x")}) {
        CAPTURE(bytes);
        FakeDocumentParts documents;
        documents.state.values.emplace(sessionsKey, Data{bytes});
        SessionHistory history(documents);
        CHECK(history.savedSessions().empty());
        CHECK(history.unreadableCount() == 1);
        REQUIRE(history.add(sampleSession(1)));
        CHECK(documents.document(sessionsKey) == "[" + text(sampleSession(1)) + "]");
        CHECK(documents.list(setAsideKey) == std::vector<Part>{{0, bytes}});
    }
}
