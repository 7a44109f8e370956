#include "apps/cli/help_text.h"

#include "apps/cli/terminal.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <algorithm>
#include <set>
#include <sstream>
#include <vector>

namespace pedvar {
namespace {

/// The library's layout with our words.
class TranslatedHelp : public CLI::Formatter {
public:
    TranslatedHelp(const CLI::App& command, const Texts& text) : text_(text) {
        constexpr std::size_t leftColumn = 26;
        column_width(leftColumn);
        label("Usage", text("Usage"));
        label("OPTIONS", text("OPTIONS"));
        label("SUBCOMMAND", text("COMMAND"));
        label("Positionals", text("Positionals"));
        options_ = command.get_options();
    }

    std::string make_description(const CLI::App* app) const override {
        return text_.lookUp(app->get_description()) + "\n";
    }
    std::string make_group(std::string group, bool isPositional,
                           std::vector<const CLI::Option*> options) const override {
        return Formatter::make_group(group == "Options" ? text_("Options") : group, isPositional, options);
    }
    std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode) const override {
        const auto commands = app->get_subcommands({});
        std::string result = commands.empty() ? "" : "\n" + text_("Commands") + ":\n";
        for (const CLI::App* command : commands) {
            std::ostringstream line;
            CLI::detail::format_help(line, command->get_name(), text_.lookUp(command->get_description()),
                                     get_column_width());
            result += line.str();
        }
        return result;
    }
    std::string make_option(const CLI::Option* option, bool isPositional) const override {
        const std::string name = make_option_name(option, isPositional) + make_option_opts(option);
        const std::size_t unseen = name.size() - columns(name);  // the library counts bytes
        std::ostringstream line;
        CLI::detail::format_help(line, name, make_option_desc(option), get_column_width() + unseen);
        return line.str();
    }
    std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
        const std::string name = Formatter::make_option_name(option, isPositional);
        return isPositional ? text_.lookUp(name) : name;
    }
    std::string make_option_opts(const CLI::Option* option) const override {
        std::string result;
        if (!option->get_type_name().empty()) {
            result = " " + text_.lookUp(option->get_type_name());
            if (option->get_expected_max() == CLI::detail::expected_max_vector_size) result += " ...";
            if (option->get_required()) result += " " + text_("REQUIRED");
        }
        return result + others(text_("Needs"), option->get_needs()) +
               others(text_("Excludes"), option->get_excludes());
    }
    std::string make_option_desc(const CLI::Option* option) const override {
        return text_.lookUp(option->get_description());
    }

private:
    /// Those of `others` in the order in which the help lists them.
    std::string others(const std::string& heading, const std::set<CLI::Option*>& others) const {
        std::string result = others.empty() ? "" : " " + heading + ":";
        for (const CLI::Option* option : options_) {
            const bool isMeant = std::ranges::find(others, option) != others.end();
            if (isMeant) result += " " + text_.lookUp(option->get_name());
        }
        return result;
    }

    const Texts& text_;
    std::vector<const CLI::Option*> options_;
};

}  // namespace

std::string helpText(const CLI::App& command, const std::string& name, const Texts& text) {
    std::string help = TranslatedHelp(command, text).make_help(&command, name, CLI::AppFormatMode::Normal);
    help.erase(help.find_last_not_of('\n') + 2);
    return help;
}

}  // namespace pedvar
