/// Settings that only this program has.
#pragma once

#include "core/record.h"

#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

/// An address of HTTP or HTTPS, or none.
class WebAddress {
public:
    static std::optional<WebAddress> fromText(std::string_view text);
    const std::string& text() const { return text_; }
    bool operator==(const WebAddress&) const = default;

private:
    std::string text_;
};

enum class ColorOutput {
    automatic,  // on a terminal that wants them
    always,
    never,
};

struct LinuxSettings {
    ColorOutput colorOutput = ColorOutput::automatic;
    WebAddress updateAddress = {};  // of the service that knows the newest version
    WebAddress updatePage = {};     // what the identifier of the application is put behind
    WebAddress reviewPage = {};

    using Fields = FieldList<&LinuxSettings::colorOutput, &LinuxSettings::updateAddress,
                             &LinuxSettings::updatePage, &LinuxSettings::reviewPage>;
    bool operator==(const LinuxSettings&) const = default;
};
static_assert(isComplete<LinuxSettings>);

}  // namespace pedvar
