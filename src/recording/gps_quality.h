/// How good the receiver's fixes are, for people.
#pragma once

#include <optional>
#include <string_view>

namespace pedvar {

/// Texts in English, to be looked up in the person's language.
struct GPSQuality {
    std::string_view label;
    std::string_view description;
    bool operator==(const GPSQuality&) const = default;
};

/// By the horizontal accuracy in metres; none before the first fix.
GPSQuality gpsQuality(std::optional<double> accuracy);

}  // namespace pedvar
