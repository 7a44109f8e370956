/// Settings that only this program has.
#pragma once

#include "core/record.h"

namespace pedvar {

enum class ColorOutput {
    automatic,  // on a terminal that wants them
    always,
    never,
};

struct LinuxSettings {
    ColorOutput colorOutput = ColorOutput::automatic;

    using Fields = FieldList<&LinuxSettings::colorOutput>;
    bool operator==(const LinuxSettings&) const = default;
};
static_assert(isComplete<LinuxSettings>);

}  // namespace pedvar
