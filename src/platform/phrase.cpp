#include "platform/phrase.h"

#include <charconv>
#include <optional>

namespace pedvar {
namespace {

/// None when a place of the text has no value, or a value no place.
std::optional<std::string> filled(std::string_view text, const std::vector<std::string>& values) {
    std::string result;
    std::vector<bool> isUsed(values.size());
    std::size_t next = 0;
    while (!text.empty()) {
        const std::size_t open = text.find('{');
        const std::size_t close = open == text.npos ? open : text.find('}', open);
        if (close == text.npos) break;
        std::size_t index = next;
        std::from_chars(text.data() + open + 1, text.data() + close, index);
        if (index >= values.size()) return std::nullopt;
        result.append(text.substr(0, open)).append(values[index]);
        isUsed[index] = true;
        next = index + 1;
        text.remove_prefix(close + 1);
    }
    for (const bool used : isUsed) {
        if (!used) return std::nullopt;
    }
    return result.append(text);
}

}  // namespace

std::string Phrase::in(const TextCatalogue& catalogue) const {
    if (!isEnglish_) return text_;
    if (values_.empty()) return catalogue.text(text_);
    std::vector<std::string> values;
    for (const Phrase& value : values_) values.push_back(value.in(catalogue));
    if (auto translated = filled(catalogue.text(text_), values)) return std::move(*translated);
    return filled(text_, values).value_or(text_);
}

}  // namespace pedvar
