/// What the recorder says, for those who ask for it.
#pragma once

#include "platform/platform_log.h"

#include <string>
#include <vector>

namespace pedvar {

/// Keeps the texts. From the main thread.
class KeptLog : public PlatformLog {
public:
    std::vector<std::string> texts;

    void log(std::string_view, std::string_view, LogLevel, std::string_view message) override {
        texts.emplace_back(message);
    }
};

}  // namespace pedvar
