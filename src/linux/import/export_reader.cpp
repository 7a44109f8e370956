#include "linux/import/export_reader.h"

#include "linux/import/export_prolog.h"
#include "linux/import/text_buffer.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

namespace {

constexpr std::size_t longestTag = 16 * 1024 * 1024;  // bytes; real ones stay below a few thousand
constexpr std::size_t longestProlog = 1024 * 1024;    // bytes; the document type of an export has ten thousand
constexpr std::size_t longestOpenPath = 1024 * 1024;  // bytes of the names of all open elements
constexpr std::size_t repairDepth = 64;               // elements that one end tag may close on the way

ImportError noRoot() {
    return {ImportError::Kind::notAnExport, Phrase("It has no element <HealthData>, so it is no health export.")};
}

/// The names of the open elements.
class OpenElements {
public:
    bool isEmpty() const { return starts_.empty(); }
    bool hasRoomFor(std::string_view name) const { return names_.size() + name.size() < longestOpenPath; }
    std::string_view innermost() const { return std::string_view(names_).substr(starts_.back()); }

    void open(std::string_view name) {
        starts_.push_back(names_.size());
        names_ += name;
    }

    void close() {
        names_.resize(starts_.back());
        starts_.pop_back();
    }

    /// How many elements a tag `</name>` closes; 0 when no element of that name is near.
    std::size_t depthOf(std::string_view name) const {
        std::size_t end = names_.size();
        for (std::size_t depth = 1; depth <= starts_.size() && depth <= repairDepth; ++depth) {
            const std::size_t start = starts_[starts_.size() - depth];
            if (std::string_view(names_).substr(start, end - start) == name) return depth;
            end = start;
        }
        return 0;
    }

private:
    std::string names_;
    std::vector<std::size_t> starts_;
};

/// Takes the text apart and hands it out. Character data is passed over: an export keeps nothing in it.
class Reader {
public:
    Reader(ByteSource& source, ExportHandler& handler) : buffer_(source), handler_(handler) {}

    ImportResult<ReadOutcome> read();

private:
    ImportResult<> skipProlog();
    /// Hands out all markup that is there whole.
    void readWindow();
    /// Reads the markup at the front of `text`, which begins with '<'; its length, or 0 when it is not there
    /// whole.
    std::size_t readMarkup(std::string_view text);
    std::size_t readTag(std::string_view text);
    std::size_t readDeclaration(std::string_view text);
    std::size_t malformed();
    void startElement(const Tag& tag);
    void endElement(std::string_view name);
    ReadOutcome outcome(ReadOutcome::End end, std::optional<ImportError> error = {}) const;

