/// Texts for people.
#pragma once

#include "platform/text_catalogue.h"

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <utility>

namespace pedvar {

/// Looks texts up whole and fills their places in afterwards.
class Texts {
public:
    explicit Texts(const TextCatalogue& catalogue) : catalogue_(&catalogue) {}

    /// `english` in the person's language, its places filled with `values`. A translation whose places do not fit
    /// the values gives way to the English text.
    template <class... Values>
    std::string operator()(fmt::format_string<const Values&...> english, const Values&... values) const {
        const fmt::string_view source = english;
        const std::string translated = catalogue_->text({source.data(), source.size()});
        try {
            return fmt::format(fmt::runtime(translated), values...);
        } catch (const fmt::format_error&) {
            return fmt::format(english, values...);
        }
    }

    /// A text without places that is not known before the program runs.
    std::string lookUp(std::string_view english) const { return catalogue_->text(english); }

private:
    const TextCatalogue* catalogue_;
};

}  // namespace pedvar
