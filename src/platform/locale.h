/// Habits of the person's region.
#pragma once

#include "core/calendar.h"

#include <string>

namespace pedvar {

enum class MeasurementSystem { metric, unitedStates, unitedKingdom };

class Locale {
public:
    virtual ~Locale() = default;

    /// The zone in effect.
    virtual const ZoneRules& zone() const = 0;
    /// 1 = Sunday ... 7 = Saturday.
    virtual int firstWeekday() const = 0;
    virtual MeasurementSystem measurementSystem() const = 0;
    /// The language of the device as a code like "en-GB" or "de"; "en" when it names none.
    virtual std::string languageCode() const = 0;
    /// Between the integer and the fraction; "." or ",".
    virtual std::string decimalSeparator() const = 0;
    /// Between groups of three digits; may be empty.
    virtual std::string groupingSeparator() const = 0;
    virtual bool usesTwelveHourClock() const = 0;
};

}  // namespace pedvar
