#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/live_input.h"
#include "apps/cli/watch/watcher.h"
#include "linux/notifications/desktop_notifications.h"
#include "linux/system/process_lock.h"

#include <cstring>

namespace pedvar {
namespace {

CommandError errorOf(const ProcessLock::Refusal& refusal, const Application& application) {
    if (refusal.error != 0) {
        return {ErrorKind::unwritable, Phrase("The folder {0} cannot be written: {1}.",
                                              {application.folder().string(), std::strerror(refusal.error)})};
    }
    const Texts& text = application.text();
    return {ErrorKind::alreadyWatching,
            refusal.owner ? text("Another process watches this folder already: process {}.", *refusal.owner)
                          : text("Another process watches this folder already.")};
}

/// Watches until it is asked to end, or everything is to be built anew.
CommandResult<Watcher::Ending> watch(Application& application, Watcher::Beginning beginning) {
    const auto managers = watchedManagers(application);
    if (!managers) return std::unexpected(managers.error());
    Readiness readiness(application.loop());
    DesktopNotifications notifications(application.loop(), readiness);
    Watcher watcher(application, *managers, notifications, readiness, beginning);
    const LiveInput input(application.loop(), LiveInput::Keys::ignored,
                          {.key = [](char) {}, .end = [&watcher] { watcher.end(Watcher::Ending::asked); }});
    return application.loop().run(watcher.run());
}

}  // namespace

CommandResult<Report> run(const WatchRequest&, Application& application) {
    const auto lock = ProcessLock::take(application.folder() / "watch.lock");
    if (!lock) return std::unexpected(errorOf(lock.error(), application));
    auto ending = watch(application, Watcher::Beginning::opened);
    while (ending && *ending == Watcher::Ending::zoneChanged) {
        const auto anew = Application::open(application.options(), Access::readWrite);
        if (!anew) return std::unexpected(anew.error());
        ending = watch(**anew, Watcher::Beginning::continued);
    }
    if (!ending) return std::unexpected(ending.error());
    if (application.wantsJson()) return Report{JsonObject{}};
    return Report{std::string()};
}

}  // namespace pedvar
