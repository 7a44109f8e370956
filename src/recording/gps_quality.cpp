#include "recording/gps_quality.h"

namespace pedvar {

GPSQuality gpsQuality(std::optional<double> accuracy) {
    // i18n: texts
    constexpr struct {
        double below;  // metres
        GPSQuality quality;
    } qualities[] = {
        {5,
         {"Excellent",
          "Your GPS has locked onto satellites with excellent precision. Route tracking is at its best!"}},
        {10, {"Good", "GPS is working great! Your route is being tracked accurately."}},
        {20, {"Fair", "GPS is working well. Your route is being tracked reliably."}},
        {50, {"Poor", "GPS is actively tracking your route. Signal may improve in more open areas."}},
    };
    constexpr GPSQuality none{"Poor", "Connecting to GPS satellites. This usually takes just a few moments."};
    // i18n: end
    if (accuracy && *accuracy >= 0) {
        for (const auto& [below, quality] : qualities) {
            if (*accuracy < below) return quality;
        }
    }
    return none;
}

}  // namespace pedvar
