#include "apps/cli/gpx_file.h"

#include "linux/import/byte_source.h"
#include "linux/xml/expat_parser.h"

#include <optional>

namespace pedvar {
namespace {

constexpr std::size_t longestFront = 256 * 1024;  // bytes in which the outermost element begins

/// Hears the name of the outermost element.
class RootElement : public XmlHandler {
public:
    std::optional<std::string> name;

    void startElement(std::string_view element, XmlAttributes) override {
        if (!name) name = element;
    }
    void endElement(std::string_view) override {}
    void characters(std::string_view) override {}
    bool wantsCharacters() const override { return false; }
};

std::optional<std::string> rootElementOf(const std::string& path) {
    const auto file = openFile(path);
    if (!file) return std::nullopt;
    RootElement root;
    std::size_t count = 0;
    // That the document breaks off where it is no longer needed is no matter.
    static_cast<void>(ExpatParser().parse(
        [&](std::span<char> room) -> std::size_t {
            if (root.name || count >= longestFront) return 0;
            const auto read = (*file)->read(room.first(std::min<std::size_t>(room.size(), 4096)));
            count += read.value_or(0);
            return read.value_or(0);
        },
        root));
    return root.name;
}

bool isNameOfGPX(std::string_view element) {
    return element == "gpx" || element.ends_with(":gpx");
}

}  // namespace

bool isGPXFile(const std::string& path) {
    const auto root = rootElementOf(path);
    return root && isNameOfGPX(*root);
}

CommandError withoutPoints(const std::string& path) {
    const auto root = rootElementOf(path);
    GPXFailure failure{GPXError::noTrackPoints, {}};
    if (root && !isNameOfGPX(*root)) failure.detail = Phrase("It is a document of \"{}\".", {*root});
    return errorOf(failure, path);
}

CommandError withoutTimes(const std::string& path, const Texts& text) {
    return {ErrorKind::noTimes,
            text("\"{}\": Too few points have a usable time, so nobody was there at known moments.", path)};
}

std::string leftOut(std::size_t pointsWithoutTime, const Screen& screen) {
    const auto count = static_cast<std::int64_t>(pointsWithoutTime);
    return screen.text.plural("Left out: {} point without a time", "Left out: {} points without a time", count,
                              screen.figures.number(count));
}

CommandResult<GPXDocument> readGPXFile(const std::string& path, Date now, GPXReadings readings) {
    const auto file = openFile(path);
    if (!file) {
        if (file.error().kind != ImportError::Kind::notFound) return std::unexpected(errorOf(file.error()));
        return std::unexpected(errorOf(GPXFailure{GPXError::fileNotFound, {}}, path));
    }
    std::optional<ImportError> problem;
    const auto source = [&](std::span<char> room) -> std::size_t {
        const auto count = (*file)->read(room);
        if (!count) problem = count.error();
        return count.value_or(0);
    };
    auto document = GPXXMLParser(source, now, (*file)->size(), readings).parse(ExpatParser());
    if (problem) return std::unexpected(errorOf(*problem));
    if (!document) return std::unexpected(errorOf(document.error(), path));
    return std::move(*document);
}

}  // namespace pedvar
