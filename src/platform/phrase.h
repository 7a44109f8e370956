/// Texts for people with values in them.
#pragma once

#include "platform/text_catalogue.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pedvar {

/// A text and what stands in its places, before it is put into the person's language. Texts in English, literals
/// or words of a table, are looked up; a `std::string` is shown as it is: a number the way the person reads it, a
/// name, a path, a text that is in the person's language already.
class Phrase {
public:
    Phrase() = default;
    /// The places of `english` are "{}", or "{0}" and "{1}".
    Phrase(std::string_view english, std::vector<Phrase> values = {})
        : text_(english), values_(std::move(values)), isEnglish_(true) {}
    Phrase(const char* english, std::vector<Phrase> values = {})
        : Phrase(std::string_view(english), std::move(values)) {}
    Phrase(std::string shown) : text_(std::move(shown)) {}

    /// The text in the language of `catalogue`: looked up whole, and so is each word in it. A translation whose
    /// places do not fit the values gives way to the English text.
    std::string in(const TextCatalogue& catalogue) const;
    /// For logs.
    std::string inEnglish() const { return in(EnglishTexts()); }

    bool isEmpty() const { return text_.empty(); }
    bool operator==(const Phrase&) const = default;

private:
    std::string text_;
    std::vector<Phrase> values_;
    bool isEnglish_ = false;
};

}  // namespace pedvar
