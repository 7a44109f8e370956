#include "linux/import/export_values.h"

#include "core/date.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace pedvar {

namespace {

using namespace std::chrono;

/// Stands for any text that is no number; larger than every limit it is compared with.
constexpr unsigned notANumber = 1'000'000;

constexpr unsigned twoDigits(const char* text) {
    const unsigned tens = static_cast<unsigned char>(text[0]) - unsigned{'0'};
    const unsigned units = static_cast<unsigned char>(text[1]) - unsigned{'0'};
    return tens <= 9 && units <= 9 ? tens * 10 + units : notANumber;
}

/// " +0200" as the time that its clocks are ahead.
std::optional<Milliseconds> parseOffset(std::string_view text) {
    const unsigned hours = twoDigits(text.data() + 2);
    const unsigned minutes = twoDigits(text.data() + 4);
    if (text[0] != ' ' || (text[1] != '+' && text[1] != '-') || hours > 23 || minutes > 59) return std::nullopt;
    const Milliseconds offset = (hours * 60 + minutes) * Milliseconds{60'000};
    return text[1] == '-' ? -offset : offset;
}

}  // namespace

std::optional<year_month_day> parseExportDay(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
    const unsigned century = twoDigits(text.data());
    const unsigned yearOfCentury = twoDigits(text.data() + 2);
    if (century == notANumber || yearOfCentury == notANumber) return std::nullopt;
    const year_month_day day{year(static_cast<int>(century * 100 + yearOfCentury)),
                             month(twoDigits(text.data() + 5)), std::chrono::day(twoDigits(text.data() + 8))};
    if (twoDigits(text.data() + 5) > 12 || twoDigits(text.data() + 8) > 31 || !day.ok()) return std::nullopt;
    return day;
}

std::optional<Milliseconds> ExportDateParser::parse(std::string_view text) {
    if (text.size() != 25) return std::nullopt;
    if (std::memcmp(text.data(), dayText_.data(), dayText_.size()) != 0) {
        const auto day = parseExportDay(text.substr(0, 10));
        if (!day) return std::nullopt;
        day_ = milliseconds(sys_days(*day).time_since_epoch() - referenceEpoch).count();
        std::memcpy(dayText_.data(), text.data(), dayText_.size());
    }
    if (std::memcmp(text.data() + 19, offsetText_.data(), offsetText_.size()) != 0) {
        const auto offset = parseOffset(text.substr(19));
        if (!offset) return std::nullopt;
        offset_ = *offset;
        std::memcpy(offsetText_.data(), text.data() + 19, offsetText_.size());
    }
    const unsigned hours = twoDigits(text.data() + 11);
    const unsigned minutes = twoDigits(text.data() + 14);
    const unsigned seconds = twoDigits(text.data() + 17);
    if (text[10] != ' ' || text[13] != ':' || text[16] != ':' || hours > 23 || minutes > 59 || seconds > 59) {
        return std::nullopt;
    }
    return day_ + (hours * 3600 + minutes * 60 + seconds) * Milliseconds{1000} - offset_;
}

std::optional<double> parseExportNumber(std::string_view text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc{} || stop != end || !std::isfinite(number)) return std::nullopt;
    return number;
}

}  // namespace pedvar
