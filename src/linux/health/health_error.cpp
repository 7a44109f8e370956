#include "linux/health/health_error.h"

#include <utility>

namespace pedvar {
namespace {

constexpr const char* errorDomain = "PedvarStore";
constexpr std::int64_t invalidArgumentCode = 3;  // the platform's

}  // namespace

HKError healthError(const StoreError& error) {
    if (error.sqliteCode != 0) return {"SQLite", error.sqliteCode, error.message.inEnglish()};
    return {errorDomain, static_cast<std::int64_t>(error.kind), error.message.inEnglish()};
}

HKError invalidArgument(std::string description) {
    return {errorDomain, invalidArgumentCode, std::move(description)};
}

}  // namespace pedvar
