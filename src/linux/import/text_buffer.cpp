#include "linux/import/text_buffer.h"

#include "core/utf8.h"
#include "linux/import/byte_scan.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace pedvar {

namespace {

constexpr std::size_t windowSize = 256 * 1024;  // fits the second-level cache, costs few system calls
constexpr std::size_t blockSize = 64;
constexpr std::ptrdiff_t longestCharacter = 4;

bool isAllowedAscii(unsigned char byte) {
    return (byte >= 0x20 && byte < 0x80) || byte == '\n' || byte == '\t' || byte == '\r';
}

bool isForbiddenControl(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code < 0x80 && !isAllowedAscii(code);
}

/// Whether a block is allowed ASCII throughout. Without a branch and byte by byte, so that compilers make vector
/// code of it.
bool isPlainBlock(const char* block) {
    unsigned char faults = 0;
    for (std::size_t i = 0; i < blockSize; ++i) {
        const auto byte = static_cast<unsigned char>(block[i]);
        const unsigned char isControl = byte < 0x20 ? 0x80 : 0;
        const unsigned char isSpace = byte == '\n' || byte == '\t' || byte == '\r' ? 0x80 : 0;
        faults |= static_cast<unsigned char>((byte & 0x80) | (isControl ^ isSpace));
    }
    return faults == 0;
}

/// Whether the next eight bytes are ASCII without any control byte.
bool isPlainWord(const char* p) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return ((word & byte_scan::highBits) | byte_scan::bytesBelow(word, ' ')) == 0;
}

/// The length of the character at `p`, which begins with a byte of 0x80 or above; 0 when it is none of UTF-8, or
/// U+FFFE or U+FFFF, which are no characters of XML.
std::size_t allowedLength(const char* p, const char* end) {
    const std::size_t length = characterLength({p, end});
    const bool isNoncharacter =
        length == 3 && p[0] == '\xEF' && p[1] == '\xBF' && static_cast<unsigned char>(p[2]) >= 0xBE;
    return isNoncharacter ? 0 : length;
}

/// The first byte at or after `p` that cannot stay as it is, or `end`.
const char* firstFault(const char* p, const char* end) {
    while (p != end) {
        if (static_cast<std::size_t>(end - p) >= blockSize && isPlainBlock(p)) {
            p += blockSize;
            continue;
        }
        const char* const blockEnd = p + std::min<std::ptrdiff_t>(blockSize, end - p);
        while (p < blockEnd) {
            if (end - p >= 8 && isPlainWord(p)) {
                p += 8;
                continue;
            }
            const auto byte = static_cast<unsigned char>(*p);
            if (isAllowedAscii(byte)) {
                ++p;
                continue;
            }
            if (byte < 0x80) return p;
            const std::size_t length = allowedLength(p, end);
            if (length == 0) return p;
            p += length;
        }
    }
    return end;
}

}  // namespace

ImportResult<bool> TextBuffer::more() {
    makeRoom();
    const std::size_t before = checked_;
    while (checked_ == before) {
        const auto count = source_->read({bytes_.get() + filled_, capacity_ - filled_});
        if (!count) return std::unexpected(count.error());
        filled_ += *count;
        bytesRead_ += *count;
        const bool hasEnded = *count == 0;
        checkAndRepair(hasEnded);
        if (hasEnded) break;
    }
    return checked_ != before;
}

void TextBuffer::makeRoom() {
    const std::size_t carried = filled_ - begin_;
    if (begin_ != 0) std::memmove(bytes_.get(), bytes_.get() + begin_, carried);
    checked_ -= begin_;
    filled_ = carried;
    begin_ = 0;
    reserve(carried + std::max(windowSize, carried));
}

void TextBuffer::reserve(std::size_t capacity) {
    if (capacity <= capacity_) return;
    auto bytes = std::make_unique_for_overwrite<char[]>(capacity);
    if (filled_ != 0) std::memcpy(bytes.get(), bytes_.get(), filled_);
    bytes_ = std::move(bytes);
    capacity_ = capacity;
}

void TextBuffer::checkAndRepair(bool hasEnded) {
    const char* p = bytes_.get() + checked_;
    const char* const end = bytes_.get() + filled_;
    const char* fault = firstFault(p, end);
    if (fault == end) {
        checked_ = filled_;
        return;
    }
    std::string repaired;
    for (; fault != end; fault = firstFault(p, end)) {
        repaired.append(p, fault);
        p = fault;
        const bool isControl = static_cast<unsigned char>(*p) < 0x80;
        // What is only cut off may become a character.
        if (!isControl && end - p < longestCharacter && !hasEnded) break;
        if (!isControl) repaired += replacementCharacter;
        // Holes of a damaged file are long runs of zeros; the next fault is looked for behind them.
        const char* const next = isControl ? std::find_if_not(p, end, isForbiddenControl) : p + 1;
        repairedBytes_ += static_cast<std::uint64_t>(next - p);
        p = next;
    }
    if (fault == end) {
        repaired.append(p, end);
        p = end;
    }
    const std::string waiting(p, end);
    filled_ = checked_;
    reserve(checked_ + repaired.size() + waiting.size() + 1);
    std::memcpy(bytes_.get() + checked_, repaired.data(), repaired.size());
    checked_ += repaired.size();
    std::memcpy(bytes_.get() + checked_, waiting.data(), waiting.size());
    filled_ = checked_ + waiting.size();
}

}  // namespace pedvar
