/// A zone made by hand.
#pragma once

#include "core/calendar.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

/// The moment at `time` of `day` in UTC.
inline Date utc(std::chrono::year_month_day day, Seconds time = Seconds::zero()) {
    return dateFromUnix((LocalTime(Day(day)) + time).time_since_epoch().count());
}

/// Clocks that stand `first` ahead of UTC and change at the moments of `changes`, oldest first.
class FakeZone : public ZoneRules {
public:
    struct Change {
        Date moment;
        std::chrono::minutes offset;
    };

    explicit FakeZone(std::chrono::minutes first, std::vector<Change> changes = {})
        : first_(first), changes_(std::move(changes)) {}

    std::string name() const override { return std::to_string(first_.count()); }

    LocalTime localTime(Date moment) const override {
        std::chrono::minutes offset = first_;
        for (const Change& change : changes_) {
            if (change.moment <= moment) offset = change.offset;
        }
        return shown(moment, offset);
    }

    Date instant(LocalTime time) const override {
        Date begin = Date::min();
        std::chrono::minutes offset = first_;
        for (const Change& change : changes_) {
            if (time < shown(change.moment, offset)) break;
            begin = change.moment;
            offset = change.offset;
        }
        return std::max(begin, dateFromUnix((time - offset).time_since_epoch().count()));
    }

private:
    static LocalTime shown(Date moment, std::chrono::minutes offset) {
        return LocalTime(Seconds(unixSeconds(moment))) + offset;
    }

    std::chrono::minutes first_;
    std::vector<Change> changes_;
};

}  // namespace pedvar
