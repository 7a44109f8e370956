/// Settings that follow the person to other devices.
#pragma once

#include <cstdint>
#include <string_view>

namespace pedvar {

class CloudSettings {
public:
    virtual ~CloudSettings() = default;

    virtual void pushDistanceUnit(std::string_view unit) = 0;
    virtual void pushStepColor(std::string_view color) = 0;
    virtual void pushAppLanguage(std::string_view code) = 0;
    virtual void pushTheme(std::string_view theme) = 0;
    virtual void pushDailyStepGoal(std::int64_t goal) = 0;
};

}  // namespace pedvar
