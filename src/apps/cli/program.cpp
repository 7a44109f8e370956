#include "apps/cli/program.h"

#include "apps/cli/application.h"
#include "apps/cli/command_line.h"
#include "apps/cli/commands/command.h"
#include "core/reflection.h"
#include "linux/system/gettext_texts.h"

#include <fmt/format.h>
#include <unistd.h>
#include <cstdio>

namespace pedvar {
namespace {

/// False when the text did not reach the file.
bool write(std::FILE* file, const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
}

/// The texts of what is said around a command: in the language of the application once it is there, before in that
/// of the preferences where they can be read. Nothing is looked at before the first text is asked for.
class OuterTexts : public TextCatalogue {
public:
    OuterTexts(std::span<const char* const> arguments, const std::unique_ptr<Application>& application)
        : arguments_(arguments), application_(application) {}

    std::string text(std::string_view english) const override { return catalogue().text(english); }
    std::string plural(std::string_view one, std::string_view many, std::int64_t count) const override {
        return catalogue().plural(one, many, count);
    }

private:
    const TextCatalogue& catalogue() const {
        if (application_) return application_->catalogue();
        if (!early_) {
            early_.emplace();
            GlobalOptions options;
            options.dataFolder = dataFolderOf(arguments_);
            const auto opened = Application::open(options, Access::readOnly);
            if (opened) early_->speak((*opened)->languageCode());
        }
        return *early_;
    }

    std::span<const char* const> arguments_;
    const std::unique_ptr<Application>& application_;
    mutable std::optional<GettextTexts> early_;
};

/// What is opened to answer goes into `application`, which has to live until the answer is shown.
CommandResult<Report> answer(std::span<const char* const> arguments, const TextCatalogue& words,
                             std::unique_ptr<Application>& application) {
    auto line = parseCommandLine(arguments, words);
    if (!line) return std::unexpected(line.error());
    if (const auto* information = std::get_if<Information>(&line->wish)) {
        if (line->global.format == OutputFormat::screen) return Report{information->screen};
        return Report{JsonObject{{information->key, {information->value}}}};
    }
    const Request& request = std::get<Request>(line->wish);
    auto opened =
        Application::open(line->global, isWriting(request, line->global) ? Access::readWrite : Access::readOnly);
    if (!opened) return std::unexpected(opened.error());
    application = std::move(*opened);
    if (const auto& warning = application->warning()) tell(warning->in(words));
    if (needsFolder(request)) application->hold();
    if (needsSettings(request)) {
        const auto problems = application->defaults().problems();
        if (!problems.empty()) return std::unexpected(errorOf(problems.front()));
    }
    return std::visit([&](const auto& wanted) { return run(wanted, *application); }, request);
}

std::optional<CommandError> show(CommandResult<Report> result, OutputFormat format, const Texts& words) {
    auto problem = result ? result->problem : std::optional(result.error());
    std::string text;
    bool isWritten = true;
    if (auto* const answer = result ? std::get_if<LongAnswer>(&result->content) : nullptr) {
        problem = (*answer)([&](std::string_view piece) {
            isWritten = isWritten && std::fwrite(piece.data(), 1, piece.size(), stdout) == piece.size();
        });
    } else if (format == OutputFormat::json) {
        JsonObject document;
        if (result) document = std::get<JsonObject>(std::move(result->content));
        if (problem) document.emplace_back("error", errorDocument(*problem, words));
        text = jsonText({std::move(document)}) + "\n";
    } else if (result) {
        text = finished(std::get<std::string>(result->content), STDOUT_FILENO);
    }
    isWritten = write(stdout, text) && isWritten;
    if (!isWritten && !problem) {
        problem = CommandError{ErrorKind::failed, Phrase("standard output cannot be written")};
        tell(words.of(problem->message));
    } else if (problem && format == OutputFormat::screen) {
        tell(words.of(problem->message));
    }
    return problem;
}

}  // namespace

ExitCode runProgram(std::span<const char* const> arguments) {
    std::unique_ptr<Application> application;
    const OuterTexts words(arguments, application);
    const auto problem = show(answer(arguments, words, application), formatOf(arguments), Texts(words));
    return problem ? exitCodeOf(*problem) : ExitCode::done;
}

}  // namespace pedvar
