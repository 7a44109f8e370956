/// Texts for people with values in them.
#pragma once

#include "platform/text_catalogue.h"

#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// A text and what stands in its places, before it is put into the person's language.
struct Phrase {
    std::string_view english;              // of static storage; its places are "{}", or "{0}" and "{1}"
    std::vector<std::string> values = {};  // English words, and numbers the way the person reads them

    /// The text in the language of `catalogue`: the text is looked up whole, and so is each word in it.
    std::string in(const TextCatalogue& catalogue) const;

    bool operator==(const Phrase&) const = default;
};

}  // namespace pedvar
