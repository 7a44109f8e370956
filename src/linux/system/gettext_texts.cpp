#include "linux/system/gettext_texts.h"

#include "linux/system/environment_language.h"
#include "linux/system/message_file.h"

#include <libintl.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

/// Counts changes of the language; gettext forgets what it has found when it moves.
extern "C" int _nl_msg_cat_cntr;

namespace pedvar {
namespace {

constexpr const char* domain = "pedvar";
constexpr std::string_view untranslated = "en";

/// "de_AT" of "de-AT" or "de_AT.UTF-8".
std::string plainName(std::string_view language) {
    std::string name(language.substr(0, language.find_first_of(".@")));
    std::ranges::replace(name, '-', '_');
    return name;
}

}  // namespace

/// While it lives, gettext looks into the catalogue.
class GettextTexts::Lookup {
public:
    Lookup(locale_t locale, const std::string& language) : before_(uselocale(locale)) {
        const char* const told = std::getenv("LANGUAGE");
        if (told && told == language) return;
        setenv("LANGUAGE", language.c_str(), 1);
        ++_nl_msg_cat_cntr;
    }
    Lookup(const Lookup&) = delete;
    Lookup& operator=(const Lookup&) = delete;
    ~Lookup() { uselocale(before_); }

private:
    locale_t before_;
};

GettextTexts::GettextTexts() : environment_(languagesOfEnvironment()) {
    // A variable that is there is changed in its place; one that is added moves all others from under the threads
    // that read them.
    setenv("LANGUAGE", "", 0);
}

GettextTexts::GettextTexts(std::filesystem::path folder) : GettextTexts() {
    folder_ = std::move(folder);
}

void GettextTexts::speak(std::string_view code) {
    if (code_ == code) return;
    code_ = code;
    isFound_ = false;
}

std::string GettextTexts::text(std::string_view english) const {
    std::string key(english);
    const auto& language = catalogue();
    if (!language || key.empty()) return key;
    const Lookup lookup(locale_.get(), *language);
    return dgettext(domain, key.c_str());
}

std::string GettextTexts::plural(std::string_view one, std::string_view many, std::int64_t count) const {
    const auto& language = catalogue();
    if (!language) return std::string(count == 1 ? one : many);
    const Lookup lookup(locale_.get(), *language);
    const auto number = static_cast<unsigned long>(std::abs(count));
    return dngettext(domain, std::string(one).c_str(), std::string(many).c_str(), number);
}

const std::optional<std::string>& GettextTexts::catalogue() const {
    if (!isFound_) catalogue_ = find();
    isFound_ = true;
    return catalogue_;
}

std::optional<std::string> GettextTexts::find() const {
    const std::vector<std::string> wanted = code_.empty() ? environment_ : std::vector{code_};
    std::optional<std::filesystem::path> folder = folder_;
    for (const std::string& language : wanted) {
        const std::string name = plainName(language);
        const std::string family = name.substr(0, name.find('_'));
        if (family == untranslated || name == "C" || name == "POSIX") return std::nullopt;
        if (!folder) folder = translationsFolder();
        for (const std::string& each : {name, family}) {
            if (each.empty() || each.contains('/')) continue;
            if (!isSoundCatalogueFile(*folder / each / "LC_MESSAGES" / (std::string(domain) + ".mo"))) continue;
            // Any locale but "C" lets gettext translate; the first one is part of Debian's libc-bin.
            if (!locale_) locale_.reset(newlocale(LC_MESSAGES_MASK, "C.UTF-8", nullptr));
            if (!locale_) locale_.reset(newlocale(LC_MESSAGES_MASK, "", nullptr));
            if (!locale_) return std::nullopt;
            bindtextdomain(domain, folder->c_str());
            bind_textdomain_codeset(domain, "UTF-8");
            return each;
        }
    }
    return std::nullopt;
}

}  // namespace pedvar
