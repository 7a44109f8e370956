#include "linux/system/absl_zone.h"

#include "linux/system/whole_seconds.h"

#include <absl/time/civil_time.h>
#include <absl/time/time.h>

namespace pedvar {

struct AbslZone::Rules {
    absl::TimeZone zone;
};

namespace {

Date dateOf(absl::Time time) {
    return dateFromUnix(static_cast<double>(absl::ToUnixSeconds(time)));
}

}  // namespace

AbslZone::AbslZone(const Rules& rules) : rules_(std::make_unique<const Rules>(rules)) {}
AbslZone::~AbslZone() = default;

std::unique_ptr<AbslZone> AbslZone::named(const std::string& name) {
    Rules rules;
    if (!absl::LoadTimeZone(name, &rules.zone)) return nullptr;
    return std::unique_ptr<AbslZone>(new AbslZone(rules));
}

std::unique_ptr<AbslZone> AbslZone::utc() {
    return std::unique_ptr<AbslZone>(new AbslZone(Rules{absl::UTCTimeZone()}));
}

std::string AbslZone::name() const {
    return rules_->zone.name();
}

LocalTime AbslZone::localTime(Date moment) const {
    const double seconds = unixSeconds(moment);
    const int offset = rules_->zone.At(absl::FromUnixSeconds(wholeSeconds(seconds))).offset;
    return LocalTime{Seconds{seconds + offset}};
}

Date AbslZone::instant(LocalTime time) const {
    const double seconds = time.time_since_epoch().count();
    const std::int64_t whole = wholeSeconds(seconds);
    const auto found = rules_->zone.At(absl::CivilSecond() + whole);
    if (found.kind == absl::TimeZone::TimeInfo::SKIPPED) return dateOf(found.trans);
    return dateOf(found.pre) + Seconds{seconds - static_cast<double>(whole)};
}

}  // namespace pedvar
