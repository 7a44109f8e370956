/// A connection to gpsd.
#pragma once

#include "linux/location/gpsd_report.h"

#include <chrono>
#include <cstddef>
#include <expected>
#include <memory>
#include <string>
#include <variant>

namespace pedvar {

struct GpsdAddress {
    std::string host = "localhost";
    std::string port = "2947";

    /// "localhost:2947".
    std::string text() const;
};

/// How many receivers gpsd has, told at the beginning and whenever one comes or goes.
struct GpsdReceivers {
    std::size_t count = 0;
    bool operator==(const GpsdReceivers&) const = default;
};
/// Nothing of interest, or nothing for as long as was waited.
struct GpsdSilence {};
/// The connection has ended.
struct GpsdEnd {
    std::string reason;  // for people
};
using GpsdMessage = std::variant<GpsdReport, GpsdReceivers, GpsdSilence, GpsdEnd>;

/// Watches all receivers of one gpsd. From one thread, which it blocks.
class GpsdConnection {
public:
    /// Why there is none is for people.
    static std::expected<GpsdConnection, std::string> open(const GpsdAddress& address);
    GpsdConnection(GpsdConnection&&) noexcept;
    GpsdConnection& operator=(GpsdConnection&&) noexcept;
    ~GpsdConnection();

    GpsdMessage next(std::chrono::milliseconds patience);

private:
    struct State;
    explicit GpsdConnection(std::unique_ptr<State> state);

    std::unique_ptr<State> state_;
};

}  // namespace pedvar
