/// Settings that only this program has.
#pragma once

#include "core/record.h"
#include "linux/location/gpsd_report.h"

namespace pedvar {

enum class ColorOutput {
    automatic,  // on a terminal that wants them
    always,
    never,
};

struct LinuxSettings {
    ColorOutput colorOutput = ColorOutput::automatic;
    // How gpsd's accuracies become those that the recorder judges fixes by.
    double gpsHorizontalFactor = AccuracyFactors().horizontal;
    double gpsVerticalFactor = AccuracyFactors().vertical;

    using Fields = FieldList<&LinuxSettings::colorOutput, &LinuxSettings::gpsHorizontalFactor,
                             &LinuxSettings::gpsVerticalFactor>;
    bool operator==(const LinuxSettings&) const = default;
};
static_assert(isComplete<LinuxSettings>);

}  // namespace pedvar
