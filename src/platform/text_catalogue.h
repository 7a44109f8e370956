/// Texts in the person's language.
#pragma once

#include <string>
#include <string_view>

namespace pedvar {

class TextCatalogue {
public:
    virtual ~TextCatalogue() = default;

    /// The text for `english` in the language in effect, or `english` itself. A text with values in it is looked
    /// up whole, its places marked as {fmt} marks them ("{} of {} steps"), and filled in afterwards.
    virtual std::string text(std::string_view english) const = 0;
};

}  // namespace pedvar
