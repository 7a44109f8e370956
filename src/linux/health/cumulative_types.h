/// Which quantities add up.
#pragma once

#include <string_view>

namespace pedvar {

/// Whether amounts of `type` may be summed over time, like steps; not so a heart rate. Totals are kept for these.
bool isCumulative(std::string_view type);

}  // namespace pedvar
