#include "linux/import/export_package.h"

#include "linux/import/document_look.h"

#include <algorithm>
#include <iterator>
#include <system_error>

namespace pedvar {

namespace fs = std::filesystem;

namespace {

constexpr int deepestFolder = 4;
Phrase advice() {
    return Phrase(
        "Import the archive that the phone's health application exports, or the folder unpacked from it.");
}

ImportError wrongEncoding(std::string_view name, const DocumentLook& look) {
    return {ImportError::Kind::unsupportedEncoding,
            Phrase("\"{}\" is {}. Convert it to UTF-8, for example with iconv.", {std::string(name), look.name})};
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
        const DocumentLook look = lookOf(*head);
        if (look.kind == DocumentLook::Kind::healthExport) documents.push_back({archive, entry, entry.size});
        if (look.kind == DocumentLook::Kind::wrongEncoding) problem = wrongEncoding(archive.string(), look);
    }
    if (!documents.empty()) return documents;
    if (problem) return std::unexpected(*problem);
    return std::unexpected(
        ImportError{ImportError::Kind::noExportInside,
                    Phrase("No file in the archive \"{}\" is a health export. {}", {archive.string(), advice()})});
}

ImportResult<std::vector<ExportDocument>> findInFile(const fs::path& file) {
    const auto source = openFile(file);
    const auto head = headOf(source);
    if (!head) return std::unexpected(head.error());
    if (head->empty()) {
        return std::unexpected(ImportError{
            ImportError::Kind::empty, Phrase("\"{}\" is empty. Export again on the phone.", {file.string()})});
    }
    const DocumentLook look = lookOf(*head);
    switch (look.kind) {
        case DocumentLook::Kind::healthExport:
            return std::vector{ExportDocument{file, std::nullopt, (*source)->size()}};
        case DocumentLook::Kind::archive:
            return findInArchive(file);
        case DocumentLook::Kind::wrongEncoding:
            return std::unexpected(wrongEncoding(file.string(), look));
        case DocumentLook::Kind::other:
            break;
    }
    return std::unexpected(ImportError{
        ImportError::Kind::notAnExport,
        Phrase("\"{}\" is no health export; it looks like {}. {}", {file.string(), look.name, advice()})});
}

ImportResult<std::vector<ExportDocument>> findInFolder(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    fs::recursive_directory_iterator walk(folder, fs::directory_options::skip_permission_denied, error);
    for (; !error && walk != fs::recursive_directory_iterator(); walk.increment(error)) {
        std::error_code vanished;  // a file that is gone by now is no file
        const bool isSkipped = isDebris(walk->path()) || walk->is_symlink(vanished);
        if (isSkipped || walk.depth() >= deepestFolder) walk.disable_recursion_pending();
        if (!isSkipped && walk->is_regular_file(vanished)) files.push_back(walk->path());
    }
    if (error) {
        return std::unexpected(ImportError{ImportError::Kind::unreadable,
                                           Phrase("The folder \"{}\" cannot be read: {}.",
                                                  {folder.string(), std::string_view(error.message())})});
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
                    Phrase("No file in the folder \"{}\" is a health export. {}", {folder.string(), advice()})});
}

}  // namespace

ImportResult<std::unique_ptr<ByteSource>> ExportDocument::open() const {
    return entry ? openZipEntry(file, *entry) : openFile(file);
}

ImportResult<std::vector<ExportDocument>> findExports(const fs::path& input) {
    std::error_code error;
    return fs::is_directory(input, error) ? findInFolder(input) : findInFile(input);
}

}  // namespace pedvar
