/// The machine's log.
#pragma once

#include "platform/platform_log.h"

#include <cstdio>
#include <string>

namespace pedvar {

/// Where log lines go. Never to standard output.
enum class LogDestination {
    journal,          // the machine's log daemon
    journalledError,  // standard error, which the journal reads: each line with its priority
    standardError,    // a person's terminal or file: errors and faults only
};

/// What suits this process: journalled standard error under a service manager, the log daemon where one listens,
/// else plain standard error.
LogDestination suitableLogDestination();

class SystemLog : public PlatformLog {
public:
    explicit SystemLog(LogDestination destination = suitableLogDestination(), std::FILE* errorStream = stderr);

    void log(std::string_view subsystem, std::string_view category, LogLevel level,
             std::string_view message) override;

private:
    void write(const std::string& text);

    LogDestination destination_;
    std::FILE* errorStream_;
};

}  // namespace pedvar
