#include "linux/system/process_zone.h"

#include "linux/system/absl_zone.h"
#include "linux/system/posix_zone.h"

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <system_error>

namespace pedvar {

namespace {

constexpr const char* machineZone = "/etc/localtime";

/// The value of TZ without the colon before it.
std::optional<std::string> zoneVariable() {
    const char* const variable = std::getenv("TZ");
    if (!variable) return std::nullopt;
    return variable[0] == ':' ? variable + 1 : variable;
}

ProcessZone utcBecause(std::string_view zone) {
    return {AbslZone::utc(),
            Phrase("The time zone {} is not known on this machine; times are in UTC.", {std::string(zone)})};
}

/// Another path to the same file for each content: the library reads a path once in a process.
std::string pathByContent(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    std::string path = file.parent_path().string() + "/";
    for (std::size_t bits = std::hash<std::string>()(content); bits != 0; bits /= 2) {
        path += bits % 2 == 1 ? "./" : "/";
    }
    return path + file.filename().string();
}

/// None when `file` holds no zone.
std::unique_ptr<const ZoneRules> zoneIn(const std::string& file) {
    // By the file behind a link: its path in the database tells zones apart.
    std::error_code error;
    const auto target = std::filesystem::canonical(file, error);
    if (error) return nullptr;
    const bool isOfDatabase = target.string().find("/zoneinfo/") != std::string::npos;
    return AbslZone::named(isOfDatabase ? target.string() : pathByContent(target));
}

}  // namespace

std::optional<std::filesystem::path> zoneFile() {
    const std::string name = zoneVariable().value_or(machineZone);
    return name.starts_with('/') ? std::optional<std::filesystem::path>(name) : std::nullopt;
}

ProcessZone processZone() {
    const auto variable = zoneVariable();
    std::error_code error;
    const bool isUtc = variable ? variable->empty() : !std::filesystem::exists(machineZone, error);
    if (isUtc) return {AbslZone::utc(), std::nullopt};
    const std::string name = variable.value_or(machineZone);
    if (auto zone = name.starts_with('/') ? zoneIn(name) : AbslZone::named(name)) {
        return {std::move(zone), std::nullopt};
    }
    if (isPosixZoneRule(name)) return {std::make_unique<PosixZone>(), std::nullopt};
    return utcBecause(name);
}

}  // namespace pedvar
