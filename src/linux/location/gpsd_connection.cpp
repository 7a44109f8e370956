#include "linux/location/gpsd_connection.h"

#include <dlfcn.h>
#include <gps.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace pedvar {

namespace {

constexpr std::size_t longestMessage = 10'240;  // bytes, as gpsd says

/// What is used of libgps. It is loaded by the first who connects, and stays.
struct Library {
    decltype(&::gps_open) open = nullptr;
    decltype(&::gps_close) close = nullptr;
    decltype(&::gps_stream) stream = nullptr;
    decltype(&::gps_waiting) waiting = nullptr;
    decltype(&::gps_read) read = nullptr;
    decltype(&::gps_errstr) errstr = nullptr;
    std::string problem;  // why it cannot be used; empty when it can

    Library() {
        void* const library = dlopen(PEDVAR_LIBGPS, RTLD_NOW | RTLD_LOCAL);
        const bool isThere = library && find(library, open, "gps_open") && find(library, close, "gps_close") &&
                             find(library, stream, "gps_stream") && find(library, waiting, "gps_waiting") &&
                             find(library, read, "gps_read") && find(library, errstr, "gps_errstr");
        if (!isThere) problem = std::string(PEDVAR_LIBGPS) + " is not installed";
    }

private:
    template <class Function>
    static bool find(void* library, Function& function, const char* name) {
        function = reinterpret_cast<Function>(dlsym(library, name));
        return function != nullptr;
    }
};

const Library& libgps() {
    static const Library library;
    return library;
}

/// gpsd's "not a number" is a value that is not there.
std::optional<double> known(double value) {
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<Date> known(const timespec& time) {
    if (time.tv_sec <= 0) return std::nullopt;
    const std::chrono::sys_time<std::chrono::nanoseconds> since1970{std::chrono::seconds(time.tv_sec) +
                                                                    std::chrono::nanoseconds(time.tv_nsec)};
    return dateOf(std::chrono::floor<std::chrono::milliseconds>(since1970));
}

GpsdReport::Mode modeOf(int mode) {
    if (mode >= MODE_3D) return GpsdReport::Mode::threeDimensional;
    return mode == MODE_2D ? GpsdReport::Mode::twoDimensional : GpsdReport::Mode::noFix;
}

GpsdReport reportIn(const gps_data_t& data) {
    const gps_fix_t& fix = data.fix;
    return {.mode = modeOf(fix.mode),
            .time = known(fix.time),
            .latitude = known(fix.latitude),
            .longitude = known(fix.longitude),
            .altitude = known(fix.altMSL),
            .horizontalError = known(fix.eph),
            .longitudeError = known(fix.epx),
            .latitudeError = known(fix.epy),
            .verticalError = known(fix.epv),
            .horizontalDilution = data.dop.hdop > 0 ? known(data.dop.hdop) : std::nullopt,
            .speed = known(fix.speed),
            .course = known(fix.track)};
}

}  // namespace

std::string GpsdAddress::text() const {
    return (host.find(':') == std::string::npos ? host : "[" + host + "]") + ":" + port;
}

struct GpsdConnection::State {
    gps_data_t data{};
    std::array<char, longestMessage> message{};
    std::set<std::string> receivers;  // by their paths
    bool isOpen = false;

    ~State() {
        if (!isOpen) return;
        libgps().stream(&data, WATCH_DISABLE, nullptr);
        libgps().close(&data);
    }

    /// One that came or went.
    void takeDevice(const devconfig_t& device) {
        if (device.activated.tv_sec > 0) {
            receivers.insert(device.path);
        } else {
            receivers.erase(device.path);
        }
    }

    /// All that gpsd has, open or not.
    void takeDevices() {
        receivers.clear();
        for (int i = 0; i < data.devices.ndevices; ++i) receivers.insert(data.devices.list[i].path);
    }

    GpsdMessage interpreted() {
        const std::string_view text = message.data();
        if (text.starts_with(R"({"class":"TPV")")) return reportIn(data);
        if (text.starts_with(R"({"class":"DEVICES")")) {
            takeDevices();
        } else if (text.starts_with(R"({"class":"DEVICE")")) {
            takeDevice(data.dev);
        } else {
            return GpsdSilence{};
        }
        return GpsdReceivers{receivers.size()};
    }
};

std::expected<GpsdConnection, std::string> GpsdConnection::open(const GpsdAddress& address) {
    if (!libgps().problem.empty()) return std::unexpected(libgps().problem);
    auto state = std::make_unique<State>();
    // The library leaves its own code in the place of the system's.
    if (libgps().open(address.host.c_str(), address.port.c_str(), &state->data) != 0) {
        return std::unexpected(std::string(libgps().errstr(-errno)));
    }
    state->isOpen = true;
    if (libgps().stream(&state->data, WATCH_ENABLE | WATCH_JSON, nullptr) < 0) {
        return std::unexpected(std::string(std::strerror(errno)));
    }
    return GpsdConnection(std::move(state));
}

GpsdConnection::GpsdConnection(std::unique_ptr<State> state) : state_(std::move(state)) {}
GpsdConnection::GpsdConnection(GpsdConnection&&) noexcept = default;
GpsdConnection& GpsdConnection::operator=(GpsdConnection&&) noexcept = default;
GpsdConnection::~GpsdConnection() = default;

GpsdMessage GpsdConnection::next(std::chrono::milliseconds patience) {
    const auto microseconds = std::chrono::microseconds(patience).count();
    errno = 0;
    if (!libgps().waiting(&state_->data, static_cast<int>(microseconds))) {
        if (errno == 0 || errno == EINTR) return GpsdSilence{};
        return GpsdEnd{std::strerror(errno)};
    }
    state_->message.front() = '\0';
    errno = 0;
    const int count = libgps().read(&state_->data, state_->message.data(), static_cast<int>(longestMessage));
    if (count < 0) return GpsdEnd{errno != 0 ? std::strerror(errno) : "it ended the connection"};
    if (count == 0) return GpsdSilence{};
    return state_->interpreted();
}

}  // namespace pedvar
