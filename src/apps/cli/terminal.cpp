#include "apps/cli/terminal.h"

#include "core/utf8.h"

#include <langinfo.h>
#include <locale.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace pedvar {
namespace {

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

Palette richestPalette() {
    const std::string_view depth = environment("COLORTERM");
    return depth == "truecolor" || depth == "24bit" ? Palette::direct : Palette::cube;
}

/// A byte that begins no character stands for itself.
std::string_view firstCharacter(std::string_view text) {
    return text.substr(0, std::max<std::size_t>(characterLength(text), 1));
}

/// The character set of the environment's locale. One that is not installed still says by its name what the
/// terminal understands.
Charset environmentCharset() {
    if (const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr)) {
        const std::string_view codeset = nl_langinfo_l(CODESET, locale);
        const Charset charset = codeset == "UTF-8" ? Charset::utf8 : Charset::ascii;
        freelocale(locale);
        return charset;
    }
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const std::string_view name = environment(variable);
        if (name.empty()) continue;
        const bool isUtf8 = name.contains(".UTF-8") || name.contains(".utf8");
        return isUtf8 ? Charset::utf8 : Charset::ascii;
    }
    return Charset::ascii;
}

std::string_view likeness(std::string_view character) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 47> likenesses{{
        {"█", "#"},      {"▉", "#"},  {"▊", "#"},  {"▋", "#"},  {"▌", "#"},  {"▍", " "},  {"▎", " "},
        {"▏", " "},      {"▇", "#"},  {"▆", "#"},  {"▅", "#"},  {"▄", ":"},  {"▃", ":"},  {"▂", "."},
        {"▁", "."},      {"░", "."},  {"▒", ":"},  {"▓", "+"},  {"│", "|"},  {"┤", "+"},  {"└", "+"},
        {"─", "-"},      {"┼", "+"},  {"✓", "*"},  {"–", "-"},  {"…", "."},  {"’", "'"},  {"\u00A0", " "},
        {"\u202F", " "}, {"·", "-"},  {"○", "o"},  {"●", "@"},  {"◉", "@"},  {"├", "+"},  {"┬", "+"},
        {"▲", "^"},      {"◂", "<"},  {"ä", "ae"}, {"ö", "oe"}, {"ü", "ue"}, {"Ä", "Ae"}, {"Ö", "Oe"},
        {"Ü", "Ue"},     {"ß", "ss"}, {"„", "\""}, {"“", "\""}, {"”", "\""},
    }};
    if (character.size() == 1 && static_cast<unsigned char>(character.front()) < 0x80) return character;
    for (const auto& [from, to] : likenesses) {
        if (from == character) return to;
    }
    if (character.starts_with("\xE2\xA0") || character.starts_with("\xE2\xA1") ||
        character.starts_with("\xE2\xA2") || character.starts_with("\xE2\xA3")) {
        return character == "\u2800" ? " " : "*";  // Braille
    }
    return "?";
}

bool isControl(std::string_view character) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(character[index]); };
    if (character.size() == 1) return byte(0) < 0x20 || byte(0) >= 0x7F;
    if (byte(0) == 0xC2) return byte(1) < 0xA0;  // U+0080 to U+009F
    if (byte(0) != 0xE2 || character.size() != 3) return false;
    // What turns the direction of writing, and the separators of lines.
    if (byte(1) == 0x80) return byte(2) == 0x8E || byte(2) == 0x8F || (0xA8 <= byte(2) && byte(2) <= 0xAE);
    return byte(1) == 0x81 && 0xA6 <= byte(2) && byte(2) <= 0xA9;
}

}  // namespace

Terminal terminalBehind(int descriptor, ColorOutput wish) {
    Terminal terminal;
    terminal.isInteractive = isatty(descriptor) == 1 && environment("TERM") != "dumb";
    terminal.charset = environmentCharset();
    const bool wantsColors = terminal.isInteractive && environment("NO_COLOR").empty();
    if (wish == ColorOutput::always || (wish == ColorOutput::automatic && wantsColors)) {
        terminal.palette = richestPalette();
    }
    return terminal;
}

Color stepColor(const UserPreferences& preferences) {
    const auto component = [](double share) {
        return static_cast<std::uint8_t>(std::lround(255 * std::fmin(std::fmax(share, 0), 1)));
    };
    switch (preferences.preferredStepColor) {
        case StepColor::green:
            return {52, 199, 89};
        case StepColor::blue:
            return {10, 132, 255};
        case StepColor::purple:
            return {175, 82, 222};
        case StepColor::orange:
            return {255, 149, 0};
        case StepColor::pink:
            return {255, 45, 120};
        case StepColor::cyan:
            return {50, 190, 230};
        case StepColor::teal:
            return {48, 176, 170};
        case StepColor::indigo:
            return {94, 92, 230};
        case StepColor::custom:
            break;
    }
    return {component(preferences.customStepColorRed), component(preferences.customStepColorGreen),
            component(preferences.customStepColorBlue)};
}

std::string switchTo(Color color, Palette palette) {
    const auto level = [](std::uint8_t component) { return (component * 5 + 127) / 255; };
    const auto text = [](int number) { return std::to_string(number); };
    switch (palette) {
        case Palette::none:
            break;
        case Palette::cube:
            return "\x1b[38;5;" + text(16 + 36 * level(color.red) + 6 * level(color.green) + level(color.blue)) +
                   "m";
        case Palette::direct:
            return "\x1b[38;2;" + text(color.red) + ";" + text(color.green) + ";" + text(color.blue) + "m";
    }
    return {};
}

std::string toAscii(std::string_view screen) {
    std::string result;
    while (!screen.empty()) {
        const std::string_view character = firstCharacter(screen);
        result += likeness(character);
        screen.remove_prefix(character.size());
    }
    return result;
}

std::string harmless(std::string_view foreign) {
    std::string result;
    while (!foreign.empty()) {
        const std::string_view character = firstCharacter(foreign);
        if (isControl(character)) {
            result += '?';
        } else {
            result += character;
        }
        foreign.remove_prefix(character.size());
    }
    return result;
}

std::string harmlessLines(std::string_view foreign) {
    std::string result;
    while (true) {
        const std::size_t length = std::min(foreign.find('\n'), foreign.size());
        const std::string_view line = foreign.substr(0, length);
        result += harmless(line.substr(0, line.size() - (line.ends_with('\r') ? 1 : 0)));
        if (length == foreign.size()) return result;
        result += '\n';
        foreign.remove_prefix(length + 1);
    }
}

std::string finished(std::string_view screen, int descriptor) {
    std::string result;
    for (const char character : screen) {
        if (character == '\n') result.erase(result.find_last_not_of(' ') + 1);
        result += character;
    }
    return terminalBehind(descriptor, ColorOutput::never).charset == Charset::ascii ? toAscii(result) : result;
}

void tell(std::string_view message) {
    const std::string line = finished("pedvar: " + harmless(message) + "\n", STDERR_FILENO);
    std::fwrite(line.data(), 1, line.size(), stderr);
}

std::size_t columns(std::string_view text) {
    std::size_t count = 0;
    for (; !text.empty(); text.remove_prefix(firstCharacter(text).size())) ++count;
    return count;
}

}  // namespace pedvar
