/// A region made by hand.
#pragma once

#include "platform/locale.h"

namespace pedvar {

class FakeLocale : public Locale {
public:
    explicit FakeLocale(const ZoneRules& zone) : zone_(zone) {}

    int weekdayThatBegins = 2;
    MeasurementSystem system = MeasurementSystem::metric;

    const ZoneRules& zone() const override { return zone_; }
    int firstWeekday() const override { return weekdayThatBegins; }
    MeasurementSystem measurementSystem() const override { return system; }
    std::string languageCode() const override { return "de"; }
    std::string decimalSeparator() const override { return ","; }
    std::string groupingSeparator() const override { return "."; }
    bool usesTwelveHourClock() const override { return false; }

private:
    const ZoneRules& zone_;
};

}  // namespace pedvar
