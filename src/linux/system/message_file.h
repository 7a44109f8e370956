/// Files of translations.
#pragma once

#include <filesystem>
#include <string_view>

namespace pedvar {

/// Whether the C library can be given the bytes of a compiled catalogue ("de/LC_MESSAGES/pedvar.mo"): it believes
/// the places of texts that such a file names, and ends the process where they lie outside.
bool isSoundCatalogue(std::string_view bytes);

/// As above, for the file at `path`; false when it cannot be read.
bool isSoundCatalogueFile(const std::filesystem::path& path);

/// The folder of translations: `locale` beside the program, as it is built, or `../share/locale`, as it is
/// installed.
std::filesystem::path translationsFolder();

}  // namespace pedvar
