/// Texts for people.
#pragma once

#include "platform/phrase.h"
#include "platform/text_catalogue.h"

#include <fmt/format.h>

#include <cstdint>
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
        return filled(catalogue_->text({source.data(), source.size()}), english, values...);
    }

    /// The text for so many: "{} day" or "{} days".
    template <class... Values>
    std::string plural(fmt::format_string<const Values&...> one, fmt::format_string<const Values&...> many,
                       std::int64_t count, const Values&... values) const {
        const fmt::string_view singular = one, plural = many;
        const std::string translated =
            catalogue_->plural({singular.data(), singular.size()}, {plural.data(), plural.size()}, count);
        return filled(translated, count == 1 ? one : many, values...);
    }

    /// A text without places that is not known before the program runs.
    std::string lookUp(std::string_view english) const { return catalogue_->text(english); }

    std::string of(const Phrase& phrase) const { return phrase.in(*catalogue_); }

private:
    template <class... Values>
    static std::string filled(const std::string& translated, fmt::format_string<const Values&...> english,
                              const Values&... values) {
        try {
            return fmt::format(fmt::runtime(translated), values...);
        } catch (const fmt::format_error&) {
            return fmt::format(english, values...);
        }
    }

    const TextCatalogue* catalogue_;
};

}  // namespace pedvar
