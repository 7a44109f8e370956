/// Texts in the person's language.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pedvar {

class TextCatalogue {
public:
    virtual ~TextCatalogue() = default;

    /// The text for `english` in the language in effect, or `english` itself. A text with values in it is looked
    /// up whole, its places marked as {fmt} marks them ("{} of {} steps"), and filled in afterwards.
    virtual std::string text(std::string_view english) const = 0;

    /// One of two texts, by the number that is told. A language may have other forms than English, which has `one`
    /// for 1 and `many` for the rest.
    virtual std::string plural(std::string_view one, std::string_view many, std::int64_t count) const {
        return text(count == 1 ? one : many);
    }
};

/// Every text stays English.
class EnglishTexts : public TextCatalogue {
public:
    std::string text(std::string_view english) const override { return std::string(english); }
};

}  // namespace pedvar
