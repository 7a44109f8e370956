#include "linux/system/message_file.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace pedvar {
namespace {

namespace fs = std::filesystem;

/// The numbers at the beginning of a catalogue, as the format of GNU gettext defines them.
struct Header {
    std::uint32_t magic, revision, count, originals, translations, hashSize, hashTable;
};
constexpr std::uint32_t ourByteOrder = 0x950412de;

struct TextPlace {
    std::uint32_t length, offset;
};

bool areInside(std::string_view bytes, std::uint64_t offset, std::uint64_t size) {
    return offset <= bytes.size() && size <= bytes.size() - offset;
}

/// Whether a table of places lies inside, and so does each text, with the zero that ends it.
bool isSoundTable(std::string_view bytes, std::uint32_t offset, std::uint32_t count) {
    if (!areInside(bytes, offset, std::uint64_t{count} * sizeof(TextPlace))) return false;
    for (std::uint32_t i = 0; i < count; ++i) {
        TextPlace place;
        std::memcpy(&place, bytes.data() + offset + i * sizeof(place), sizeof(place));
        if (!areInside(bytes, place.offset, std::uint64_t{place.length} + 1)) return false;
        if (bytes[std::size_t{place.offset} + place.length] != '\0') return false;
    }
    return true;
}

}  // namespace

bool isSoundCatalogue(std::string_view bytes) {
    Header header;
    if (bytes.size() < sizeof(header)) return false;
    std::memcpy(&header, bytes.data(), sizeof(header));
    // Ours are made on the machine's own byte order, of the first revision, and without a table of hashes.
    return header.magic == ourByteOrder && header.revision == 0 && header.hashSize == 0 &&
           isSoundTable(bytes, header.originals, header.count) &&
           isSoundTable(bytes, header.translations, header.count);
}

bool isSoundCatalogueFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return isSoundCatalogue(bytes);
}

fs::path translationsFolder() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    const fs::path beside = program.parent_path() / "locale";
    return fs::is_directory(beside, error) ? beside : program.parent_path().parent_path() / "share/locale";
}

}  // namespace pedvar
