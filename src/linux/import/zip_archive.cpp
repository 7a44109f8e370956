#include "linux/import/zip_archive.h"

#include <minizip/unzip.h>

#include <algorithm>
#include <limits>

namespace pedvar {

namespace {

/// Far more than any phone writes; an archive of more would fill memory with names alone.
constexpr std::size_t mostEntries = 100'000;
constexpr int encryptedFlag = 1;

struct ZipCloser {
    void operator()(void* file) const { unzClose(file); }
};
using ZipHandle = std::unique_ptr<void, ZipCloser>;

ImportError damaged(Phrase message) {
    return {ImportError::Kind::damaged, std::move(message)};
}

ImportError unreadableDirectory(const std::filesystem::path& archive) {
    return damaged(
        Phrase("The archive \"{}\" is damaged: its directory cannot be read. Copy it from the phone again.",
               {archive.string()}));
}

ImportResult<ZipHandle> openArchive(const std::filesystem::path& archive) {
    // Tells a missing or unreadable file from a damaged one.
    if (auto file = openFile(archive); !file) return std::unexpected(file.error());
    ZipHandle handle(unzOpen64(archive.c_str()));
    if (!handle)
        return std::unexpected(damaged(Phrase(
            "The archive \"{}\" is cut off or damaged: its directory is missing. Copy it from the phone again.",
            {archive.string()})));
    return handle;
}

class ZipEntrySource : public ByteSource {
public:
    ZipEntrySource(ZipHandle handle, std::filesystem::path archive, const ZipEntry& entry)
        : handle_(std::move(handle)), archive_(std::move(archive)), size_(entry.size) {}

    ImportResult<std::size_t> read(std::span<char> buffer) override {
        if (hasEnded_) return 0;
        constexpr std::size_t most = std::numeric_limits<int>::max();
        const int count =
            unzReadCurrentFile(handle_.get(), buffer.data(), static_cast<unsigned>(std::min(buffer.size(), most)));
        if (count > 0) return static_cast<std::size_t>(count);
        hasEnded_ = true;
        // Closing compares the checksum.
        if (count < 0 || unzCloseCurrentFile(handle_.get()) != UNZ_OK) {
            return std::unexpected(
                damaged(Phrase("The archive \"{}\" is damaged: what it holds does not fit its checksum. Copy it "
                               "from the phone again.",
                               {archive_.string()})));
        }
        return 0;
    }

    std::uint64_t size() const override { return size_; }

private:
    ZipHandle handle_;
    std::filesystem::path archive_;
    std::uint64_t size_;
    bool hasEnded_ = false;
};

}  // namespace

ImportResult<std::vector<ZipEntry>> listZip(const std::filesystem::path& archive) {
    auto handle = openArchive(archive);
    if (!handle) return std::unexpected(handle.error());

    std::vector<ZipEntry> entries;
    std::string name(4096, '\0');
    int status = unzGoToFirstFile(handle->get());
    for (; status == UNZ_OK; status = unzGoToNextFile(handle->get())) {
        unz_file_info64 info{};
        unz64_file_pos position{};
        if (unzGetCurrentFileInfo64(handle->get(), &info, name.data(), name.size(), nullptr, 0, nullptr, 0) !=
                UNZ_OK ||
            unzGetFilePos64(handle->get(), &position) != UNZ_OK) {
            return std::unexpected(unreadableDirectory(archive));
        }
        if (entries.size() == mostEntries) {
            return std::unexpected(damaged(
                Phrase("The archive \"{}\" holds more files than an export has. Copy it from the phone again.",
                       {archive.string()})));
        }
        std::string entryName(name.data(), std::min<std::size_t>(info.size_filename, name.size()));
        if (entryName.ends_with('/')) continue;
        entries.push_back({std::move(entryName), info.uncompressed_size, (info.flag & encryptedFlag) != 0,
                           position.pos_in_zip_directory, position.num_of_file});
    }
    if (status != UNZ_END_OF_LIST_OF_FILE) {
        return std::unexpected(unreadableDirectory(archive));
    }
    return entries;
}

ImportResult<std::unique_ptr<ByteSource>> openZipEntry(const std::filesystem::path& archive,
                                                       const ZipEntry& entry) {
    if (entry.isEncrypted) {
        return std::unexpected(
            ImportError{ImportError::Kind::passwordProtected,
                        Phrase("The archive \"{}\" is protected by a password. Unpack it and import the folder.",
                               {archive.string()})});
    }
    auto handle = openArchive(archive);
    if (!handle) return std::unexpected(handle.error());
    const unz64_file_pos position{entry.directoryOffset, entry.directoryIndex};
    if (unzGoToFilePos64(handle->get(), &position) != UNZ_OK || unzOpenCurrentFile(handle->get()) != UNZ_OK) {
        return std::unexpected(
            damaged(Phrase("The archive \"{}\" is damaged or packed in a way that Pedvar does not know. Copy it "
                           "from the phone again.",
                           {archive.string()})));
    }
    return std::make_unique<ZipEntrySource>(std::move(*handle), archive, entry);
}

}  // namespace pedvar
