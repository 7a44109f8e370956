/// The environment as a test wants it.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

namespace pedvar {

/// Sets a variable, or removes it when there is no value, for as long as this lives.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* before = getenv(name)) before_ = before;
        put(value);
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
    ~EnvironmentVariable() { put(before_); }

private:
    void put(const std::optional<std::string>& value) const {
        if (value) {
            setenv(name_, value->c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }

    const char* name_;
    std::optional<std::string> before_;
};

}  // namespace pedvar
