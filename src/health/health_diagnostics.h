/// What went wrong with the health store, in the platform log.
#pragma once

#include "platform/health_store.h"
#include "platform/platform_log.h"

#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace pedvar {

/// Writes the lines of category "HKDiag". There is one object per process: "once" means once in its life. From any
/// thread, completion handlers of the store included.
class HealthDiagnostics {
public:
    explicit HealthDiagnostics(PlatformLog& log) : log_(log) {}

    void log(LogLevel level, std::string_view message);

    /// A query on `label` (the identifier of its type) failed. The same failure is logged once.
    void readFailed(std::string_view label, const HKError& error);
    /// All attempts to read `label` failed. Logged once per label.
    void readGaveUp(std::string_view label);

private:
    void logOnce(std::string key, std::string_view message);

    PlatformLog& log_;
    std::mutex mutex_;  // guards suppressed_
    std::set<std::string> suppressed_;
};

/// "domain/code: description".
std::string describe(const HKError& error);

}  // namespace pedvar
