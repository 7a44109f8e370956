/// Finding export documents in files, archives and folders.
#include "linux/import/export_package.h"
#include "linux/import/route_files.h"
#include "linux/import/zip_archive.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <fmt/format.h>
#include <minizip/zip.h>

#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

using namespace pedvar;

namespace {

using Kind = ImportError::Kind;

const std::string exportText = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><HealthData locale=\"en\"></HealthData>";

enum class Packing { stored, deflated, zip64 };

void writeZip(const std::filesystem::path& path, const std::vector<std::pair<std::string, std::string>>& files,
              Packing packing = Packing::deflated) {
    const zipFile zip = zipOpen64(path.c_str(), APPEND_STATUS_CREATE);
    REQUIRE(zip != nullptr);
    for (const auto& [name, bytes] : files) {
        REQUIRE(zipOpenNewFileInZip64(zip, name.c_str(), nullptr, nullptr, 0, nullptr, 0, nullptr,
                                      packing == Packing::stored ? 0 : Z_DEFLATED, Z_BEST_SPEED,
                                      packing == Packing::zip64 ? 1 : 0) == ZIP_OK);
        REQUIRE(zipWriteInFileInZip(zip, bytes.data(), static_cast<unsigned>(bytes.size())) == ZIP_OK);
        REQUIRE(zipCloseFileInZip(zip) == ZIP_OK);
    }
    REQUIRE(zipClose(zip, nullptr) == ZIP_OK);
}

/// Sets bits of the flags in every header of an archive, central and local.
void setFlags(const std::filesystem::path& path, char flags) {
    std::string bytes = readFile(path);
    for (const auto& [signature, offset] :
         {std::pair{std::string("PK\x01\x02"), 8}, {std::string("PK\x03\x04"), 6}}) {
        for (std::size_t at = bytes.find(signature); at != std::string::npos; at = bytes.find(signature, at + 4)) {
            bytes[at + static_cast<std::size_t>(offset)] |= flags;
        }
    }
    writeFile(path, bytes);
}

std::string contentOf(const ExportDocument& document) {
    const auto source = document.open();
    REQUIRE(source);
    const auto text = readAll(**source, 1 << 20);
    return text ? *text : "error: " + text.error().message.inEnglish();
}

}  // namespace

TEST_CASE("an archive's document is found by its content however it is packed") {
    const TemporaryFolder folder;
    const auto path = folder / "export.zip";
    const std::vector<std::pair<std::string, std::string>> files{
        {"apple_health_export/", ""},
        {"apple_health_export/.DS_Store", exportText},
        {"__MACOSX/apple_health_export/._export.xml", exportText},
        {"../../outside.xml", exportText},
        {"/rooted.xml", exportText},
        {"apple_health_export/export_cda.xml", "<?xml version=\"1.0\"?><ClinicalDocument/>"},
        {"apple_health_export/エクスポート.xml", exportText},
        {"apple_health_export/workout-routes/a.gpx", "<gpx version=\"1.1\"></gpx>"}};
    for (const Packing packing : {Packing::stored, Packing::deflated, Packing::zip64}) {
        for (const char flags : {'\0', '\x08'}) {  // with a data descriptor the local sizes do not count
            writeZip(path, files, packing);
            setFlags(path, flags);
            const auto found = findExports(path);
            REQUIRE(found);
            REQUIRE(found->size() == 1);
            CHECK(found->front().entry->name == "apple_health_export/エクスポート.xml");
            CHECK(found->front().size == exportText.size());
            CHECK(contentOf(found->front()) == exportText);
            const auto routes = routesOf(found->front());
            CHECK(routes->read("/workout-routes/a.gpx") == "<gpx version=\"1.1\"></gpx>");
            CHECK(!routes->read("/workout-routes/b.gpx"));
            CHECK(!routes->read("/export_cda.xml"));
        }
    }
    CHECK(!std::filesystem::exists(folder.path().parent_path().parent_path() / "outside.xml"));
}

