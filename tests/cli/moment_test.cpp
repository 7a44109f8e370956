#include "apps/cli/moment.h"

#include "support/fake_zone.h"

#include <doctest/doctest.h>

namespace pedvar {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::year_month_day may{2024y / 5 / 1};

TEST_CASE("moments are read with their offset, or by the zone's clocks") {
    const FakeZone zone(2h);
    CHECK(parseMoment("2024-05-01T06:30:00+02:00", zone) == utc(may, 4h + 30min));
    CHECK(parseMoment("2024-05-01T06:30:00Z", zone) == utc(may, 6h + 30min));
    CHECK(parseMoment("2024-05-01T06:30-0330", zone) == utc(may, 10h));
    CHECK(parseMoment("2024-05-01T06:30", zone) == utc(may, 4h + 30min));
    CHECK(parseMoment("2024-05-01 06:30:15.25", zone) == utc(may, 4h + 30min + Seconds(15.25)));
}

TEST_CASE("a date alone is its last second by the zone's clocks") {
    const FakeZone zone(2h, {{utc(may, 12h), 1h}});
    CHECK(parseMoment("2024-05-01", zone) == utc(may, 23h - 1s));
}

TEST_CASE("what is no moment is refused") {
    const FakeZone zone(2h);
    for (const char* text :
         {"", "now", "2024-02-30", "2024-05-01T", "2024-05-01T6:30", "2024-05-01T24:00", "2024-05-01T06:60",
          "2024-05-01T06:30:61", "2024-05-01T06:30:00+2", "2024-05-01T06:30 ", "2024-05-01T-6:30",
          "2024-05-01T06:30:15.x", "2024-05-01T06:30:15.2e9", "2024-05-01T06:30ZZ", "20240501T0630", "24-05-01"}) {
        CAPTURE(text);
        CHECK(!parseMoment(text, zone));
    }
}

}  // namespace
}  // namespace pedvar
