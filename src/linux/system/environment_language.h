/// The language that the environment asks for.
#pragma once

#include <string>
#include <vector>

namespace pedvar {

/// The name of the locale of a category ("LC_TIME") in the environment, "C" when there is none.
std::string localeName(const char* category);

/// Names like "de_AT" or "en", the preferred one first: those of LANGUAGE, else that of LC_ALL, LC_MESSAGES or
/// LANG, whichever is set first. Without a locale, or in the locale "C", LANGUAGE says nothing. Empty when no
/// language is asked for.
std::vector<std::string> languagesOfEnvironment();

}  // namespace pedvar
