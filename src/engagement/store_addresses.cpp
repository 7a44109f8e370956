#include "engagement/store_addresses.h"

namespace pedvar {

std::string withQuery(std::string_view address, std::string_view name, std::string_view value) {
    const std::size_t fragment = std::min(address.find('#'), address.size());
    std::string result(address.substr(0, fragment));
    const std::size_t query = result.find('?');
    if (query == std::string::npos) {
        result += '?';
    } else if (query + 1 < result.size() && !result.ends_with('&')) {
        result += '&';
    }
    return result.append(name).append("=").append(value).append(address.substr(fragment));
}

}  // namespace pedvar
