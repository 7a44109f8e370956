#include "support/gpsd_rig.h"

#include "core/check.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <thread>
#include <utility>

namespace pedvar {
namespace {

constexpr const char* program = "/usr/sbin/gpsd";
constexpr int patience = 60'000;  // milliseconds; a machine can be slow

void closeIfOpen(int& file) {
    if (file >= 0) close(std::exchange(file, -1));
}

int listeningSocket() {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    check(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "there is no free port");
    check(listen(socket, 1) == 0, "nobody can listen");
    return socket;
}

std::string portOf(int socket) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
    return std::to_string(ntohs(address.sin_port));
}

template <class... Values>
std::string formatted(const char* format, Values... values) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

std::string sentence(const std::string& body) {
    unsigned checksum = 0;
    for (const char character : body) checksum ^= static_cast<unsigned char>(character);
    return "$" + body + formatted("*%02X\r\n", checksum);
}

/// "4807.0380,N".
std::string angle(double degrees, int digits, const char* signs) {
    const double size = std::abs(degrees);
    const double whole = std::floor(size);
    return formatted("%0*.0f%08.5f,%c", digits, whole, (size - whole) * 60, signs[degrees < 0 ? 1 : 0]);
}

/// "101530.25" and "240527".
std::pair<std::string, std::string> timeAndDay(double moment) {
    const auto second = static_cast<std::time_t>(std::floor(moment));
    std::tm utc{};
    gmtime_r(&second, &utc);
    return {formatted("%02d%02d%05.2f", utc.tm_hour, utc.tm_min, utc.tm_sec + (moment - std::floor(moment))),
            formatted("%02d%02d%02d", utc.tm_mday, utc.tm_mon + 1, utc.tm_year % 100)};
}

}  // namespace

NmeaReceiver::NmeaReceiver() : receiver_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    check(receiver_ >= 0 && grantpt(receiver_) == 0 && unlockpt(receiver_) == 0, "there is no serial line");
    device_ = ptsname(receiver_);
    machine_ = open(device_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    chmod(device_.c_str(), 0666);  // gpsd gives up the rights of root
    termios line{};
    tcgetattr(machine_, &line);
    cfmakeraw(&line);
    tcsetattr(machine_, TCSANOW, &line);
}

void NmeaReceiver::say(std::string_view bytes) const {
    check(write(receiver_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()), "the line is full");
}

void NmeaReceiver::unplug() {
    closeIfOpen(machine_);
    closeIfOpen(receiver_);
}

std::string nmeaFix(double moment, double latitude, double longitude, double altitude) {
    const auto [time, day] = timeAndDay(moment);
    const std::string place = angle(latitude, 2, "NS") + "," + angle(longitude, 3, "EW");
    return sentence("GPGGA," + time + "," + place + ",1,08,0.9," + formatted("%.1f", altitude) + ",M,47.0,M,,") +
           sentence("GPGSA,A,3,01,02,03,04,05,06,07,08,,,,,1.5,0.9,1.2") +
           sentence("GPRMC," + time + ",A," + place + ",,," + day + ",,,A");
}

std::string nmeaWithoutFix(double moment) {
    const auto [time, day] = timeAndDay(moment);
    return sentence("GPGGA," + time + ",,,,,0,00,,,M,,M,,") + sentence("GPGSA,A,1,,,,,,,,,,,,,,,") +
           sentence("GPRMC," + time + ",V,,,,,,," + day + ",,,N");
}

std::string freePort() {
    int socket = listeningSocket();
    const std::string port = portOf(socket);
    closeIfOpen(socket);
    return port;
}

Gpsd::Gpsd(std::string port, const std::filesystem::path& folder, const std::vector<std::string>& devices)
    : socket_(folder / "gpsd.socket") {
    check(access(program, X_OK) == 0, "gpsd is not installed: ./dev setup does that");
    std::filesystem::remove(socket_);
    std::vector<std::string> words{program, "-N", "-n", "-S", std::move(port), "-F", socket_.string()};
    words.insert(words.end(), devices.begin(), devices.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 2, "/dev/null", O_WRONLY, 0);
    const int failure = posix_spawn(&process_, program, &files, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    check(failure == 0, "gpsd cannot be started");
}

void Gpsd::kill() {
    if (process_ == 0) return;
    ::kill(process_, SIGKILL);
    waitpid(std::exchange(process_, 0), nullptr, 0);
}

void Gpsd::control(const std::string& command) const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socket_.c_str(), sizeof address.sun_path - 1);
    for (int attempt = 0; attempt < patience / 100; ++attempt) {
        int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        bool isDone = connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        const std::string line = command + "\r\n";
        std::array<char, 16> answer{};
        isDone = isDone && write(socket, line.data(), line.size()) > 0 &&
                 read(socket, answer.data(), answer.size()) > 0 && answer[0] == 'O';
        closeIfOpen(socket);
        if (isDone) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    check(false, "gpsd does not take orders");
}

FalseDaemon::FalseDaemon() : listening_(listeningSocket()), port_(portOf(listening_)) {}

FalseDaemon::~FalseDaemon() {
    hangUp();
    closeIfOpen(listening_);
}

void FalseDaemon::accept() {
    hangUp();
    pollfd waiting{.fd = listening_, .events = POLLIN, .revents = 0};
    check(poll(&waiting, 1, patience) == 1, "nobody connects");
    connection_ = accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
}

bool FalseDaemon::say(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = send(connection_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void FalseDaemon::hangUp() {
    closeIfOpen(connection_);
}

}  // namespace pedvar
