#include "platform/phrase.h"

#include <charconv>

namespace pedvar {

std::string Phrase::in(const TextCatalogue& catalogue) const {
    const std::string text = catalogue.text(english);
    std::string result;
    std::size_t position = 0, next = 0;
    while (position < text.size()) {
        const std::size_t open = text.find('{', position);
        const std::size_t close = open == std::string::npos ? open : text.find('}', open);
        if (close == std::string::npos) break;
        result.append(text, position, open - position);
        std::size_t index = next;
        std::from_chars(text.data() + open + 1, text.data() + close, index);
        if (index < values.size()) result += catalogue.text(values[index]);
        next = index + 1;
        position = close + 1;
    }
    return result.append(text, position);
}

}  // namespace pedvar
