#include "linux/system/environment_language.h"

#include <cstdlib>
#include <string_view>

namespace pedvar {

std::string localeName(const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        const char* name = std::getenv(variable);
        if (name && *name) return name;
    }
    return "C";
}

std::vector<std::string> languagesOfEnvironment() {
    const std::string locale = localeName("LC_MESSAGES");
    if (locale == "C" || locale == "POSIX") return {};
    const char* const list = std::getenv("LANGUAGE");
    std::vector<std::string> languages;
    std::string_view rest = list ? list : "";
    while (!rest.empty()) {
        const std::size_t end = rest.find(':');
        if (const auto name = rest.substr(0, end); !name.empty()) languages.emplace_back(name);
        rest = end == rest.npos ? std::string_view() : rest.substr(end + 1);
    }
    if (languages.empty() && !locale.starts_with("C.")) languages.push_back(locale);
    return languages;
}

}  // namespace pedvar
