/// Zones of the machine's time zone database.
#pragma once

#include "core/calendar.h"

#include <memory>
#include <string>

namespace pedvar {

/// A zone that the database names, with its whole history and, by its last rule, its future.
class AbslZone : public ZoneRules {
public:
    /// The zone called `name` ("Europe/Berlin"), or that of the zone file at the absolute path `name`; none when
    /// there is no such zone. Reads that one file.
    static std::unique_ptr<AbslZone> named(const std::string& name);
    static std::unique_ptr<AbslZone> utc();

    ~AbslZone() override;

    std::string name() const override;

    LocalTime localTime(Date moment) const override;
    Date instant(LocalTime time) const override;

private:
    struct Rules;
    explicit AbslZone(const Rules& rules);

    std::unique_ptr<const Rules> rules_;
};

}  // namespace pedvar
