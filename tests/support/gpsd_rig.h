/// A real gpsd, receivers that speak to it, and a daemon that is none.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// A receiver at the end of a serial line.
class NmeaReceiver {
public:
    NmeaReceiver();
    NmeaReceiver(const NmeaReceiver&) = delete;
    NmeaReceiver& operator=(const NmeaReceiver&) = delete;
    ~NmeaReceiver() { unplug(); }

    const std::string& device() const { return device_; }
    void say(std::string_view bytes) const;
    void unplug();

private:
    int receiver_ = -1;  // the two ends of the line
    int machine_ = -1;
    std::string device_;
};

/// What a receiver says of a place at a moment: GGA, GSA and RMC. The moment counts from 1970.
std::string nmeaFix(double moment, double latitude, double longitude, double altitude);
/// The same while it sees no satellites.
std::string nmeaWithoutFix(double moment);

/// A port at which nobody listens now.
std::string freePort();

/// gpsd in the foreground, on the loopback interface only.
class Gpsd {
public:
    /// `folder` takes its control socket.
    Gpsd(std::string port, const std::filesystem::path& folder, const std::vector<std::string>& devices);
    Gpsd(const Gpsd&) = delete;
    Gpsd& operator=(const Gpsd&) = delete;
    ~Gpsd() { kill(); }

    void kill();
    /// As udev does when a device comes or goes.
    void add(const std::string& device) const { control("+" + device); }
    void remove(const std::string& device) const { control("-" + device); }

private:
    void control(const std::string& command) const;

    std::filesystem::path socket_;
    pid_t process_ = 0;
};

/// Listens at a port and says to each who connects what it is told to say, byte for byte.
class FalseDaemon {
public:
    FalseDaemon();
    FalseDaemon(const FalseDaemon&) = delete;
    FalseDaemon& operator=(const FalseDaemon&) = delete;
    ~FalseDaemon();

    const std::string& port() const { return port_; }
    /// Waits for the next who connects.
    void accept();
    /// Whether all could be said before the other end went.
    bool say(std::string_view bytes) const;
    void hangUp();

private:
    int listening_ = -1;
    int connection_ = -1;
    std::string port_;
};

}  // namespace pedvar
