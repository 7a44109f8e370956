#include "linux/import/route_files.h"

#include "linux/import/document_look.h"

#include <fmt/format.h>

#include <map>
#include <system_error>

namespace pedvar {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestRoute = 24 * 1024 * 1024;  // bytes; a day at one point a second
constexpr std::string_view routesFolder = "workout-routes";

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
    if (!text || std::string_view(*text).substr(0, documentHeadSize).find("<gpx") == std::string_view::npos)
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

std::unique_ptr<RouteFiles> routesOf(const ExportDocument& document) {
    if (document.entry) return std::make_unique<ArchiveRoutes>(document.file);
    return std::make_unique<FolderRoutes>(document.file);
}

}  // namespace pedvar
