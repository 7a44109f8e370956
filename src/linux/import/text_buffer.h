/// The text of a source, free of what XML does not allow.
#pragma once

#include "linux/import/byte_source.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace pedvar {

/// A window on the bytes of a source. Control bytes other than TAB, LF and CR are dropped, bytes that are not
/// UTF-8 are replaced by U+FFFD; where the source's reads happen to break makes no difference.
class TextBuffer {
public:
    explicit TextBuffer(ByteSource& source) : source_(&source) {}

    /// What was read and not consumed, until the next `more`.
    std::string_view text() const { return {bytes_.get() + begin_, checked_ - begin_}; }
    void consume(std::size_t count) { begin_ += count; }

    /// Reads on, at least as much as is still unconsumed, so that looking at the same text again and again costs
    /// no more than looking at it twice. False at the end of the source.
    ImportResult<bool> more();

    std::uint64_t bytesRead() const { return bytesRead_; }
    std::uint64_t repairedBytes() const { return repairedBytes_; }

private:
    void makeRoom();
    void reserve(std::size_t capacity);
    /// Checks what was read; a character that is cut off at the end waits for its rest unless the source has
    /// ended.
    void checkAndRepair(bool hasEnded);

    ByteSource* source_;
    std::unique_ptr<char[]> bytes_;
    std::size_t capacity_ = 0;
    std::size_t begin_ = 0;    // of the unconsumed text
    std::size_t checked_ = 0;  // its end
    std::size_t filled_ = 0;   // end of what was read
    std::uint64_t bytesRead_ = 0;
    std::uint64_t repairedBytes_ = 0;
};

}  // namespace pedvar
