/// Where this process finds the kernel.
#pragma once

#include "linux/steps/iio_step_counter.h"

#include <cstdlib>

namespace pedvar {

/// PEDVAR_STEP_COUNTERS names another folder of devices than the kernel's.
inline KernelFiles kernelFiles() {
    KernelFiles files;
    if (const char* const devices = std::getenv("PEDVAR_STEP_COUNTERS")) files.devices = devices;
    return files;
}

}  // namespace pedvar
