#include "sample_export/text_output.h"

#include <cstdlib>

namespace pedvar::sample {

namespace {

constexpr std::int64_t secondsOfDay = 86'400;

}  // namespace

std::string isoDate(std::chrono::sys_days date) {
    const std::chrono::year_month_day parts{date};
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(parts.year()),
                  static_cast<unsigned>(parts.month()), static_cast<unsigned>(parts.day()));
    return text.data();
}

TextOutput& TextOutput::operator<<(std::int64_t number) {
    std::array<char, 24> text;
    const auto end = std::to_chars(text.begin(), text.end(), number).ptr;
    return *this << std::string_view(text.begin(), end);
}

TextOutput& TextOutput::operator<<(Decimal number) {
    std::int64_t unit = 1;
    for (int digit = 0; digit < number.fractionDigits; ++digit) unit *= 10;
    if (number.value < 0) *this << "-";
    *this << std::abs(number.value / unit);
    std::int64_t rest = std::abs(number.value % unit);
    if (rest != 0) *this << ".";
    while (rest != 0) {
        unit /= 10;
        *this << rest / unit;
        rest %= unit;
    }
    return *this;
}

TextOutput& TextOutput::date(std::int64_t unixTime) {
    dayAndTime(unixTime + offset_, ' ');
    buffer_ += offset_ < 0 ? " -" : " +";
    twoDigits(std::abs(offset_) / 3600);
    twoDigits(std::abs(offset_) / 60 % 60);
    return *this;
}

TextOutput& TextOutput::utcDate(std::int64_t unixTime) {
    dayAndTime(unixTime, 'T');
    buffer_ += 'Z';
    return *this;
}

void TextOutput::flush() {
    const bool isWritten = std::fwrite(buffer_.data(), 1, buffer_.size(), file_) == buffer_.size();
    if (!isWritten || std::fflush(file_) != 0) isGood_ = false;
    buffer_.clear();
}

void TextOutput::dayAndTime(std::int64_t localTime, char between) {
    const std::int64_t day = localTime / secondsOfDay;
    if (day != knownDay_) {
        knownDay_ = day;
        knownDayText_ = isoDate(std::chrono::sys_days{std::chrono::days(day)});
    }
    *this << knownDayText_;
    buffer_ += between;
    twoDigits(localTime % secondsOfDay / 3600);
    buffer_ += ':';
    twoDigits(localTime / 60 % 60);
    buffer_ += ':';
    twoDigits(localTime % 60);
}

void TextOutput::twoDigits(std::int64_t number) {
    buffer_ += static_cast<char>('0' + number / 10);
    buffer_ += static_cast<char>('0' + number % 10);
}

}  // namespace pedvar::sample
