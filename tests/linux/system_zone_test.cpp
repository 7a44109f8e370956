#include "linux/system/absl_zone.h"
#include "linux/system/posix_zone.h"
#include "linux/system/process_zone.h"
#include "support/environment.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

/// "2024-05-01 12:30:00" as a count of seconds since 1970, of whatever clock shows it.
Seconds secondsOf(const char* text) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    REQUIRE(std::sscanf(text, "%d-%d-%d %d:%d:%d", &year, &month, &day, &hour, &minute, &second) == 6);
    const auto date = std::chrono::year(year) / month / day;
    return std::chrono::sys_days(date).time_since_epoch() + Seconds(hour * 3600 + minute * 60 + second);
}
LocalTime local(const char* text) {
    return LocalTime{secondsOf(text)};
}
Date utc(const char* text) {
    return dateFromUnix(secondsOf(text).count());
}

}  // namespace

TEST_CASE("a clock time that is skipped or shown twice has one moment") {
    struct Case {
        const char *zone, *local, *utc;
    };
    const Case cases[]{
        {"America/Santiago", "2024-09-08 00:00:00", "2024-09-08 04:00:00"},  // midnight is skipped
        {"America/Santiago", "2024-09-07 23:59:59", "2024-09-08 03:59:59"},
        {"America/Havana", "2024-03-10 00:30:00", "2024-03-10 05:00:00"},
        {"America/Havana", "2024-11-03 00:00:00", "2024-11-03 04:00:00"},  // midnight is shown twice
        {"Europe/Berlin", "2024-10-27 02:30:00", "2024-10-27 00:30:00"},
        {"Europe/Berlin", "2024-10-27 03:00:00", "2024-10-27 02:00:00"},
        {"Europe/Berlin", "2024-03-31 02:59:59", "2024-03-31 01:00:00"},
        {"Australia/Lord_Howe", "2024-10-06 02:15:00", "2024-10-05 15:30:00"},  // half an hour
        {"Australia/Lord_Howe", "2024-04-07 01:45:00", "2024-04-06 14:45:00"},
        {"Pacific/Apia", "2011-12-30 00:00:00", "2011-12-30 10:00:00"},  // a whole day is skipped
        {"Pacific/Apia", "2011-12-30 18:00:00", "2011-12-30 10:00:00"},
        {"Pacific/Apia", "2011-12-31 00:00:00", "2011-12-30 10:00:00"},
    };
    for (const Case& each : cases) {
        CAPTURE(each.zone);
        CAPTURE(each.local);
        const auto zone = AbslZone::named(each.zone);
        REQUIRE(zone);
        CHECK(zone->instant(local(each.local)) == utc(each.utc));
    }
}

TEST_CASE("a zone knows its past and its far future") {
    const auto berlin = AbslZone::named("Europe/Berlin");
    REQUIRE(berlin);
    CHECK(berlin->localTime(utc("1890-01-01 00:00:00")) == local("1890-01-01 00:53:28"));
    CHECK(berlin->localTime(utc("1955-06-01 00:00:00")) == local("1955-06-01 01:00:00"));
    CHECK(berlin->localTime(utc("2500-07-01 12:00:00")) == local("2500-07-01 14:00:00"));
    CHECK(berlin->localTime(utc("2024-07-01 12:00:00") + 0.25s) == local("2024-07-01 14:00:00") + 0.25s);
    CHECK(berlin->instant(local("2024-07-01 14:00:00") + 0.25s) == utc("2024-07-01 12:00:00") + 0.25s);
    for (const double extreme : {1e300, -1e300, std::numeric_limits<double>::infinity()}) {
        CHECK(unixSeconds(berlin->instant(berlin->localTime(Date{Seconds{extreme}}))) == extreme);
    }
    CHECK(std::isnan(unixSeconds(berlin->instant(LocalTime{Seconds{std::nan("")}}))));
}

TEST_CASE("a zone given as a rule is the zone of that rule") {
    const EnvironmentVariable variable("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    const auto rule = processZone();
    CHECK(!rule.warning);
    const auto berlin = AbslZone::named("Europe/Berlin");
    REQUIRE(berlin);
    int differences = 0;
    for (Date moment = utc("2023-12-30 00:10:00"); moment < utc("2025-01-02 00:00:00"); moment += 30min) {
        const LocalTime time{Seconds{unixSeconds(moment)}};
        differences += rule.rules->localTime(moment) != berlin->localTime(moment);
        differences += rule.rules->instant(time) != berlin->instant(time);
    }
    CHECK(differences == 0);
    CHECK(rule.rules->instant(LocalTime{Seconds{1e300}}).time_since_epoch().count() > 1e299);
}

TEST_CASE("the process zone follows every form of TZ and says when it cannot") {
    struct Case {
        std::optional<std::string> variable;
        std::optional<const char*> noonInUtc;  // what the zone shows at noon UTC; any when absent
        bool warns;
    };
    const Case cases[]{
        {"Asia/Tokyo", "2024-07-01 21:00:00", false},
        {":Asia/Tokyo", "2024-07-01 21:00:00", false},
        {"/usr/share/zoneinfo/Asia/Tokyo", "2024-07-01 21:00:00", false},
        {"<+0330>-3:30", "2024-07-01 15:30:00", false},
        {":JST-9", "2024-07-01 21:00:00", false},
        {"", "2024-07-01 12:00:00", false},
        {":", "2024-07-01 12:00:00", false},
        {"Nowhere/Land", "2024-07-01 12:00:00", true},
        {"Europe", "2024-07-01 12:00:00", true},
        {"<broken", "2024-07-01 12:00:00", true},
        {std::nullopt, std::nullopt, false},
    };
    for (const Case& each : cases) {
        CAPTURE(each.variable.value_or("unset"));
        const EnvironmentVariable variable("TZ", each.variable);
        const auto zone = processZone();
        if (each.noonInUtc) CHECK(zone.rules->localTime(utc("2024-07-01 12:00:00")) == local(*each.noonInUtc));
        CHECK(zone.warning.has_value() == each.warns);
    }
}

TEST_CASE("a zone file that is replaced is another zone, as a link and as a copy") {
    namespace fs = std::filesystem;
    const TemporaryFolder folder;
    const fs::path file = folder / "localtime", database = "/usr/share/zoneinfo";
    const EnvironmentVariable variable("TZ", ":" + file.string());
    CHECK(zoneFile() == file);
    CHECK(processZone().warning);
    const auto noon = [] { return processZone().rules->localTime(utc("2024-07-01 12:00:00")); };
    fs::create_symlink(database / "Asia/Tokyo", file);
    CHECK(noon() == local("2024-07-01 21:00:00"));
    const std::string tokyo = processZone().rules->name();
    fs::remove(file);
    fs::create_symlink(database / "Europe/Berlin", file);
    CHECK(noon() == local("2024-07-01 14:00:00"));
    CHECK(processZone().rules->name() != tokyo);
    fs::remove(file);
    fs::copy_file(database / "Asia/Tokyo", file);
    CHECK(noon() == local("2024-07-01 21:00:00"));
    const std::string copied = processZone().rules->name();
    fs::copy_file(database / "Europe/London", file, fs::copy_options::overwrite_existing);
    CHECK(noon() == local("2024-07-01 13:00:00"));
    CHECK(processZone().rules->name() != copied);
    fs::copy_file(database / "Asia/Tokyo", file, fs::copy_options::overwrite_existing);
    CHECK(processZone().rules->name() == copied);
}
