#include "linux/system/folder_watch.h"

#include <fmt/format.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace pedvar {

namespace {

constexpr std::size_t bufferSize = 16 * 1'024;  // bytes; a few hundred events

/// Of the folder itself.
constexpr std::uint32_t ends = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT;

constexpr std::uint32_t maskOf(FolderWatch::Change change) {
    switch (change) {
        case FolderWatch::Change::anyWrite:
            return IN_MODIFY | IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
        case FolderWatch::Change::finishedFile:
            return IN_CLOSE_WRITE | IN_MOVED_TO | ends;
        case FolderWatch::Change::newEntry:
            return IN_CREATE | IN_MOVED_TO | ends;
    }
    return 0;
}

}  // namespace

std::expected<std::unique_ptr<FolderWatch>, std::string> FolderWatch::open(Readiness& readiness,
                                                                           const std::filesystem::path& folder,
                                                                           Change change, Handler handler) {
    const int descriptor = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (descriptor < 0) return std::unexpected(std::strerror(errno));
    std::unique_ptr<FolderWatch> watch(new FolderWatch(descriptor, std::move(handler)));
    if (inotify_add_watch(descriptor, folder.c_str(), maskOf(change) | IN_ONLYDIR) < 0) {
        return std::unexpected(fmt::format("{}: {}", folder.string(), std::strerror(errno)));
    }
    watch->readable_ = readiness.onReadable(descriptor, [&self = *watch] { self.read(); });
    return watch;
}

FolderWatch::~FolderWatch() {
    readable_ = {};
    close(descriptor_);
}

void FolderWatch::read() {
    alignas(inotify_event) std::array<char, bufferSize> buffer;
    std::vector<std::string> names;
    bool isIncomplete = false;
    for (ssize_t length = 0; (length = ::read(descriptor_, buffer.data(), buffer.size())) > 0;) {
        for (const char* at = buffer.data(); at < buffer.data() + length;) {
            const auto* const event = reinterpret_cast<const inotify_event*>(at);
            isIncomplete = isIncomplete || (event->mask & IN_Q_OVERFLOW) != 0;
            hasEnded_ = hasEnded_ || (event->mask & ends) != 0;
            if (event->len > 0) names.emplace_back(event->name);
            at += sizeof(inotify_event) + event->len;
        }
    }
    if (isIncomplete || hasEnded_) names.clear();
    if (isIncomplete || hasEnded_ || !names.empty()) handler_(names);
}

}  // namespace pedvar
