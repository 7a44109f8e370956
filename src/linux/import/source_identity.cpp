#include "linux/import/source_identity.h"

#include <algorithm>
#include <array>

namespace pedvar {

namespace {

/// What a device text may name, in no fixed order. Only these end the value before them: values hold commas too.
constexpr std::array<std::string_view, 9> deviceKeys = {
    "name",         "manufacturer", "model",           "hardware",
    "firmware",     "software",     "localIdentifier", "UDIDeviceIdentifier",
    "creation date"};

/// The key at the front of "model:Watch, ..."; empty when none stands there.
std::string_view keyAt(std::string_view text) {
    for (const std::string_view key : deviceKeys) {
        if (text.starts_with(key) && text.substr(key.size()).starts_with(':')) return key;
    }
    return {};
}

/// The value of `key` in a device text; empty when it has none.
std::string_view fieldOf(std::string_view device, std::string_view key) {
    constexpr std::string_view separator = ", ";
    for (std::size_t comma = device.find(separator); comma != std::string_view::npos;
         comma = device.find(separator, comma + 1)) {
        const std::string_view rest = device.substr(comma + separator.size());
        if (keyAt(rest) != key) continue;
        const std::string_view value = rest.substr(key.size() + 1);
        std::size_t end = value.find(separator);
        while (end != std::string_view::npos && keyAt(value.substr(end + separator.size())).empty()) {
            end = value.find(separator, end + 1);
        }
        if (end != std::string_view::npos) return value.substr(0, end);
        return value.substr(0, value.find_last_not_of('>') + 1);
    }
    return {};
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Whether `text` holds a word that is `word` or, as in "oldPhone", ends with it capitalised.
bool namesA(std::string_view text, std::string_view word) {
    std::size_t begin = 0;
    while (begin < text.size()) {
        const auto end = std::find_if_not(text.begin() + static_cast<std::ptrdiff_t>(begin), text.end(), isLetter);
        const std::string_view found(text.begin() + static_cast<std::ptrdiff_t>(begin), end);
        const bool isWord = found.size() == word.size() && (found[0] | 0x20) == (word[0] | 0x20) &&
                            found.substr(1) == word.substr(1);
        if (isWord || (found.size() > word.size() && found.ends_with(word))) return true;
        begin += found.size() + 1;
    }
    return false;
}

SourceKind kindNamed(std::string_view text) {
    if (namesA(text, "Watch")) return SourceKind::watch;
    if (namesA(text, "Band") || namesA(text, "Ring")) return SourceKind::band;
    if (namesA(text, "Phone") || namesA(text, "iPod")) return SourceKind::phone;
    return SourceKind::application;
}

}  // namespace

SourceDescription describeSource(std::string_view sourceName, std::string_view device) {
    SourceDescription source{.name = std::string(sourceName),
                             .hardware = std::string(fieldOf(device, "hardware"))};
    if (sourceName == "Pedvar") {
        source.kind = SourceKind::own;
        return source;
    }
    // The device knows best; what has none may tell by its name.
    for (const std::string_view text :
         {std::string_view(source.hardware), fieldOf(device, "model"), fieldOf(device, "name"), sourceName}) {
        source.kind = kindNamed(text);
        if (source.kind != SourceKind::application) break;
    }
    return source;
}

SourceDescription handTyped(const SourceDescription& source) {
    return {.kind = SourceKind::handTyped, .name = source.name, .hardware = {}};
}

std::string_view withoutAddress(std::string_view rawDevice) {
    if (!rawDevice.starts_with("&lt;&lt;HKDevice: ")) return rawDevice;
    const std::size_t comma = rawDevice.find(',');
    return comma == std::string_view::npos ? std::string_view{} : rawDevice.substr(comma);
}

}  // namespace pedvar
