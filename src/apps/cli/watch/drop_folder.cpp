#include "apps/cli/watch/drop_folder.h"

#include "apps/cli/gpx_file.h"
#include "linux/import/byte_source.h"
#include "linux/import/document_look.h"
#include "linux/import/zip_archive.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

namespace pedvar {
namespace {

constexpr Seconds settlingTime{1};        // a copy program may still set times and names of what it has written
constexpr std::streamoff tailSize = 512;  // bytes; enough for the end of a document and what may follow it

/// A lease is given only while nobody has the file open for writing. Where there are no leases, whoever has closed
/// the file is believed.
bool isBeingWritten(const std::filesystem::path& file) {
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) return true;
    const bool isOpenElsewhere = fcntl(descriptor, F_SETLEASE, F_RDLCK) < 0 && errno == EAGAIN;
    close(descriptor);
    return isOpenElsewhere;
}

std::string tailOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    file.seekg(std::max<std::streamoff>(0, size - tailSize));
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Names that programs give to what is not finished, and our own folders.
bool isOfNoInterest(std::string_view name) {
    return name.starts_with('.') || name.ends_with('~') || name.ends_with(".part") || name.ends_with(".tmp") ||
           name.ends_with(".crdownload");
}

/// `folder / name`, or with a number before the ending where that is taken.
std::filesystem::path freePath(const std::filesystem::path& folder, const std::filesystem::path& name) {
    std::filesystem::path path = folder / name;
    std::error_code error;
    for (int number = 2; std::filesystem::exists(path, error); ++number) {
        path = folder / (name.stem().string() + "-" + std::to_string(number) + name.extension().string());
    }
    return path;
}

}  // namespace

bool isWhole(const std::filesystem::path& file) {
    if (isBeingWritten(file)) return false;
    const auto head = headOf(openFile(file));
    if (!head || head->empty()) return false;
    switch (lookOf(*head).kind) {
        case DocumentLook::Kind::archive:
            return listZip(file).has_value();
        case DocumentLook::Kind::healthExport:
            return tailOf(file).find("</HealthData>") != std::string::npos;
        default:
            return !isGPXFile(file) || tailOf(file).find("gpx>") != std::string::npos;
    }
}

std::string activityTypeOf(const std::filesystem::path& file) {
    std::string name = file.stem().string();
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    constexpr std::array<std::pair<std::string_view, const char*>, 5> words{
        {{"run", "run"}, {"hike", "hike"}, {"cycl", "cycle"}, {"bike", "cycle"}, {"ride", "cycle"}}};
    for (const auto& [word, type] : words) {
        if (name.find(word) != std::string::npos) return type;
    }
    return "walk";
}

DropFolder::DropFolder(MainExecutor& executor, Readiness& readiness, std::filesystem::path folder,
                       Command importing, PlatformLog& log)
    : executor_(executor),
      readiness_(readiness),
      folder_(std::move(folder)),
      importing_(std::move(importing)),
      log_(log) {
    follow();
}

DropFolder::FolderIdentity DropFolder::identityOf(const std::filesystem::path& folder) {
    struct stat status{};
    if (stat(folder.c_str(), &status) != 0) return std::nullopt;
    return std::pair<std::uint64_t, std::uint64_t>(status.st_dev, status.st_ino);
}

void DropFolder::follow() {
    using enum FolderWatch::Change;
    if (isThere_ && !watch_->hasEnded() && identityOf(folder_) == identity_) return;
    isThere_ = false;
    std::string problem;
    // Downwards, each folder while the one above it is watched, so that none appears unnoticed.
    std::filesystem::path reached;
    for (auto part = folder_.begin(); part != folder_.end(); ++part) {
        reached /= *part;
        const auto next = std::next(part);
        const bool isFolder = next == folder_.end();
        FolderWatch::Handler handler = [this](const std::vector<std::string>& names) { look(names); };
        if (!isFolder) {
            handler = [this, awaited = next->string()](const std::vector<std::string>& names) {
                if (names.empty() || std::ranges::find(names, awaited) != names.end()) settle();
            };
        }
        auto watch =
            FolderWatch::open(readiness_, reached, isFolder ? finishedFile : newEntry, std::move(handler));
        if (!watch) {
            problem = watch.error();
            continue;  // what lies below may still be open to us
        }
        watch_ = std::move(*watch);
        isThere_ = isFolder;
        if (isFolder) identity_ = identityOf(folder_);
    }
    if (isThere_) {
        look({});
    } else if (problem != problem_) {
        say(LogLevel::error, "The drop folder is waited for: " + problem);
    }
    problem_ = isThere_ ? std::string() : problem;
}

void DropFolder::look(const std::vector<std::string>& names) {
    waiting_.insert(names.begin(), names.end());
    if (names.empty()) {
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder_, error)) {
            waiting_.insert(entry.path().filename().string());
        }
    }
    settle();
}

void DropFolder::settle() {
    settled_ = executor_.after(settlingTime, [this] {
        follow();
        next();
    });
}

void DropFolder::next() {
    if (import_) return;
    while (!waiting_.empty()) {
        const std::string name = waiting_.extract(waiting_.begin()).value();
        const std::filesystem::path file = folder_ / name;
        std::error_code error;
        if (isOfNoInterest(name) || !std::filesystem::is_regular_file(file, error)) continue;
        if (!isWhole(file)) {
            say(LogLevel::info, name + " is not whole yet.");
            continue;
        }
        auto import = ChildProcess::start(readiness_, importing_(file),
                                          [this, name](int exitCode) { finish(name, exitCode); });
        if (import) {
            import_ = std::move(*import);
            return;
        }
        say(LogLevel::error, "The import of " + name + " cannot be started: " + import.error());
    }
}

void DropFolder::finish(const std::string& name, int exitCode) {
    import_.reset();
    const bool isImported = exitCode == 0;
    const std::filesystem::path target = folder_ / (isImported ? "imported" : "failed");
    std::error_code error;
    std::filesystem::create_directory(target, error);
    std::filesystem::rename(folder_ / name, freePath(target, name), error);
    if (error) say(LogLevel::error, name + " cannot be moved: " + error.message());
    say(isImported ? LogLevel::info : LogLevel::error,
        name + (isImported ? " was imported." : " was not imported."));
    next();
}

void DropFolder::say(LogLevel level, const std::string& message) {
    log_.log(logSubsystem, "DropFolder", level, message);
}

}  // namespace pedvar
