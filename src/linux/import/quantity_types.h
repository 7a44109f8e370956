/// What the quantities of an export measure.
#pragma once

#include "core/units.h"

#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

/// Whether `type` names a quantity, and not a category, a correlation or a goal.
bool isQuantityType(std::string_view type);

/// How values of a type that are written in some unit are kept.
struct KeptUnit {
    std::string symbol;
    std::optional<HKUnit> written = {};  // none where values stay as they are

    double toKept(double value) const { return written ? written->toKept(value) : value; }
};

/// Types that we know are kept in the unit of their dimension, others as they are written. None when the unit does
/// not measure what the type does.
std::optional<KeptUnit> keptUnit(std::string_view type, std::string_view unit);

}  // namespace pedvar
