/// How the languages that Pedvar speaks write numbers and times.
#pragma once

#include "platform/locale.h"

#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

struct LanguageHabits {
    std::string_view decimalSeparator;
    std::string_view groupingSeparator;
    bool usesTwelveHourClock = false;
    int firstWeekday = 2;  // 1 = Sunday ... 7 = Saturday

    bool operator==(const LanguageHabits&) const = default;
};

/// The habits of a language like "de", "en-GB" or "de_CH.UTF-8"; none for those that Pedvar does not speak.
std::optional<LanguageHabits> habitsOf(std::string_view language);

/// A region as somebody sees it who reads a certain language: numbers and clock are that language's, everything
/// else is the region's.
class LanguageLocale : public Locale {
public:
    /// Keeps a reference to `region`. An empty language, and one without known habits, leave all to the region.
    LanguageLocale(const Locale& region, std::string_view language)
        : region_(region), habits_(habitsOf(language)) {}

    const ZoneRules& zone() const override { return region_.zone(); }
    int firstWeekday() const override { return region_.firstWeekday(); }
    MeasurementSystem measurementSystem() const override { return region_.measurementSystem(); }
    std::string languageCode() const override { return region_.languageCode(); }
    std::string decimalSeparator() const override {
        return habits_ ? std::string(habits_->decimalSeparator) : region_.decimalSeparator();
    }
    std::string groupingSeparator() const override {
        return habits_ ? std::string(habits_->groupingSeparator) : region_.groupingSeparator();
    }
    bool usesTwelveHourClock() const override {
        return habits_ ? habits_->usesTwelveHourClock : region_.usesTwelveHourClock();
    }

private:
    const Locale& region_;
    std::optional<LanguageHabits> habits_;
};

}  // namespace pedvar
