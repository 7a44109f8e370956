/// Text on its way into a file.
#pragma once

#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace pedvar::sample {

/// A whole number of units of the last shown digit: {1234, 2} is "12.34".
struct Decimal {
    std::int64_t value;
    int fractionDigits;
};

/// "2026-06-14".
std::string isoDate(std::chrono::sys_days date);

/// Collects text and hands it on in large pieces.
class TextOutput {
public:
    /// Keeps `file` open. Dates are written with `offset` seconds to UTC.
    TextOutput(std::FILE* file, int offset) : file_(file), offset_(offset) { buffer_.reserve(capacity + reserve); }
    TextOutput(const TextOutput&) = delete;
    TextOutput& operator=(const TextOutput&) = delete;
    ~TextOutput() { flush(); }

    TextOutput& operator<<(std::string_view text) {
        buffer_ += text;
        if (buffer_.size() > capacity) flush();
        return *this;
    }
    TextOutput& operator<<(std::int64_t number);
    TextOutput& operator<<(Decimal number);

    /// "2026-06-14 18:00:05 +0200".
    TextOutput& date(std::int64_t unixTime);
    /// "2026-06-14T16:00:05Z".
    TextOutput& utcDate(std::int64_t unixTime);

    /// Whether everything could be written so far.
    bool isGood() const { return isGood_; }
    void flush();

private:
    static constexpr std::size_t capacity = 1 << 20;
    static constexpr std::size_t reserve = 1 << 12;

    void dayAndTime(std::int64_t localTime, char between);
    void twoDigits(std::int64_t number);

    std::FILE* file_;
    int offset_;
    std::string buffer_;
    bool isGood_ = true;
    std::int64_t knownDay_ = -1;  // since 1970, whose text is kept
    std::string knownDayText_;
};

}  // namespace pedvar::sample
