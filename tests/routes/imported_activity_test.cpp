#include "routes/imported_activity.h"

#include "linux/system/system_random.h"
#include "support/fake_document_parts.h"
#include "support/sample_sessions.h"

#include <doctest/doctest.h>

using namespace pedvar;

namespace {

/// Segments of points that are a second and some 11 metres apart, and climb a metre each.
GPXDocument track(const std::vector<int>& segments) {
    GPXDocument document;
    int number = 0;
    for (const int count : segments) {
        GPXSegment segment;
        for (int i = 0; i < count; ++i, ++number) {
            segment.points.push_back({.latitude = number * 1e-4,
                                      .altitude = 1.0 * number,
                                      .horizontalAccuracy = 5,
                                      .verticalAccuracy = 5,
                                      .timestamp = Date{Seconds{7e8 + number}}});
            segment.hasTime.push_back(true);
        }
        document.segments.push_back(segment);
        number += 100;
    }
    return document;
}

std::optional<ImportedActivity> imported(const GPXDocument& document) {
    SystemRandom random;
    return importedActivity(document, ActivityType::run, random);
}

}  // namespace

TEST_CASE("an imported activity lasts and reaches as far as its segments, without what lies between") {
    const auto activity = imported(track({101, 51}));
    REQUIRE(activity.has_value());
    const ActivitySession& session = activity->session;
    CHECK(session.duration == 150);
    CHECK(session.distance == doctest::Approx(150 * 11.0574).epsilon(1e-4));
    CHECK(session.calories == 132);
    CHECK((*session.endTime - session.startTime).count() == 251);
    CHECK(session.elevationLoss == 0);
    CHECK(session.elevationGain < 151);  // without the hundred metres between the segments
    CHECK(session.route.size() == 152);
}

TEST_CASE("points without a usable time are left out; where they are most, there is no activity") {
    GPXDocument document = track({10});
    for (std::size_t i = 0; i < 4; ++i) document.segments[0].hasTime[i] = false;
    document.segments[0].points[9].timestamp = Date{Seconds{1e15}};
    const auto activity = imported(document);
    REQUIRE(activity.has_value());
    CHECK(activity->pointsWithoutTime == 5);
    CHECK(activity->session.route.size() == 5);
    document.segments[0].hasTime[4] = false;
    CHECK(!imported(document));
    CHECK(!imported({}));
}

TEST_CASE("the same track is the same activity, and so is the copy of an own recording") {
    FakeDocumentParts documents;
    SessionHistory history(documents);
    const ActivitySession session = imported(track({20}))->session;
    CHECK(isImported(session));
    CHECK(imported(track({20}))->session.id == session.id);
    CHECK(imported(track({21}))->session.id != session.id);

    ActivitySession recorded = session;
    recorded.id = UUID::random({});
    recorded.startTime -= Seconds{30};
    *recorded.endTime -= Seconds{0.0004};
    CHECK(!isImported(recorded));
    REQUIRE(history.add(recorded));
    CHECK(sameActivity(session, history) == recorded.id);
    CHECK(!sameActivity(imported(track({21}))->session, history));
    GPXDocument elsewhere = track({20});
    for (CLLocation& point : elsewhere.segments[0].points) point.longitude = 9;
    CHECK(!sameActivity(imported(elsewhere)->session, history));
}
