/// What the screen can show.
#pragma once

#include "apps/cli/linux_settings.h"
#include "core/preferences.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace pedvar {

enum class Palette {
    none,
    cube,    // 256 colours
    direct,  // 24 bits
};

enum class Charset { utf8, ascii };

struct Terminal {
    bool isInteractive = false;  // a person looks on while it is written
    Palette palette = Palette::none;
    Charset charset = Charset::ascii;
};

/// What the file behind `descriptor` can show, by the environment and the person's wish. Colours need a terminal
/// and neither `NO_COLOR` nor a "dumb" one, unless they are wished for always.
Terminal terminalBehind(int descriptor, ColorOutput wish);

struct Color {
    std::uint8_t red, green, blue;
};

/// The colour of steps.
Color stepColor(const UserPreferences& preferences);

/// The sequence that switches to `color`; empty without colours.
std::string switchTo(Color color, Palette palette);

/// `screen` in plain ASCII: bars become "#", what has no likeness "?".
std::string toAscii(std::string_view screen);

/// Text that others wrote, safe to show: without control characters, so that it cannot steer the terminal.
std::string harmless(std::string_view foreign);
/// The same for a text of several lines, which it keeps.
std::string harmlessLines(std::string_view foreign);

/// `screen` as the terminal behind `descriptor` shows it: without blanks at the ends of lines.
std::string finished(std::string_view screen, int descriptor);

/// Writes a line to standard error, in the name of the program.
void tell(std::string_view message);

/// Columns that UTF-8 text takes where every character takes one.
std::size_t columns(std::string_view text);

}  // namespace pedvar
