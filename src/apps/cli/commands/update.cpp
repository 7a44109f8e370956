#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/engagement.h"

namespace pedvar {
namespace {

JsonObject document(const AppUpdateManager& updates) {
    return {
        {"currentVersion", {updates.currentVersion}},
        {"latestVersion", {updates.latestVersion.value()}},
        {"isUpdateAvailable", {updates.isUpdateAvailable.value()}},
        {"releaseNotes", {updates.releaseNotes.value()}},
        {"shouldShowUpdatePopup", {updates.shouldShowUpdatePopup.value()}},
    };
}

std::string view(const AppUpdateManager& updates, const Screen& screen) {
    const std::string current = harmless(updates.currentVersion);
    if (updates.isUpdateAvailable) {
        std::string lines =
            screen.text("Pedvar {0} is there; this is {1}.", harmless(updates.latestVersion.value()), current) +
            "\n";
        if (!updates.releaseNotes->empty()) lines += "\n" + harmlessLines(*updates.releaseNotes) + "\n";
        if (!updates.shouldShowUpdatePopup) lines += "\n" + screen.text("You have dismissed it.") + "\n";
        return lines;
    }
    if (updates.latestVersion->empty()) {
        return screen.text("This is Pedvar {}; no newer one is known. `pedvar update --check` asks for one.",
                           current) +
               "\n";
    }
    return screen.text("This is Pedvar {}, the newest one.", current) + "\n";
}

CommandError errorOf(const UpdateCheckFailure& failure, const Texts& text) {
    if (failure.kind == UpdateCheckFailure::Kind::noAddress) {
        return {ErrorKind::noAddress,
                text("Nobody can be asked for updates; `pedvar settings updateAddress ADDRESS` says whom.")};
    }
    return {ErrorKind::checkFailed, Phrase("The newest version is not known: {}", {failure.message})};
}

/// What keeps the person from the page or from dismissing the update.
std::optional<CommandError> act(UpdateRequest::Action action, Application& application) {
    AppUpdateManager& updates = application.engagement().updates;
    const Texts& text = application.text();
    if (action == UpdateRequest::Action::check) {
        const auto checked = application.loop().run(updates.checkManually());
        return checked ? std::nullopt : std::optional(errorOf(checked.error(), text));
    }
    updates.recallLastCheck();
    if (action == UpdateRequest::Action::open && !updates.openStorePage()) {
        if (application.linuxSettings().updatePage.text().empty()) {
            return CommandError{ErrorKind::noAddress,
                                text("There is no page to open; `pedvar settings updatePage ADDRESS` names one.")};
        }
        return CommandError{ErrorKind::noBrowser,
                            text("There is no browser to open the page with: xdg-open is not installed.")};
    }
    if (action == UpdateRequest::Action::dismiss) {
        if (!updates.isUpdateAvailable) {
            return CommandError{
                ErrorKind::noUpdate,
                text("No update is known that could be dismissed; `pedvar update --check` asks for one.")};
        }
        updates.dismissUpdate();
    }
    return std::nullopt;
}

}  // namespace

CommandResult<Report> run(const UpdateRequest& request, Application& application) {
    auto problem = act(request.action, application);
    const AppUpdateManager& updates = application.engagement().updates;
    if (application.wantsJson()) return Report{document(updates), std::move(problem)};
    if (problem) return std::unexpected(std::move(*problem));
    return Report{view(updates, application.screen())};
}

}  // namespace pedvar
