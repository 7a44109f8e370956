/// What gpsd says, line by line.
#pragma once

#include "linux/location/gpsd_report.h"
#include "platform/phrase.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>

namespace pedvar {

/// How many receivers gpsd has, told at the beginning and whenever one comes or goes.
struct GpsdReceivers {
    std::size_t count = 0;
    bool operator==(const GpsdReceivers&) const = default;
};
/// Nothing of interest, or nothing for as long as was waited.
struct GpsdSilence {
    bool operator==(const GpsdSilence&) const = default;
};
/// The connection has ended.
struct GpsdEnd {
    Phrase reason;  // for people
    bool operator==(const GpsdEnd&) const = default;
};
using GpsdMessage = std::variant<GpsdReport, GpsdReceivers, GpsdSilence, GpsdEnd>;

/// Gives the lines of one connection their meaning. What a line says in another form than gpsd's is not known, and
/// a line that is no JSON says nothing.
class GpsdInterpreter {
public:
    GpsdMessage interpret(std::string_view line);

private:
    struct Dilution {
        std::optional<double> horizontal, vertical;
    };

    std::set<std::string> receivers_;            // by their paths
    std::map<std::string, Dilution> dilutions_;  // by the paths of the receivers
};

}  // namespace pedvar
