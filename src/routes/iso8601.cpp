#include "routes/iso8601.h"

#include <cmath>
#include <cstddef>

namespace pedvar {

namespace {

using namespace std::chrono;

constexpr bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// Takes a text apart from its start. Once something was not as expected, nothing is.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool isGood() const { return isGood_; }
    bool isAtEnd() const { return rest_.empty(); }
    bool isAtDigit() const { return !rest_.empty() && isDigit(rest_.front()); }

    /// Whether the next character is `character`, which is then taken; a letter in lower case stands for both.
    bool takes(char character) {
        if (rest_.empty()) return false;
        const char next = rest_.front();
        const bool isUpper = next >= 'A' && next <= 'Z';
        if ((isUpper ? next - 'A' + 'a' : next) != character) return false;
        rest_.remove_prefix(1);
        return true;
    }

    void expect(char character) { isGood_ = takes(character) && isGood_; }

    /// A number of exactly `count` digits, at most `highest`.
    int number(std::size_t count, int highest) {
        if (rest_.size() < count) return fail();
        int value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (!isDigit(rest_[i])) return fail();
            value = value * 10 + (rest_[i] - '0');
        }
        rest_.remove_prefix(count);
        return value <= highest ? value : fail();
    }

    /// The digits after a decimal point, at least one. Those beyond the fifteenth are below what a double holds.
    double fraction() {
        if (!isAtDigit()) return fail();
        double value = 0;
        double scale = 1;
        std::size_t count = 0;
        for (; count < rest_.size() && isDigit(rest_[count]); ++count) {
            if (count >= 15) continue;
            value = value * 10 + (rest_[count] - '0');
            scale *= 10;
        }
        rest_.remove_prefix(count);
        return value / scale;
    }

    /// "Z", "+02:00", "+0200", "+02", or nothing.
    seconds offset() {
        if (rest_.empty() || takes('z')) return 0s;
        const bool isWest = takes('-');
        if (!isWest) expect('+');
        minutes ahead = hours{number(2, 23)};
        if (takes(':') || isAtDigit()) ahead += minutes{number(2, 59)};
        return isWest ? -ahead : ahead;
    }

private:
    int fail() {
        isGood_ = false;
        return 0;
    }

    std::string_view rest_;
    bool isGood_ = true;
};

template <int Count>
void putDigits(char* place, unsigned value) {
    for (int i = Count - 1; i >= 0; --i) {
        place[i] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
}

}  // namespace

std::optional<Date> parseISO8601(std::string_view text) {
    Scanner scanner(text);
    const year years{scanner.number(4, 9999)};
    scanner.expect('-');
    const month months{static_cast<unsigned>(scanner.number(2, 12))};
    scanner.expect('-');
    const day days{static_cast<unsigned>(scanner.number(2, 31))};
    scanner.expect('t');
    seconds time = hours{scanner.number(2, 23)};
    scanner.expect(':');
    time += minutes{scanner.number(2, 59)};
    scanner.expect(':');
    time += seconds{scanner.number(2, 60)};
    const double fraction = scanner.takes('.') ? scanner.fraction() : 0;
    time -= scanner.offset();
    const year_month_day date{years, months, days};
    if (!scanner.isGood() || !scanner.isAtEnd() || !date.ok()) return std::nullopt;
    const seconds whole = sys_days{date}.time_since_epoch() + time - referenceEpoch;
    return Date{Seconds{static_cast<double>(whole.count()) + fraction}};
}

std::string_view ISO8601Formatter::format(Date moment) {
    constexpr Date earliest = dateOf(sys_days{year{0} / January / 1});
    constexpr Date latest = dateOf(sys_days{year{10'000} / January / 1} - 1ms);
    if (!(moment >= earliest && moment <= latest)) return {};
    const sys_time<milliseconds> rounded{milliseconds{std::llround(moment.time_since_epoch().count() * 1000)} +
                                         referenceEpoch};
    const auto today = floor<days>(rounded);
    if (day_ != today) {
        day_ = today;
        const year_month_day date{today};
        putDigits<4>(&text_[0], static_cast<unsigned>(int{date.year()}));
        putDigits<2>(&text_[5], unsigned{date.month()});
        putDigits<2>(&text_[8], unsigned{date.day()});
    }
    const auto ofDay = static_cast<unsigned>((rounded - today).count());
    putDigits<2>(&text_[11], ofDay / 3'600'000);
    putDigits<2>(&text_[14], ofDay / 60'000 % 60);
    putDigits<2>(&text_[17], ofDay / 1000 % 60);
    putDigits<3>(&text_[20], ofDay % 1000);
    return {text_.data(), text_.size()};
}

}  // namespace pedvar
