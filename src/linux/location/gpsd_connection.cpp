#include "linux/location/gpsd_connection.h"

#include "linux/system/shared_library.h"

#include <gps.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>
#include <utility>

namespace pedvar {

namespace {

constexpr const char* libraryPackage = "libgps28";
constexpr std::size_t longestLine = 65'536;  // bytes; gpsd's own limit is 10 KiB

/// What is used of libgps. It is loaded by the first who connects, and stays: threads may use it until the very
/// end of the program.
///
/// It connects, and asks gpsd to tell. What gpsd tells is read here: a line with a value of the wrong type sends
/// the reader of version 3.22 around for ever.
struct Library {
    SharedLibrary library{PEDVAR_LIBGPS, libraryPackage};
    decltype(&::gps_open) open = library.function("gps_open");
    decltype(&::gps_close) close = library.function("gps_close");
    decltype(&::gps_stream) stream = library.function("gps_stream");
    decltype(&::gps_errstr) errstr = library.function("gps_errstr");
};

const Library& libgps() {
    static const Library library;
    return library;
}

}  // namespace

std::string GpsdAddress::text() const {
    return (host.find(':') == std::string::npos ? host : "[" + host + "]") + ":" + port;
}

struct GpsdConnection::State {
    gps_data_t data{};
    bool isOpen = false;
    std::string received;  // and not interpreted yet
    GpsdInterpreter interpreter;

    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (isOpen) libgps().close(&data);
    }

    std::optional<GpsdMessage> nextReceived() {
        const std::size_t end = received.find('\n');
        if (end == std::string::npos) return std::nullopt;
        GpsdMessage message = interpreter.interpret(std::string_view(received).substr(0, end));
        received.erase(0, end + 1);
        return message;
    }

    /// What there is to receive; why there will be nothing any more.
    std::expected<void, GpsdEnd> receive() {
        std::array<char, 8'192> bytes;
        const ssize_t count = recv(data.gps_fd, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (count > 0) {
            received.append(bytes.data(), static_cast<std::size_t>(count));
            if (received.size() <= longestLine) return {};
            return std::unexpected(GpsdEnd{Phrase("what it says has no end")});
        }
        if (count == 0) return std::unexpected(GpsdEnd{Phrase("it has ended the connection")});
        if (errno == EAGAIN || errno == EINTR) return {};
        return std::unexpected(GpsdEnd{Phrase(std::strerror(errno))});
    }
};

std::expected<GpsdConnection, Phrase> GpsdConnection::open(const GpsdAddress& address) {
    if (libgps().library.problem())
        return std::unexpected(
            Phrase("{0} is missing, which the package {1} has", {PEDVAR_LIBGPS, libraryPackage}));
    auto state = std::make_unique<State>();
    // The library leaves a code of its own in the place of the system's.
    if (libgps().open(address.host.c_str(), address.port.c_str(), &state->data) != 0) {
        return std::unexpected(Phrase(libgps().errstr(errno)));
    }
    state->isOpen = true;
    if (libgps().stream(&state->data, WATCH_ENABLE | WATCH_JSON, nullptr) < 0) {
        return std::unexpected(Phrase(std::strerror(errno)));
    }
    return GpsdConnection(std::move(state));
}

GpsdConnection::GpsdConnection(std::unique_ptr<State> state) : state_(std::move(state)) {}
GpsdConnection::GpsdConnection(GpsdConnection&&) noexcept = default;
GpsdConnection& GpsdConnection::operator=(GpsdConnection&&) noexcept = default;
GpsdConnection::~GpsdConnection() = default;

GpsdMessage GpsdConnection::next(std::chrono::milliseconds patience) {
    if (auto message = state_->nextReceived()) return std::move(*message);
    pollfd socket{.fd = state_->data.gps_fd, .events = POLLIN, .revents = 0};
    if (poll(&socket, 1, static_cast<int>(patience.count())) <= 0) return GpsdSilence{};
    if (auto received = state_->receive(); !received) return std::move(received.error());
    if (auto message = state_->nextReceived()) return std::move(*message);
    return GpsdSilence{};
}

}  // namespace pedvar
