/// Numbers the way a region writes them.
#pragma once

#include "platform/locale.h"

#include <cstdint>
#include <string>

namespace pedvar {

class NumberFormat {
public:
    explicit NumberFormat(const Locale& locale)
        : decimalSeparator_(locale.decimalSeparator()), groupingSeparator_(locale.groupingSeparator()) {}

    /// "8,432".
    std::string number(std::int64_t value) const;
    /// Rounded to at most `digits` fraction digits; zeros at the end are left out. "–" for what is no number.
    std::string number(double value, int digits) const;

private:
    std::string decimalSeparator_;
    std::string groupingSeparator_;
};

}  // namespace pedvar
