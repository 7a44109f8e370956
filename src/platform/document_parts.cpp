#include "platform/document_parts.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <utility>

namespace pedvar {

namespace {

constexpr char edge = '\x1a';       // SUBSTITUTE, on both sides of a hole
constexpr char separator = '\x1f';  // UNIT SEPARATOR, between the list and the count

Hole holeIn(std::string_view text) {
    const std::size_t end = std::min(text.find(separator), text.size());
    Hole hole{.list = std::string(text.substr(0, end))};
    if (end < text.size()) std::from_chars(text.data() + end + 1, text.data() + text.size(), hole.count);
    return hole;
}

/// Calls for the pieces of the text and the holes between them, in order. A hole without an end is text.
template <class OnText, class OnHole>
void walk(std::string_view text, OnText onText, OnHole onHole) {
    while (!text.empty()) {
        const std::size_t start = text.find(edge);
        const std::size_t end = start == std::string_view::npos ? start : text.find(edge, start + 1);
        if (end == std::string_view::npos) return onText(text);
        onText(text.substr(0, start));
        onHole(holeIn(text.substr(start + 1, end - start - 1)));
        text.remove_prefix(end + 1);
    }
}

void appendFilled(std::string& document, std::string_view text, const ListReader& list, int depth) {
    walk(
        text, [&](std::string_view piece) { document += piece; },
        [&](const Hole& hole) {
            if (depth == 0) return;
            bool isFirst = true;
            for (const Part& part : list(hole.list)) {
                if (!isFirst) document += ',';
                isFirst = false;
                appendFilled(document, part.text, list, depth - 1);
            }
        });
}

}  // namespace

std::string Hole::text() const {
    return edge + list + separator + std::to_string(count) + edge;
}

TextAroundHoles takeHolesOut(std::string_view text) {
    TextAroundHoles around;
    walk(
        text, [&](std::string_view piece) { around.text += piece; },
        [&](Hole hole) { around.holes.push_back(std::move(hole)); });
    return around;
}

std::string wholeDocument(std::string_view frame, const ListReader& list) {
    constexpr int deepestHole = 2;
    std::string document;
    appendFilled(document, frame, list, deepestHole);
    return document;
}

}  // namespace pedvar
