/// What the days that are over came to, so that not all of them are gone through each time.
#pragma once

#include "achievements/badge_tally.h"

#include <string>

namespace pedvar {

/// A tally of all days before `until`, as it is stored.
template <class Tally>
struct TallyMemory {
    std::string until;  // YYYY-MM-DD
    std::string basis;  // what else than samples the tally follows from
    Tally tally;

    using Fields = FieldList<&TallyMemory::until, &TallyMemory::basis, &TallyMemory::tally>;
    bool operator==(const TallyMemory&) const = default;
};
static_assert(isComplete<TallyMemory<StepTally>> && isComplete<TallyMemory<BadgeMarks>>);

}  // namespace pedvar
