#include "linux/import/document_look.h"

#include "linux/import/export_prolog.h"

#include <algorithm>
#include <cctype>

namespace pedvar {

namespace {

using namespace std::string_view_literals;

std::string lowercase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

/// Whether the XML declaration, if there is one, names an encoding that is read.
bool hasReadableEncoding(std::string_view head) {
    if (!head.starts_with("<?xml")) return true;
    const std::string_view declaration = head.substr(0, head.find("?>"));
    const std::size_t key = declaration.find("encoding");
    if (key == std::string_view::npos) return true;
    const std::size_t begin = declaration.find_first_of("\"'", key);
    if (begin == std::string_view::npos) return true;
    const std::size_t end = declaration.find(declaration[begin], begin + 1);
    const std::string encoding = lowercase(declaration.substr(begin + 1, end - begin - 1));
    return encoding == "utf-8" || encoding == "us-ascii" || encoding == "ascii" || encoding == "utf8";
}

/// Bytes that tell what a file is.
struct Sign {
    std::string_view text;
    std::string_view name;
};

// i18n: texts like ^(an? |another|some|the |text)
/// What a file that is no export looks like, for people.
std::string_view otherName(std::string_view head) {
    constexpr Sign fronts[] = {{"PK\5\6", "an archive without files"},
                               {"\x1F\x8B", "a gzip file"},
                               {"BZh", "a bzip2 file"},
                               {"\xFD\x37zXZ", "an xz file"},
                               {"7z\xBC\xAF", "a 7z file"},
                               {"SQLite format 3", "a database"},
                               {"%PDF", "a PDF document"},
                               {"\x89PNG", "a picture"},
                               {"\xFF\xD8\xFF", "a picture"}};
    for (const auto& [text, name] : fronts) {
        if (head.starts_with(text)) return name;
    }
    constexpr Sign insides[] = {
        {"<clinicaldocument", "the clinical document of an export (the other one is needed)"},
        {"<!doctype html", "a web page"},
        {"<html", "a web page"},
        {"<gpx", "a GPX route"},
        {"<trainingcenterdatabase", "a TCX workout"}};
    const std::string lower = lowercase(head);
    for (const auto& [text, name] : insides) {
        if (lower.find(text) != std::string::npos) return name;
    }
    const std::size_t first = head.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return "an empty text";
    if (head[first] == '{' || head[first] == '[') return "a JSON document";
    if (head[first] == '<') return "another XML document";
    return "something else";
}

}  // namespace

DocumentLook lookOf(std::string_view head) {
    using Kind = DocumentLook::Kind;
    for (const std::string_view front : {"\xFF\xFE"sv, "\xFE\xFF"sv, "<\0"sv, "\0<"sv}) {
        if (head.starts_with(front)) return {Kind::wrongEncoding, "text in UTF-16"};
    }
    if (head.starts_with(byteOrderMark)) head.remove_prefix(byteOrderMark.size());
    head = head.substr(0, documentHeadSize);
    if (head.starts_with("PK\3\4")) return {Kind::archive, "a zip archive"};
    const bool isExport = head.find("<!DOCTYPE HealthData") != head.npos || head.find("<HealthData") != head.npos;
    if (!isExport) return {Kind::other, otherName(head)};
    if (!hasReadableEncoding(head)) return {Kind::wrongEncoding, "text in another encoding than UTF-8"};
    return {Kind::healthExport, "a health export"};
}
// i18n: end

ImportResult<std::string> headOf(const ImportResult<std::unique_ptr<ByteSource>>& source) {
    if (!source) return std::unexpected(source.error());
    std::string head(documentHeadSize + byteOrderMark.size(), '\0');
    std::size_t filled = 0;
    while (filled < head.size()) {
        const auto count = (*source)->read(std::span(head).subspan(filled));
        if (!count) return std::unexpected(count.error());
        if (*count == 0) break;
        filled += *count;
    }
    head.resize(filled);
    return head;
}

}  // namespace pedvar
