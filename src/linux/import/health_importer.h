/// Reading health exports into the store.
#pragma once

#include "linux/health/sample_writer.h"
#include "linux/import/import_report.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <stop_token>

namespace pedvar {

/// How far an import is.
struct ImportProgress {
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;      // of all documents, unpacked
    std::int64_t rows = 0;             // read so far
    std::optional<double> totalsDone;  // 0 to 1 while the totals are made, at the end
};

/// Imports in batches, each whole or not at all, reading ahead on a thread of its own. An import that was broken
/// off is completed by doing it again.
class HealthImporter {
public:
    explicit HealthImporter(SampleWriter& writer) : writer_(&writer) {}

    /// Imports all documents in `inputs`, files, archives or folders, one after the other; one that cannot be read
    /// does not keep the others. Blocks; `progress` is called on the calling thread.
    ImportReport run(std::span<const std::filesystem::path> inputs,
                     const std::function<void(const ImportProgress&)>& progress = {}, std::stop_token stop = {});

private:
    SampleWriter* writer_;
};

}  // namespace pedvar
