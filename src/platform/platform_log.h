/// The system's log.
#pragma once

#include <string_view>

namespace pedvar {

enum class LogLevel { debug, info, standard, error, fault };

/// Takes finished lines; everything in them is meant to be read by others. From any thread.
class PlatformLog {
public:
    virtual ~PlatformLog() = default;

    virtual void log(std::string_view subsystem, std::string_view category, LogLevel level,
                     std::string_view message) = 0;
};

inline constexpr std::string_view logSubsystem = "com.pedvarapp.PedvarApp";

}  // namespace pedvar
