#include "sample_export/day_plan.h"
#include "sample_export/document.h"
#include "sample_export/workout.h"

#include <doctest/doctest.h>
#include <expat.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

using namespace pedvar::sample;

namespace {

/// What `write` puts into a file.
template <class Write>
std::string written(Write write) {
    char* bytes = nullptr;
    std::size_t size = 0;
    std::FILE* file = open_memstream(&bytes, &size);
    REQUIRE(file);
    CHECK(write(file));
    std::fclose(file);
    std::string text(bytes, size);
    std::free(bytes);
    return text;
}

std::string document(const Options& options) {
    return written([&](std::FILE* file) { return writeDocument(planDays(options), options, file); });
}

void requireWellFormed(const std::string& text) {
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr),
                                                                         XML_ParserFree);
    const auto status = XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE);
    REQUIRE_MESSAGE(status == XML_STATUS_OK, XML_ErrorString(XML_GetErrorCode(parser.get())));
}

std::uint64_t fingerprint(const std::string& text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    return hash;
}

}  // namespace

TEST_CASE("a sample export is well-formed and the same on every machine") {
    const Options options{.days = 10};
    const std::string text = document(options);
    requireWellFormed(text);
    CHECK(text == document(options));
    CHECK(fingerprint(text) == 0x9e0210175424748b);
    CHECK(text != document({.days = 10, .seed = 2}));
    CHECK(text.find(" +0100\"") == std::string::npos);  // one offset for all dates

    const std::string dense = document({.days = 10, .isDense = true});
    requireWellFormed(dense);
    CHECK(dense.size() > text.size());

    const auto workout = plannedWorkout(planDays(options));
    REQUIRE(workout);
    CHECK(text.find("path=\"/workout-routes/" + workout->routeName + "\"") != std::string::npos);
    requireWellFormed(written([&](std::FILE* file) { return writeRoute(*workout, exportTime(options), file); }));
}

TEST_CASE("a sample has a running streak and a longer one around a vacation without the watch") {
    const auto days = planDays({});
    REQUIRE(days.size() == 184);
    const auto isMet = [&](int number) {
        return days[days.size() - 1 - static_cast<std::size_t>(number)].total() >= dailyGoal;
    };
    CHECK(!isMet(0));
    CHECK(!isMet(9));
    CHECK(!isMet(70));
    CHECK(!isMet(94));
    int longest = 0, run = 0;
    for (int number = 183; number >= 0; --number) {
        run = isMet(number) ? run + 1 : 0;
        longest = std::max(longest, run);
        if (number == 1) CHECK(run == 8);
    }
    CHECK(longest == 23);
    for (const Day& day : days) {
        if (day.number >= 75 && day.number <= 88) CHECK(!day.hasWatch);
        for (const Walk& walk : day.walks()) {
            for (int minute = walk.first; minute < walk.end; ++minute) {
                // Steps that nobody counts would make the day's total another than the planned one.
                if (!walk.isPhoneCarried) REQUIRE(day.isWatchWorn(minute));
            }
        }
    }
}

TEST_CASE("the clocks of the sample change on the last Sundays of March and October") {
    const auto date = [](int year, unsigned month, unsigned day) {
        return std::chrono::sys_days{std::chrono::year(year) / static_cast<int>(month) / static_cast<int>(day)};
    };
    CHECK(berlinTime(date(2026, 3, 29), 3 * 60) - berlinTime(date(2026, 3, 29), 0) == 2 * 3600);
    CHECK(berlinTime(date(2026, 10, 25), 3 * 60) - berlinTime(date(2026, 10, 25), 0) == 4 * 3600);
    CHECK(berlinTime(date(2026, 1, 1), 0) == 1767222000);
    CHECK(berlinTime(date(2026, 7, 1), 12 * 60) == 1782900000);
}
