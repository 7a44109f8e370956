#include "linux/backup/backup_file.h"

#include "core/content_hash.h"
#include "core/json_value.h"
#include "linux/import/zip_archive.h"
#include "linux/system/nlohmann_json_parser.h"

#include <fcntl.h>
#include <unistd.h>
#include <zip.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>
#include <span>
#include <vector>

namespace pedvar {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view listName = "backup.json";
constexpr std::int64_t backupVersion = 1;
constexpr std::size_t pieceSize = 1 << 16;

/// A folder that goes with what is in it.
class ScratchFolder {
public:
    explicit ScratchFolder(fs::path path) : path_(std::move(path)) {
        std::error_code error;
        fs::create_directory(path_, error);
        fs::permissions(path_, fs::perms::owner_all, error);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

/// What tells one file's content from another's, piece by piece.
struct Fingerprint {
    std::int64_t size = 0;
    ContentHash hash;

    void add(std::string_view piece) {
        size += std::ssize(piece);
        hash.add(piece);
    }
    JsonValue document() const { return {JsonObject{{"size", {size}}, {"hash", {hash.uuid().text()}}}}; }
};

StoreError unwritable(const fs::path& file, int error) {
    return {error == ENOSPC ? StoreError::Kind::full : StoreError::Kind::unwritable,
            Phrase("\"{}\" cannot be written: {}.", {file.string(), std::strerror(error)})};
}

std::unexpected<StoreError> refused(const fs::path& backup, const Phrase& reason) {
    return std::unexpected(StoreError{
        StoreError::Kind::damaged,
        Phrase("The backup \"{}\" was not restored: {}. Nothing was changed.", {backup.string(), reason})});
}

/// Calls `take` with all pieces of a file; an error number of the system when that fails.
int readPieces(const fs::path& file, const GoesOn& goesOn, const std::function<void(std::string_view)>& take) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return errno;
    std::vector<char> buffer(pieceSize);
    ssize_t size = 0;
    bool isWanted = true;
    while ((isWanted = goesOn()) && (size = ::read(descriptor, buffer.data(), buffer.size())) > 0) {
        take({buffer.data(), static_cast<std::size_t>(size)});
    }
    const int error = !isWanted ? ECANCELED : size < 0 ? errno : 0;
    ::close(descriptor);
    return error;
}

/// A zip archive in the making.
class ZipWriter {
public:
    explicit ZipWriter(const fs::path& file) : zip_(zipOpen64(file.c_str(), APPEND_STATUS_CREATE)) {}
    ZipWriter(const ZipWriter&) = delete;
    ZipWriter& operator=(const ZipWriter&) = delete;
    ~ZipWriter() {
        if (zip_) zipClose(zip_, nullptr);
    }

    void begin(std::string_view name) {
        constexpr int fastest = 1, zip64 = 1;
        zip_fileinfo undated{};
        undated.dosDate = 0x210000;  // the first day that an archive can name, 1 January 1980
        require(zip_ && zipOpenNewFileInZip64(zip_, std::string(name).c_str(), &undated, nullptr, 0, nullptr, 0,
                                              nullptr, Z_DEFLATED, fastest, zip64) == ZIP_OK);
    }
    void add(std::string_view piece) {
        require(zipWriteInFileInZip(zip_, piece.data(), static_cast<unsigned>(piece.size())) == ZIP_OK);
    }
    void end() { require(zipCloseFileInZip(zip_) == ZIP_OK); }

    /// 0, or why the archive is none.
    int finish() {
        if (zip_) require(zipClose(std::exchange(zip_, nullptr), nullptr) == ZIP_OK);
        return error_;
    }

private:
    void require(bool isDone) {
        if (!isDone && error_ == 0) error_ = errno != 0 ? errno : EIO;
    }

