/// A zone that is given as a rule.
#pragma once

#include "core/calendar.h"

#include <string_view>

namespace pedvar {

/// Whether `text` is a rule like "CET-1CEST,M3.5.0,M10.5.0/3" or "<+0330>-3:30" and not the name of a zone.
bool isPosixZoneRule(std::string_view text);

/// The rule in the environment's TZ, as the C library applies it. There is one such zone in a process, and
/// changing TZ changes it.
class PosixZone : public ZoneRules {
public:
    PosixZone();

    std::string name() const override;

    LocalTime localTime(Date moment) const override;
    Date instant(LocalTime time) const override;
};

}  // namespace pedvar
