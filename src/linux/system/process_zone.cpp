#include "linux/system/process_zone.h"

#include "linux/system/absl_zone.h"
#include "linux/system/posix_zone.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace pedvar {

namespace {

constexpr const char* machineZone = "/etc/localtime";

ProcessZone utcBecause(std::string_view zone) {
    return {AbslZone::utc(),
            Phrase("The time zone {} is not known on this machine; times are in UTC.", {std::string(zone)})};
}

ProcessZone zoneOfMachine() {
    std::error_code error;
    if (!std::filesystem::exists(machineZone, error)) return {AbslZone::utc(), std::nullopt};
    // By the file behind the link, whose path tells zones apart.
    const auto file = std::filesystem::canonical(machineZone, error);
    if (auto zone = AbslZone::named(error ? machineZone : file.string())) return {std::move(zone), std::nullopt};
    return utcBecause(machineZone);
}

}  // namespace

ProcessZone processZone() {
    const char* variable = std::getenv("TZ");
    if (!variable) return zoneOfMachine();
    std::string name = variable;
    if (name.starts_with(':')) name.erase(0, 1);
    if (name.empty()) return {AbslZone::utc(), std::nullopt};
    if (auto zone = AbslZone::named(name)) return {std::move(zone), std::nullopt};
    if (isPosixZoneRule(name)) return {std::make_unique<PosixZone>(), std::nullopt};
    return utcBecause(name);
}

}  // namespace pedvar
