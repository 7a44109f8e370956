/// Everything that a command needs to speak to a person.
#pragma once

#include "apps/cli/figures.h"
#include "apps/cli/terminal.h"
#include "apps/cli/texts.h"

#include <string>
#include <string_view>

namespace pedvar {

struct Screen {
    Texts text;
    Figures figures;
    Palette palette = Palette::none;
    Color accent{};

    /// In the colour of steps.
    std::string accented(std::string_view shown) const { return painted(switchTo(accent, palette), shown); }
    std::string bold(std::string_view shown) const { return painted("\x1b[1m", shown); }
    /// Less important than the rest.
    std::string faint(std::string_view shown) const { return painted("\x1b[2m", shown); }

private:
    std::string painted(std::string_view start, std::string_view shown) const {
        if (palette == Palette::none || shown.empty()) return std::string(shown);
        return std::string(start).append(shown).append("\x1b[0m");
    }
};

}  // namespace pedvar
