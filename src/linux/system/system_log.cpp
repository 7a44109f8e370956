#include "linux/system/system_log.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

namespace pedvar {

namespace {

constexpr const char* logSocket = "/dev/log";

/// The service manager names the device and file number of the stream that the journal reads. Terminals that such
/// a service opened inherit the variable and are another stream.
bool isErrorJournalled() {
    const char* stream = std::getenv("JOURNAL_STREAM");
    struct stat error{};
    return stream && fstat(STDERR_FILENO, &error) == 0 &&
           fmt::format("{}:{}", error.st_dev, error.st_ino) == stream;
}

int priority(LogLevel level) {
    constexpr std::array priorities{LOG_DEBUG, LOG_INFO, LOG_NOTICE, LOG_ERR, LOG_CRIT};
    return priorities[static_cast<std::size_t>(level)];
}

/// One line: a line break in a message would begin a line without priority.
std::string line(std::string_view subsystem, std::string_view category, std::string_view message) {
    std::string text = fmt::format("{} {}: {}", subsystem, category, message);
    std::ranges::replace(text, '\n', ' ');
    return text;
}

}  // namespace

LogDestination suitableLogDestination() {
    if (isErrorJournalled()) return LogDestination::journalledError;
    return access(logSocket, W_OK) == 0 ? LogDestination::journal : LogDestination::standardError;
}

SystemLog::SystemLog(LogDestination destination, std::FILE* errorStream)
    : destination_(destination), errorStream_(errorStream) {
    if (destination_ == LogDestination::journal) openlog("pedvar", LOG_PID, LOG_USER);
}

void SystemLog::log(std::string_view subsystem, std::string_view category, LogLevel level,
                    std::string_view message) {
    const std::string text = line(subsystem, category, message);
    switch (destination_) {
        case LogDestination::journal:
            syslog(priority(level), "%s", text.c_str());
            break;
        case LogDestination::journalledError:
            write(fmt::format("<{}>{}\n", priority(level), text));
            break;
        case LogDestination::standardError:
            if (level >= LogLevel::error) write(fmt::format("pedvar: {}\n", text));
            break;
    }
}

void SystemLog::write(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), errorStream_);
}

}  // namespace pedvar
