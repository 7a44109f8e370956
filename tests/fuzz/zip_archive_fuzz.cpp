/// The zip layer: survives any archive.
#include "core/check.h"
#include "linux/import/export_package.h"
#include "linux/import/route_files.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace pedvar;
    const int file = memfd_create("archive", MFD_CLOEXEC);
    check(file >= 0 && write(file, data, size) == static_cast<ssize_t>(size), "no file to test on");
    const std::filesystem::path archive = "/proc/self/fd/" + std::to_string(file);

    if (const auto entries = listZip(archive)) {
        for (const ZipEntry& entry : *entries) {
            if (const auto source = openZipEntry(archive, entry)) static_cast<void>(readAll(**source, 1 << 20));
        }
    }
    if (const auto documents = findExports(archive)) {
        for (const ExportDocument& document : *documents) {
            static_cast<void>(routesOf(document)->read("/workout-routes/route.gpx"));
        }
    }
    close(file);
    return 0;
}
