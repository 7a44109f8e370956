#include "linux/import/export_package.h"

#include "linux/import/export_prolog.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <system_error>

namespace pedvar {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t headSize = 1024;                  // bytes by which a document is known
constexpr std::size_t longestRoute = 24 * 1024 * 1024;  // bytes; a day at one point a second
constexpr int deepestFolder = 4;
constexpr std::string_view routesFolder = "workout-routes";
constexpr std::string_view advice =
    "Import the archive that the phone's health application exports, or the folder unpacked from it.";

/// What the front of a file says it is.
struct Look {
    enum class Kind { healthExport, archive, wrongEncoding, other };
    Kind kind = Kind::other;
    std::string_view name;  // for people, "a web page"
};

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

Look lookOf(std::string_view head) {
    const auto wide = [](std::string_view text) {
        return text.size() > 1 && (text[0] == '\0' || text[1] == '\0');
    };
    if (head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF") || (head.starts_with('<') && wide(head)) ||
        (head.starts_with('\0') && head.substr(1).starts_with('<'))) {
        return {Look::Kind::wrongEncoding, "text in UTF-16"};
    }
    if (head.starts_with(byteOrderMark)) head.remove_prefix(byteOrderMark.size());
    head = head.substr(0, headSize);
    if (head.starts_with("PK\3\4")) return {Look::Kind::archive, "a zip archive"};
    if (head.find("<!DOCTYPE HealthData") != std::string_view::npos ||
        head.find("<HealthData") != std::string_view::npos) {
        return hasReadableEncoding(head) ? Look{Look::Kind::healthExport, "a health export"}
                                         : Look{Look::Kind::wrongEncoding, "text in another encoding than UTF-8"};
    }
    struct Sign {
        std::string_view text;
        std::string_view name;
    };
    constexpr Sign fronts[] = {{"PK\5\6", "an archive without files"},
                               {"\x1F\x8B", "a gzip file"},
                               {"BZh", "a bzip2 file"},
                               {"\xFD"
                                "7zXZ",
                                "an xz file"},
                               {"7z\xBC\xAF", "a 7z file"},
                               {"SQLite format 3", "a database"},
                               {"%PDF", "a PDF document"},
                               {"\x89PNG", "a picture"},
                               {"\xFF\xD8\xFF", "a picture"}};
    for (const auto& [text, name] : fronts) {
        if (head.starts_with(text)) return {Look::Kind::other, name};
    }
    constexpr Sign insides[] = {
        {"<clinicaldocument", "the clinical document of an export (the other one is needed)"},
        {"<!doctype html", "a web page"},
        {"<html", "a web page"},
        {"<gpx", "a GPX route"},
        {"<trainingcenterdatabase", "a TCX workout"}};
    const std::string lower = lowercase(head);
    for (const auto& [text, name] : insides) {
        if (lower.find(text) != std::string::npos) return {Look::Kind::other, name};
    }
    const std::size_t first = head.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {Look::Kind::other, "an empty text"};
    if (head[first] == '{' || head[first] == '[') return {Look::Kind::other, "a JSON document"};
    if (head[first] == '<') return {Look::Kind::other, "another XML document"};
    return {Look::Kind::other, "something else"};
}

/// The front of a source, as much as is needed to know it.
ImportResult<std::string> headOf(const ImportResult<std::unique_ptr<ByteSource>>& source) {
    if (!source) return std::unexpected(source.error());
    std::string head(headSize + byteOrderMark.size(), '\0');
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

ImportError wrongEncoding(std::string_view name, const Look& look) {
    return {ImportError::Kind::unsupportedEncoding,
            fmt::format("\"{}\" is {}. Convert it to UTF-8, for example with iconv.", name, look.name)};
}

/// Files that systems put beside the real ones.
bool isDebris(const fs::path& fileName) {
    const std::string name = fileName.filename().string();
    return name.starts_with("._") || name == ".DS_Store" || name == "__MACOSX";
}

/// Entries that are no part of a package: debris, and names that lead out of it.
bool isForeign(std::string_view entryName) {
    for (const fs::path& part : fs::path(entryName)) {
        if (part == ".." || part == "/" || isDebris(part)) return true;
    }
    return false;
}

ImportResult<std::vector<ExportDocument>> findInArchive(const fs::path& archive) {
    const auto entries = listZip(archive);
    if (!entries) return std::unexpected(entries.error());
    std::vector<ExportDocument> documents;
    std::optional<ImportError> problem;
    for (const ZipEntry& entry : *entries) {
        if (isForeign(entry.name)) continue;
        const auto head = headOf(openZipEntry(archive, entry));
        if (!head) {
            problem = head.error();
            continue;
        }
        const Look look = lookOf(*head);
        if (look.kind == Look::Kind::healthExport) documents.push_back({archive, entry, entry.size});
        if (look.kind == Look::Kind::wrongEncoding) problem = wrongEncoding(archive.string(), look);
    }
    if (!documents.empty()) return documents;
    if (problem) return std::unexpected(*problem);
    return std::unexpected(ImportError{
        ImportError::Kind::noExportInside,
        fmt::format("No file in the archive \"{}\" is a health export. {}", archive.string(), advice)});
}

ImportResult<std::vector<ExportDocument>> findInFile(const fs::path& file) {
    const auto source = openFile(file);
    const auto head = headOf(source);
    if (!head) return std::unexpected(head.error());
    if (head->empty()) {
        return std::unexpected(ImportError{
            ImportError::Kind::empty, fmt::format("\"{}\" is empty. Export again on the phone.", file.string())});
    }
    const Look look = lookOf(*head);
    switch (look.kind) {
        case Look::Kind::healthExport:
            return std::vector{ExportDocument{file, std::nullopt, (*source)->size()}};
        case Look::Kind::archive:
            return findInArchive(file);
        case Look::Kind::wrongEncoding:
            return std::unexpected(wrongEncoding(file.string(), look));
        case Look::Kind::other:
            break;
    }
    return std::unexpected(ImportError{
        ImportError::Kind::notAnExport,
        fmt::format("\"{}\" is no health export; it looks like {}. {}", file.string(), look.name, advice)});
}

ImportResult<std::vector<ExportDocument>> findInFolder(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    fs::recursive_directory_iterator walk(folder, error);
    for (; !error && walk != fs::recursive_directory_iterator(); walk.increment(error)) {
        const bool isSkipped = isDebris(walk->path()) || walk->is_symlink(error);
        if (isSkipped || walk.depth() >= deepestFolder) walk.disable_recursion_pending();
        if (!isSkipped && walk->is_regular_file(error)) files.push_back(walk->path());
    }
    if (error) {
        return std::unexpected(
            ImportError{ImportError::Kind::unreadable,
                        fmt::format("The folder \"{}\" cannot be read: {}.", folder.string(), error.message())});
    }
    std::ranges::sort(files);

    std::vector<ExportDocument> documents;
    std::optional<ImportError> problem;
    for (const fs::path& file : files) {
        auto found = findInFile(file);
        if (found) {
            std::ranges::move(*found, std::back_inserter(documents));
        } else if (!problem && found.error().kind != ImportError::Kind::notAnExport &&
                   found.error().kind != ImportError::Kind::noExportInside) {
            problem = found.error();
        }
    }
    if (!documents.empty()) return documents;
    if (problem) return std::unexpected(*problem);
    return std::unexpected(
        ImportError{ImportError::Kind::noExportInside,
                    fmt::format("No file in the folder \"{}\" is a health export. {}", folder.string(), advice)});
}

/// "workout-routes/route.gpx": by this much of their paths references and files are compared.
std::string_view lastTwoParts(std::string_view path) {
    const std::size_t last = path.find_last_of('/');
    if (last == std::string_view::npos || last == 0) return path;
    const std::size_t before = path.find_last_of('/', last - 1);
    return before == std::string_view::npos ? path : path.substr(before + 1);
}

std::optional<std::string> readRoute(ImportResult<std::unique_ptr<ByteSource>> source) {
    if (!source) return std::nullopt;
    auto text = readAll(**source, longestRoute);
    if (!text || std::string_view(*text).substr(0, headSize).find("<gpx") == std::string_view::npos)
        return std::nullopt;
    return std::move(*text);
}

class FolderRoutes : public RouteFiles {
public:
    explicit FolderRoutes(const fs::path& document) {
        std::error_code error;
        fs::directory_iterator files(document.parent_path() / routesFolder, error);
        for (; !error && files != fs::directory_iterator(); files.increment(error)) {
            const fs::path& file = files->path();
            files_.emplace(fmt::format("{}/{}", routesFolder, file.filename().string()), file);
        }
    }

    std::optional<std::string> read(std::string_view reference) override {
        const auto found = files_.find(lastTwoParts(reference));
        return found == files_.end() ? std::nullopt : readRoute(openFile(found->second));
    }

private:
    std::map<std::string, fs::path, std::less<>> files_;
};

class ArchiveRoutes : public RouteFiles {
public:
    explicit ArchiveRoutes(fs::path archive) : archive_(std::move(archive)) {
        auto entries = listZip(archive_);
        if (!entries) return;
        for (ZipEntry& entry : *entries) {
            if (isForeign(entry.name)) continue;
            std::string key(lastTwoParts(entry.name));
            entries_.emplace(std::move(key), std::move(entry));
        }
    }

    std::optional<std::string> read(std::string_view reference) override {
        const auto found = entries_.find(lastTwoParts(reference));
        return found == entries_.end() ? std::nullopt : readRoute(openZipEntry(archive_, found->second));
    }

private:
    fs::path archive_;
    std::map<std::string, ZipEntry, std::less<>> entries_;
};

}  // namespace

ImportResult<std::unique_ptr<ByteSource>> ExportDocument::open() const {
    return entry ? openZipEntry(file, *entry) : openFile(file);
}

ImportResult<std::vector<ExportDocument>> findExports(const fs::path& input) {
    std::error_code error;
    return fs::is_directory(input, error) ? findInFolder(input) : findInFile(input);
}

std::unique_ptr<RouteFiles> routesOf(const ExportDocument& document) {
    if (document.entry) return std::make_unique<ArchiveRoutes>(document.file);
    return std::make_unique<FolderRoutes>(document.file);
}

}  // namespace pedvar
