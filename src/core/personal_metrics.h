/// What the person has told about themselves.
#pragma once

#include "core/record.h"

#include <cstdint>
#include <optional>

namespace pedvar {

enum class Gender { male, female, other };
enum class DataSource { healthKit, manual };

inline constexpr std::int64_t defaultDailyGoal = 10'000;     // steps
inline constexpr std::int64_t highestDailyGoal = 1'000'000;  // steps; keeps seven times a goal far from overflow

/// A goal that a person can have; anything else is refused where it enters and ignored where it is read.
constexpr bool isValidDailyGoal(std::int64_t goal) {
    return 1 <= goal && goal <= highestDailyGoal;
}

inline constexpr std::int64_t highestAge = 130;  // years; nobody has lived longer
inline constexpr double highestWeight = 1000;    // kilograms; nobody has weighed as much

constexpr bool isValidAge(std::int64_t age) {
    return 0 <= age && age <= highestAge;
}

constexpr bool isValidWeight(double kilograms) {
    return 0 < kilograms && kilograms <= highestWeight;  // false for NaN
}

struct PersonalMetrics {
    std::optional<std::int64_t> age;  // years
    std::optional<Gender> gender;
    std::optional<double> targetWeight;  // kilograms
    std::int64_t dailyStepGoal = defaultDailyGoal;
    std::optional<std::int64_t> weeklyStepGoal;
    DataSource ageSource = DataSource::manual;
    DataSource genderSource = DataSource::manual;

    using Fields = FieldList<&PersonalMetrics::age, &PersonalMetrics::gender, &PersonalMetrics::targetWeight,
                             &PersonalMetrics::dailyStepGoal, &PersonalMetrics::weeklyStepGoal,
                             &PersonalMetrics::ageSource, &PersonalMetrics::genderSource>;
    bool operator==(const PersonalMetrics&) const = default;
};
static_assert(isComplete<PersonalMetrics>);

}  // namespace pedvar
