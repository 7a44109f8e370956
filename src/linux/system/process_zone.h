/// The zone that this process lives in.
#pragma once

#include "core/calendar.h"
#include "platform/phrase.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace pedvar {

struct ProcessZone {
    std::unique_ptr<const ZoneRules> rules;
    /// Why the zone is UTC although something else was asked for; a sentence for people.
    std::optional<Phrase> warning;
};

/// The zone that TZ names, as a name, a path or a rule, with or without a colon before it; without TZ the
/// machine's, /etc/localtime. An empty TZ, and a machine that has no zone, mean UTC.
ProcessZone processZone();

/// The file that `processZone` reads and that is another one when the zone changes; none where TZ names a zone or
/// is a rule.
std::optional<std::filesystem::path> zoneFile();

}  // namespace pedvar