    zipFile zip_;
    int error_ = 0;
};

using List = std::vector<std::pair<std::string, JsonValue>>;  // name and fingerprint

/// The list of files in a backup; none when it is not one that this version reads.
std::optional<List> parseList(std::string_view text) {
    const auto document = NlohmannJsonParser().parse(text);
    if (!document) return std::nullopt;
    const JsonValue* const version = document->member("pedvarBackup");
    const JsonValue* const files = document->member("files");
    const JsonObject* const list = files ? files->as<JsonObject>() : nullptr;
    if (!version || version->integer() != backupVersion || !list || list->empty()) return std::nullopt;
    return *list;
}

/// Whether the file ends as an archive does that has no comment; readers of archives look further up as well.
bool hasItsEnd(const fs::path& backup) {
    constexpr std::string_view signature = "PK\5\6";
    constexpr std::streamoff endSize = 22;  // bytes
    std::array<char, signature.size()> found{};
    std::ifstream file(backup, std::ios::binary);
    file.seekg(-endSize, std::ios::end).read(found.data(), found.size());
    return std::string_view(found.data(), found.size()) == signature;
}

/// The pieces of an entry to `take`; false when they are not whole.
bool unpack(const fs::path& backup, const ZipEntry& entry, const std::function<void(std::string_view)>& take) {
    const auto source = openZipEntry(backup, entry);
    if (!source) return false;
    std::vector<char> buffer(pieceSize);
    std::size_t filled = 0;  // hashes are of whole pieces, and a source may yield less
    while (true) {
        const auto size = (*source)->read(std::span(buffer).subspan(filled));
        if (!size) return false;
        filled += *size;
        if (filled == buffer.size() || (*size == 0 && filled > 0)) {
            take({buffer.data(), filled});
            filled = 0;
        }
        if (*size == 0) return true;
    }
}

/// Writes an entry to a file, through to the disk.
StoreResult<Fingerprint> unpackFile(const fs::path& backup, const ZipEntry& entry, const fs::path& file,
                                    const GoesOn& goesOn) {
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0) return std::unexpected(unwritable(file, errno));
    Fingerprint found;
    int error = 0;
    const bool isWhole = unpack(backup, entry, [&](std::string_view piece) {
        found.add(piece);
        if (error == 0 && !goesOn()) error = ECANCELED;
        while (error == 0 && !piece.empty()) {
            const ssize_t size = ::write(descriptor, piece.data(), piece.size());
            if (size < 0)
                error = errno;
            else
                piece.remove_prefix(static_cast<std::size_t>(size));
        }
    });
    if (error == 0 && ::fsync(descriptor) != 0) error = errno;
    ::close(descriptor);
    if (error != 0) return std::unexpected(unwritable(file, error));
    if (!isWhole) return refused(backup, Phrase("{} in it is cut or damaged", {entry.name}));
    return found;
}

}  // namespace

StoreResult<std::uint64_t> writeBackup(const fs::path& folder, const fs::path& backup, const GoesOn& goesOn) {
    const ScratchFolder scratch(backup.string() + ".copy");
    if (auto copied = copyData(folder, scratch.path(), goesOn); !copied) {
        // Only the copies take space.
        if (copied.error().kind == StoreError::Kind::full) return std::unexpected(unwritable(backup, ENOSPC));
        return std::unexpected(std::move(copied.error()));
    }
    if (auto checked = checkData(scratch.path()); !checked) return std::unexpected(std::move(checked.error()));
    ZipWriter zip(backup);
    JsonObject list;
    std::uint64_t size = 0;
    for (const std::string_view name : dataFiles) {
        const fs::path file = scratch.path() / name;
        if (!fs::exists(file)) continue;
        Fingerprint print;
        zip.begin(name);
        const int error = readPieces(file, goesOn, [&](std::string_view piece) {
            print.add(piece);
            zip.add(piece);
        });
        if (error != 0) return std::unexpected(unwritable(file, error));
        zip.end();
        size += static_cast<std::uint64_t>(print.size);
        list.emplace_back(name, print.document());
    }
    zip.begin(listName);
    zip.add(jsonText({JsonObject{{"pedvarBackup", {backupVersion}}, {"files", {std::move(list)}}}}));
    zip.end();
    if (const int error = zip.finish()) return std::unexpected(unwritable(backup, error));
    return size;
}

StoreResult<> readBackup(const fs::path& backup, const fs::path& target, const GoesOn& goesOn) {
    const auto entries = listZip(backup);
    if (!entries || !hasItsEnd(backup)) return refused(backup, Phrase("it is no backup, or cut"));
    const auto named = [&](std::string_view name) { return std::ranges::find(*entries, name, &ZipEntry::name); };
    std::string text;
    constexpr std::uint64_t longestList = 10'000;  // bytes
    const auto listed = named(listName);
    const bool hasList = listed != entries->end() && listed->size <= longestList &&
                         unpack(backup, *listed, [&](std::string_view piece) { text += piece; });
    const auto list = hasList ? parseList(text) : std::nullopt;
    if (!list) return refused(backup, Phrase("it is no backup that this version can read"));
    if (entries->size() != list->size() + 1) return refused(backup, Phrase("files in it were added or removed"));
    for (const auto& [name, fingerprint] : *list) {
        const auto entry = named(name);
        const bool isKnown = std::ranges::find(dataFiles, std::string_view(name)) != dataFiles.end();
        if (!isKnown || entry == entries->end())
            return refused(backup, Phrase("files in it were added or removed"));
        const auto found = unpackFile(backup, *entry, target / name, goesOn);
        if (!found) return std::unexpected(found.error());
        if (found->document() != fingerprint) return refused(backup, Phrase("{} in it was changed", {name}));
    }
    if (const auto checked = checkData(target); !checked) return refused(backup, checked.error().message);
    return {};
}

}  // namespace pedvar
