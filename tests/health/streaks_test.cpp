#include "health/streaks.h"

#include <doctest/doctest.h>

#include <vector>

using namespace pedvar;
using namespace std::chrono;

namespace {

constexpr Day first{2024y / May / 1};

struct Row {
    const char* name;
    std::vector<std::int64_t> steps;  // the last is today's
    std::vector<GoalChange> goals;
    Streaks expected;
};

}  // namespace

TEST_CASE("streaks follow the goal of each day, and an unmet today neither counts nor breaks") {
    const std::vector<Row> table{
        {"no days", {}, {}, {0, 0, std::nullopt}},
        {"exactly the goal is met", {999, 1000}, {}, {1, 1, first + days(1)}},
        {"today unmet", {1000, 1000, 0}, {}, {2, 2, first + days(1)}},
        {"today met", {1000, 1000, 1000}, {}, {3, 3, first + days(2)}},
        {"yesterday missed, today unmet", {1000, 1000, 0, 0}, {}, {0, 2, first + days(1)}},
        {"yesterday missed, today met", {1000, 1000, 0, 1000}, {}, {1, 2, first + days(3)}},
        {"only an unmet today", {0}, {}, {0, 0, std::nullopt}},
        {"a higher goal leaves earlier days as they were",
         {600, 600, 1500, 600},
         {{first, 500}, {first + days(2), 1500}},
         {3, 3, first + days(2)}},
        {"a lower goal does not reach back",
         {600, 600, 600},
         {{first, 1000}, {first + days(2), 500}},
         {1, 1, first + days(2)}},
        {"the earliest goal holds before its day",
         {600, 600, 600},
         {{first + days(2), 500}},
         {3, 3, first + days(2)}},
        {"the last change of a day counts", {600, 600}, {{first, 700}, {first, 500}}, {2, 2, first + days(1)}},
    };
    for (const Row& row : table) {
        CAPTURE(row.name);
        const GoalHistory goals(row.goals, 1000);
        const std::size_t daysOver = row.steps.empty() ? 0 : row.steps.size() - 1;
        Streaks streaks = streaksAfter({}, first, std::span(row.steps).first(daysOver), goals);
        if (!row.steps.empty()) streaks = streaksOn(first + days(daysOver), streaks, row.steps.back(), goals);
        CHECK(streaks == row.expected);
    }
}
