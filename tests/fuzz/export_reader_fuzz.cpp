/// The reader of export documents: survives any bytes, reads them the same in any windows, and agrees with Expat
/// on what that accepts.
#include "core/check.h"
#include "linux/import/export_interpreter.h"
#include "linux/import_traces.h"

#include <cstdint>

namespace {

using namespace pedvar;

struct Reading {
    Trace trace;
    bool isDocument = false;
    bool isComplete = false;
};

Reading readingOf(std::string_view document, std::size_t piece) {
    TextSource source(document, piece);
    Reading reading;
    const auto outcome = readExport(source, reading.trace);
    reading.isDocument = outcome.has_value();
    reading.isComplete = outcome && outcome->end == ReadOutcome::End::complete && outcome->repairedBytes == 0;
    return reading;
}

class Ignoring : public BatchSink, public RouteFiles {
public:
    bool take(ImportBatch batch) override {
        const auto rows = static_cast<std::int64_t>(batch.samples.size());
        check(batch.counts.read == rows + batch.counts.skipped.total(), "a record is neither read nor skipped");
        return true;
    }
    std::optional<std::string> read(std::string_view) override { return "<gpx/>"; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string document(reinterpret_cast<const char*>(data), size);
    const Reading whole = readingOf(document, document.size() + 1);
    const Reading pieces = readingOf(document, 3 + document.size() / 64);  // thousands of windows take too long
    check(whole.trace.text == pieces.trace.text && whole.trace.malformed == pieces.trace.malformed,
          "windows make a difference");

    Ignoring ignoring;
    TextSource source(document);
    ExportInterpreter interpreter(ignoring, ignoring, {.rowsPerBatch = 2, .bytesPerBatch = 1000});
    interpreter.finish(readExport(source, interpreter));

    // Without a prolog there is nothing that the reader skips and Expat believes.
    if (!document.starts_with("<HealthData>") && !document.starts_with("<HealthData ")) return 0;
    const auto expected = traceByExpat(document);
    if (!expected) return 0;
    check(whole.isDocument && whole.isComplete && whole.trace.malformed == 0,
          "a well-formed document was not accepted");
    check(whole.trace.text == *expected, "a well-formed document was read otherwise than by Expat");
    return 0;
}
