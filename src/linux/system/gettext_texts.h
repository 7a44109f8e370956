/// Texts from catalogues of translations.
#pragma once

#include "platform/text_catalogue.h"

#include <locale.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace pedvar {

/// Looks texts up with the C library's gettext, which reads a catalogue when its first text is asked for. Without
/// a translation a text stays English. Lives on the main executor; of several, the one that spoke last sets the
/// process's LANGUAGE, which is how gettext is told the language; a locale of the system need not be there for it.
class GettextTexts : public TextCatalogue {
public:
    /// In the language of the environment, from the folder with the program's translations.
    GettextTexts();
    /// From a folder that holds "de/LC_MESSAGES/pedvar.mo".
    explicit GettextTexts(std::filesystem::path folder);

    /// Speaks a language from now on: "de", "en-GB"; that of the environment when the code is empty.
    void speak(std::string_view code);

    std::string text(std::string_view english) const override;
    std::string plural(std::string_view one, std::string_view many, std::int64_t count) const override;

private:
    struct FreeLocale {
        void operator()(locale_t locale) const { freelocale(locale); }
    };
    class Lookup;

    /// The catalogue that holds, by the name of its folder; none for English.
    const std::optional<std::string>& catalogue() const;
    std::optional<std::string> find() const;

    std::optional<std::filesystem::path> folder_;
    std::vector<std::string> environment_;  // before it is changed
    std::string code_;
    // Found out when the first text is asked for, so that who says nothing pays nothing.
    mutable bool isFound_ = false;
    mutable std::optional<std::string> catalogue_;
    mutable std::unique_ptr<std::remove_pointer_t<locale_t>, FreeLocale> locale_;
};

}  // namespace pedvar
