#include "platform/number_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace pedvar {

namespace {

std::string grouped(std::string_view digits, std::string_view separator) {
    std::string result;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) result += separator;
        result += digits[i];
    }
    return result;
}

}  // namespace

std::string NumberFormat::number(std::int64_t value) const {
    const std::string digits = std::to_string(value);
    if (value < 0) return "-" + grouped(std::string_view(digits).substr(1), groupingSeparator_);
    return grouped(digits, groupingSeparator_);
}

std::string NumberFormat::number(double value, int digits) const {
    constexpr double longest = 1e15;  // beyond it a double has no fraction worth showing
    if (!(std::abs(value) < longest)) return "–";
    std::array<char, 32> buffer;
    const auto end =
        std::to_chars(buffer.begin(), buffer.end(), std::abs(value), std::chars_format::fixed, digits).ptr;
    std::string_view text(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
    if (text.contains('.')) {
        text = text.substr(0, text.find_last_not_of('0') + 1);
        if (text.ends_with('.')) text.remove_suffix(1);
    }
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string result = value < 0 && text != "0" ? "-" : "";
    result += grouped(text.substr(0, point), groupingSeparator_);
    if (point < text.size()) result.append(decimalSeparator_).append(text.substr(point + 1));
    return result;
}

}  // namespace pedvar
