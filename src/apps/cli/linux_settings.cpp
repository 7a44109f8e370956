#include "apps/cli/linux_settings.h"

#include <algorithm>

namespace pedvar {

std::optional<WebAddress> WebAddress::fromText(std::string_view text) {
    const bool isWeb = text.starts_with("https://") || text.starts_with("http://");
    const std::size_t host = text.find("//") + 2;
    const bool isSound = isWeb && host < text.size() && text[host] != '/' &&
                         std::ranges::all_of(text, [](char c) { return '!' <= c && c <= '~'; });
    if (!isSound && !text.empty()) return std::nullopt;
    WebAddress address;
    address.text_ = text;
    return address;
}

std::optional<FolderPath> FolderPath::fromText(std::string_view text) {
    if (!text.empty() && !text.starts_with('/')) return std::nullopt;
    FolderPath folder;
    folder.text_ = text;
    return folder;
}

}  // namespace pedvar
