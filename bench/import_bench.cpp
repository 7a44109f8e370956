/// A whole import against what Expat needs only to parse the same bytes.
///
/// import_bench EXPORT.xml: a document on disk, some hundred megabytes for figures that mean something.
#include "bench.h"
#include "linux/health/health_database.h"
#include "linux/health/sample_writer.h"
#include "linux/import/health_importer.h"

#include <expat.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace pedvar;
using namespace pedvar::bench;
namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& reason) {
    std::fprintf(stderr, "import_bench: %s\n", reason.c_str());
    std::exit(1);
}

/// Expat with handlers that do nothing, from the file in windows.
void parseBare(const fs::path& document) {
    std::ifstream file(document, std::ios::binary);
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    constexpr int window = 1 << 18;
    bool isLast = false;
    while (!isLast) {
        void* const buffer = XML_GetBuffer(parser, window);
        file.read(static_cast<char*>(buffer), window);
        isLast = file.gcount() < window;
        if (XML_ParseBuffer(parser, static_cast<int>(file.gcount()), isLast ? 1 : 0) == XML_STATUS_ERROR) {
            fail(XML_ErrorString(XML_GetErrorCode(parser)));
        }
    }
    XML_ParserFree(parser);
}

ImportReport import(const fs::path& document, const fs::path& store) {
    HealthDatabase database(store);
    SampleWriter writer(database);
    const std::vector<fs::path> inputs{document};
    ImportReport report = HealthImporter(writer).run(inputs, [](const ImportProgress&) {}, {});
    if (report.failure) fail(report.failure->message.inEnglish());
    return report;
}

double megabytes(std::uintmax_t bytes) {
    return static_cast<double>(bytes) / 1e6;
}

std::string sized(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace

int main(int count, char** words) {
    if (count != 2) {
        std::fprintf(stderr, "usage: import_bench EXPORT.xml\n");
        return 2;
    }
    const fs::path document = words[1];
    std::string folder = (fs::temp_directory_path() / "pedvar-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) fail("there is no folder to write to");
    const fs::path store = fs::path(folder) / "health.sqlite";

    std::int64_t added = 0;
    std::int64_t addedAgain = 0;
    const auto times = inTurn(5, {
                                     [&] { parseBare(document); },
                                     [&] {
                                         fs::remove(store);
                                         added = import(document, store).counts.added;
                                     },
                                     [&] { addedAgain += import(document, store).counts.added; },
                                 });
    if (addedAgain != 0) fail("importing again added samples");
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const double size = megabytes(fs::file_size(document));
    row("import, indexed and with totals, against bare Expat over the same bytes", times[1] / times[0], 0.35,
        milliseconds(times[1]) + " to " + milliseconds(times[0]) + sized(", %.0f MB", size));
    row("importing again against the first time", times[2] / times[1], 1.0,
        milliseconds(times[2]) + " to " + milliseconds(times[1]));
    row("bytes on disk a record, of 48",
        static_cast<double>(fs::file_size(store)) / static_cast<double>(added) / 48, 1,
        sized("%.1f bytes", static_cast<double>(fs::file_size(store)) / static_cast<double>(added)));
    row("peak memory, of 100 MiB", static_cast<double>(usage.ru_maxrss) / 102'400, 1,
        sized("%.0f MiB", static_cast<double>(usage.ru_maxrss) / 1024));
    fs::remove_all(folder);
}
