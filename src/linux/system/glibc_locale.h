/// The region as the C library knows it.
#pragma once

#include "platform/locale.h"

#include <string>

namespace pedvar {

/// The locale that the environment names (LC_ALL, else the category's own variable, else LANG), read once.
///
/// A category whose locale is not installed follows what is known of its language, one that is "C" or unknown ISO
/// habits: weeks begin on Monday, metric units, "10,000.5", 24 hours. Nothing is set for the process.
class GlibcLocale : public Locale {
public:
    /// Keeps a reference to `zone`.
    explicit GlibcLocale(const ZoneRules& zone);

    const ZoneRules& zone() const override { return zone_; }
    int firstWeekday() const override { return firstWeekday_; }
    MeasurementSystem measurementSystem() const override { return measurementSystem_; }
    std::string languageCode() const override { return languageCode_; }
    std::string decimalSeparator() const override { return decimalSeparator_; }
    std::string groupingSeparator() const override { return groupingSeparator_; }
    bool usesTwelveHourClock() const override { return usesTwelveHourClock_; }

private:
    void readTime();
    void readNumbers();
    void readMeasurement();

    const ZoneRules& zone_;
    int firstWeekday_ = 2;
    MeasurementSystem measurementSystem_ = MeasurementSystem::metric;
    std::string languageCode_;
    std::string decimalSeparator_ = ".";
    std::string groupingSeparator_ = ",";
    bool usesTwelveHourClock_ = false;
};

}  // namespace pedvar