    TextBuffer buffer_;
    ExportHandler& handler_;
    TagParser parser_;
    OpenElements open_;
    std::string_view awaited_;  // what ends the comment, instruction or CDATA section that is being passed over
    std::size_t orphanedEnds_ = 0;       // end tags still to come of start tags that were malformed
    std::size_t outermostElements_ = 0;  // the root, and what wrongly follows it
    bool wasCutOff_ = false;             // markup began that the source did not finish
};

ImportResult<ReadOutcome> Reader::read() {
    if (auto found = skipProlog(); !found) return std::unexpected(std::move(found.error()));
    for (;;) {
        readWindow();
        if (!handler_.wantsMore(buffer_.bytesRead())) return outcome(ReadOutcome::End::stopped);
        const auto more = buffer_.more();
        if (!more) return outcome(ReadOutcome::End::early, more.error());
        if (!*more) break;
    }
    if (outermostElements_ == 0 && !wasCutOff_) return std::unexpected(noRoot());
    const bool isWhole = open_.isEmpty() && !wasCutOff_ && awaited_.empty();
    return outcome(isWhole ? ReadOutcome::End::complete : ReadOutcome::End::early);
}

ImportResult<> Reader::skipProlog() {
    for (;;) {
        std::optional<std::size_t> root = findRoot(buffer_.text());
        if (!root) {
            if (buffer_.text().size() < longestProlog) {
                const auto more = buffer_.more();
                if (!more) return std::unexpected(more.error());
                if (*more) continue;
            }
            root = findRootAnyway(buffer_.text());
        }
        if (!root) return std::unexpected(noRoot());
        buffer_.consume(*root);
        return {};
    }
}

void Reader::readWindow() {
    const std::string_view text = buffer_.text();
    std::size_t position = 0;
    wasCutOff_ = false;
    while (position < text.size()) {
        if (!awaited_.empty()) {
            const std::size_t found = text.find(awaited_, position);
            if (found == std::string_view::npos) {
                position = std::max(position, text.size() - std::min(text.size(), awaited_.size() - 1));
                break;
            }
            position = found + awaited_.size();
            awaited_ = {};
        }
        position = std::min(text.find('<', position), text.size());
        if (position == text.size()) break;
        std::size_t length = readMarkup(text.substr(position));
        if (length == 0) {
            if (text.size() - position < longestTag) {
                wasCutOff_ = true;
                break;
            }
            length = malformed();
        }
        position += length;
    }
    buffer_.consume(position);
}

std::size_t Reader::readMarkup(std::string_view text) {
    if (text.size() < 2) return 0;
    if (text[1] == '?') {
        awaited_ = "?>";
        return 2;
    }
    return text[1] == '!' ? readDeclaration(text) : readTag(text);
}

std::size_t Reader::readDeclaration(std::string_view text) {
    constexpr std::string_view comment = "<!--";
    constexpr std::string_view data = "<![CDATA[";
    if (text.starts_with(comment)) {
        awaited_ = "-->";
        return comment.size();
    }
    if (text.starts_with(data)) {
        awaited_ = "]]>";
        return data.size();
    }
    const bool mayBecomeOne = comment.starts_with(text) || data.starts_with(text);
    return mayBecomeOne ? 0 : malformed();
}

std::size_t Reader::readTag(std::string_view text) {
    switch (parser_.parse(text)) {
        case TagParser::Outcome::incomplete:
            return 0;
        case TagParser::Outcome::malformed:
            if (text[1] != '/') ++orphanedEnds_;
            return malformed();
        case TagParser::Outcome::complete:
            break;
    }
    const Tag& tag = parser_.tag();
    if (tag.kind == Tag::Kind::end) {
        endElement(tag.name);
    } else {
        startElement(tag);
    }
    return parser_.length();
}

/// Counts a piece of markup; reading goes on behind its '<'.
std::size_t Reader::malformed() {
    handler_.malformedMarkup();
    return 1;
}

void Reader::startElement(const Tag& tag) {
    // What follows the root element does not belong to the document, but where a second document or a stray end
    // tag made it so, its records are as good as the others. Said once.
    if (open_.isEmpty() && outermostElements_++ == 1) handler_.malformedMarkup();
    if (!open_.hasRoomFor(tag.name)) {
        handler_.malformedMarkup();
        return;
    }
    handler_.startElement(tag);
    if (tag.kind == Tag::Kind::start) {
        open_.open(tag.name);
    } else {
        handler_.endElement(tag.name);
    }
}

void Reader::endElement(std::string_view name) {
    std::size_t depth = !open_.isEmpty() && open_.innermost() == name ? 1 : open_.depthOf(name);
    if (depth != 1) {
        if (depth == 0 && orphanedEnds_ > 0) {
            --orphanedEnds_;
            return;
        }
        handler_.malformedMarkup();
    }
    for (; depth > 0; --depth) {
        handler_.endElement(open_.innermost());
        open_.close();
    }
}

ReadOutcome Reader::outcome(ReadOutcome::End end, std::optional<ImportError> error) const {
    return {end, buffer_.repairedBytes(), std::move(error)};
}

}  // namespace

ImportResult<ReadOutcome> readExport(ByteSource& source, ExportHandler& handler) {
    return Reader(source, handler).read();
}

}  // namespace pedvar
