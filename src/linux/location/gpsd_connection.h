/// A connection to gpsd.
#pragma once

#include "linux/location/gpsd_message.h"

#include <chrono>
#include <expected>
#include <memory>
#include <string>

namespace pedvar {

struct GpsdAddress {
    std::string host = "localhost";
    std::string port = "2947";

    /// "localhost:2947".
    std::string text() const;
};

/// Watches all receivers of one gpsd. From one thread, which it blocks.
class GpsdConnection {
public:
    /// Why there is none is for people.
    static std::expected<GpsdConnection, Phrase> open(const GpsdAddress& address);
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