TEST_CASE("an archive that cannot be read says why") {
    const TemporaryFolder folder;
    const auto path = folder / "export.zip";
    const auto kind = [&] {
        const auto found = findExports(path);
        REQUIRE(!found);
        CHECK(found.error().message.inEnglish().find(path.string()) != std::string::npos);
        return found.error().kind;
    };
    writeZip(path, {{"readme.txt", "Hello"}});
    CHECK(kind() == Kind::noExportInside);
    writeZip(path, {{"folder/", ""}});
    CHECK(kind() == Kind::noExportInside);
    writeZip(path, {});
    CHECK(kind() == Kind::notAnExport);
    writeZip(path, {{"export.xml", exportText}});
    const std::string whole = readFile(path);
    writeFile(path, whole.substr(0, whole.size() - 30));
    CHECK(kind() == Kind::damaged);
    writeFile(path, whole);
    setFlags(path, 1);
    CHECK(kind() == Kind::passwordProtected);

    // The bytes do not fit their checksum.
    writeZip(path, {{"export.xml", exportText + std::string(5000, ' ')}}, Packing::stored);
    std::string bytes = readFile(path);
    bytes[bytes.find("     ") + 3000] = 'x';
    writeFile(path, bytes);
    const auto found = findExports(path);
    REQUIRE(found);
    CHECK(contentOf(found->front()).starts_with("error: The archive"));
}

TEST_CASE("a file that is no export says what it looks like") {
    const TemporaryFolder folder;
    const auto path = folder / "file";
    struct Case {
        std::string_view bytes;
        Kind kind;
        std::string_view words;
    };
    for (const Case& each : std::vector<Case>{
             {"", Kind::empty, "is empty"},
             {" \n", Kind::notAnExport, "an empty text"},
             {"<!DOCTYPE html><html>", Kind::notAnExport, "a web page"},
             {"  {\"data\": []}", Kind::notAnExport, "a JSON document"},
             {"<?xml version='1.0'?>\n<ClinicalDocument>", Kind::notAnExport, "clinical document"},
             {"<?xml version='1.0'?><gpx>", Kind::notAnExport, "a GPX route"},
             {"<?xml version='1.0'?><other/>", Kind::notAnExport, "another XML document"},
             {"\x1F\x8B\x08", Kind::notAnExport, "a gzip file"},
             {"Dear diary", Kind::notAnExport, "something else"},
             {"\xFF\xFE<", Kind::unsupportedEncoding, "UTF-16"},
             {"<?xml version='1.0' encoding=\"ISO-8859-1\"?><HealthData>", Kind::unsupportedEncoding, "UTF-8"},
         }) {
        writeFile(path, each.bytes);
        const auto found = findExports(path);
        CAPTURE(each.words);
        REQUIRE(!found);
        CHECK(found.error().kind == each.kind);
        CHECK(found.error().message.inEnglish().find(each.words) != std::string::npos);
        CHECK(found.error().message.inEnglish().find(path.string()) != std::string::npos);
    }
    writeFile(path, std::string_view("<\0H\0", 4));
    CHECK(findExports(path).error().kind == Kind::unsupportedEncoding);
    writeFile(path, "PK\3\4 and no more");
    CHECK(findExports(path).error().kind == Kind::damaged);
    CHECK(findExports(folder / "absent").error().kind == Kind::notFound);
    CHECK(findExports("/dev/null").error().kind == Kind::unreadable);
    writeFile(path, "\xEF\xBB\xBF<!DOCTYPE HealthData>");
    CHECK(findExports(path));
}

TEST_CASE("a folder gives every export in it, with the routes beside each") {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "b/apple_health_export/workout-routes");
    const auto package = folder / "b/apple_health_export";
    writeFile(package / "export.xml", exportText);
    writeFile(package / "._export.xml", exportText);
    writeFile(package / "export_cda.xml", "<ClinicalDocument/>");
    writeFile(package / "workout-routes/a.gpx", "<?xml version='1.0'?><gpx/>");
    writeFile(package / "workout-routes/no.gpx", "not a route");
    writeFile(folder / "secret.gpx", "<gpx>secret</gpx>");
    writeZip(folder / "a.zip", {{"export.xml", exportText}});
    std::filesystem::create_symlink(package / "export.xml", folder / "link.xml");
    const auto found = findExports(folder.path());
    REQUIRE(found);
    REQUIRE(found->size() == 2);
    CHECK((*found)[0].entry);
    CHECK((*found)[1].file == package / "export.xml");
    const auto routes = routesOf((*found)[1]);
    CHECK(routes->read("/workout-routes/a.gpx") == "<?xml version='1.0'?><gpx/>");
    for (const std::string_view reference : {"/workout-routes/no.gpx", "/workout-routes/../../../secret.gpx",
                                             "../secret.gpx", "/", "", "/workout-routes/"}) {
        CHECK(!routes->read(reference));
    }

    std::filesystem::remove_all(folder / "b");
    std::filesystem::remove(folder / "a.zip");
    CHECK(findExports(folder.path()).error().kind == Kind::noExportInside);
    writeFile(folder / "a.zip", "PK\3\4 and no more");
    CHECK(findExports(folder.path()).error().kind == Kind::damaged);
}
