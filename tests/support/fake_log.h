/// A log that tests read.
#pragma once

#include "core/reflection.h"
#include "platform/platform_log.h"

#include <mutex>
#include <string>
#include <vector>

namespace pedvar {

class FakeLog : public PlatformLog {
public:
    std::vector<std::string> lines;  // "HKDiag/error: the message"

    void log(std::string_view, std::string_view category, LogLevel level, std::string_view message) override {
        const std::scoped_lock lock(mutex_);
        lines.push_back(std::string(category) + "/" + std::string(caseName(level)) + ": " + std::string(message));
    }

private:
    std::mutex mutex_;
};

}  // namespace pedvar
