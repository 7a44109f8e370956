#include "health/health_diagnostics.h"

#include <utility>

namespace pedvar {

std::string describe(const HKError& error) {
    return error.domain + "/" + std::to_string(error.code) + ": " + error.localizedDescription;
}

void HealthDiagnostics::log(LogLevel level, std::string_view message) {
    log_.log(logSubsystem, "HKDiag", level, message);
}

void HealthDiagnostics::readFailed(std::string_view label, const HKError& error) {
    const std::string type(label);
    logOnce("read/" + type + "/" + error.domain + "/" + std::to_string(error.code),
            "HKDiag read FAILED " + type + " " + describe(error) +
                " - identical failures suppressed for the rest of this launch");
}

void HealthDiagnostics::readGaveUp(std::string_view label) {
    const std::string type(label);
    logOnce("gaveup/" + type,
            "HKDiag read GAVE UP after 3 attempts " + type +
                " - caller substitutes 0; further give-ups for this type suppressed this launch");
}

void HealthDiagnostics::logOnce(std::string key, std::string_view message) {
    {
        const std::scoped_lock lock(mutex_);
        if (!suppressed_.insert(std::move(key)).second) return;
    }
    log(LogLevel::error, message);
}

}  // namespace pedvar
