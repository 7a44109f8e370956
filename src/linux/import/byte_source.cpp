#include "linux/import/byte_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace pedvar {

namespace {

ImportError systemError(const std::filesystem::path& path, int code) {
    if (code == ENOENT || code == ENOTDIR) {
        return {ImportError::Kind::notFound, Phrase("There is no file \"{}\".", {path.string()})};
    }
    return {ImportError::Kind::unreadable,
            Phrase("\"{}\" cannot be read: {}.", {path.string(), std::strerror(code)})};
}

class FileSource : public ByteSource {
public:
    FileSource(std::filesystem::path path, int descriptor, std::uint64_t size)
        : path_(std::move(path)), descriptor_(descriptor), size_(size) {}
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    ~FileSource() override { ::close(descriptor_); }

    ImportResult<std::size_t> read(std::span<char> buffer) override {
        for (;;) {
            const ssize_t count = ::read(descriptor_, buffer.data(), buffer.size());
            if (count >= 0) return static_cast<std::size_t>(count);
            if (errno != EINTR) return std::unexpected(systemError(path_, errno));
        }
    }

    std::uint64_t size() const override { return size_; }

private:
    std::filesystem::path path_;
    int descriptor_;
    std::uint64_t size_;
};

}  // namespace

ImportResult<std::unique_ptr<ByteSource>> openFile(const std::filesystem::path& path) {
    // Non-blocking, so that a pipe without a writer is refused instead of waited for.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return std::unexpected(systemError(path, errno));
    struct stat status{};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        return std::unexpected(
            ImportError{ImportError::Kind::unreadable,
                        Phrase("\"{}\" is not a file. Save as a file what is to be read.", {path.string()})});
    }
    ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    return std::make_unique<FileSource>(path, descriptor, static_cast<std::uint64_t>(status.st_size));
}

ImportResult<std::string> readAll(ByteSource& source, std::size_t longest) {
    std::string text;
    std::size_t filled = 0;
    for (;;) {
        text.resize(std::min<std::size_t>(filled + 64 * 1024, longest + 1));
        const auto count = source.read(std::span(text).subspan(filled));
        if (!count) return std::unexpected(count.error());
        filled += *count;
        if (filled > longest) {
            return std::unexpected(ImportError{ImportError::Kind::unreadable, Phrase("The file is too long.")});
        }
        if (*count == 0) break;
    }
    text.resize(filled);
    return text;
}

}  // namespace pedvar
