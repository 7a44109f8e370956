#include "linux/import/export_prolog.h"

namespace pedvar {

namespace {

constexpr std::string_view rootStart = "<HealthData";
constexpr std::string_view space = " \t\r\n";
constexpr auto nowhere = std::string_view::npos;

/// Behind the first `terminator` at or after `position`.
std::size_t behind(std::string_view text, std::size_t position, std::string_view terminator) {
    const std::size_t found = text.find(terminator, position);
    return found == nowhere ? nowhere : found + terminator.size();
}

/// Behind the comment, the instruction or the quoted text that begins at `position`; `position` when none does.
std::size_t skipOpaque(std::string_view text, std::size_t position) {
    const std::string_view rest = text.substr(position);
    if (rest.starts_with("<!--")) return behind(text, position + 4, "-->");
    if (rest.starts_with("<?")) return behind(text, position + 2, "?>");
    if (rest.starts_with('"') || rest.starts_with('\'')) return behind(text, position + 1, rest.substr(0, 1));
    return position;
}

std::size_t skipDoctype(std::string_view text, std::size_t position) {
    bool isInside = false;  // the internal subset, between brackets
    while (position < text.size()) {
        if (const std::size_t next = skipOpaque(text, position); next != position) {
            position = next;
            continue;
        }
        const char c = text[position++];
        if (c == '[') isInside = true;
        if (c == ']') isInside = false;
        if (c == '>' && !isInside) return position;
    }
    return nowhere;
}

bool isRootAt(std::string_view text, std::size_t position) {
    const std::string_view rest = text.substr(position);
    return rest.starts_with(rootStart) && rest.size() > rootStart.size() &&
           (space.find(rest[rootStart.size()]) != nowhere || rest[rootStart.size()] == '>' ||
            rest[rootStart.size()] == '/');
}

}  // namespace

std::optional<std::size_t> findRoot(std::string_view text) {
    std::size_t position = text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    while ((position = text.find_first_not_of(space, position)) != nowhere) {
        const std::string_view rest = text.substr(position);
        if (rest.starts_with("<!DOCTYPE")) {
            position = skipDoctype(text, position + 9);
        } else if (rest.starts_with("<!--") || rest.starts_with("<?")) {
            position = skipOpaque(text, position);
        } else if (isRootAt(text, position)) {
            return position;
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> findRootAnyway(std::string_view text) {
    std::size_t position = 0;
    while ((position = text.find(rootStart, position)) != nowhere) {
        if (isRootAt(text, position)) return position;
        ++position;
    }
    return std::nullopt;
}

}  // namespace pedvar
