/// Settings that only this program has.
#pragma once

#include "core/record.h"
#include "linux/location/gpsd_report.h"

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

/// The absolute path of a folder, or none.
class FolderPath {
public:
    static std::optional<FolderPath> fromText(std::string_view text);
    const std::string& text() const { return text_; }
    bool operator==(const FolderPath&) const = default;

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
    // How gpsd's accuracies become those that the recorder judges fixes by.
    double gpsHorizontalFactor = AccuracyFactors().horizontal;
    double gpsVerticalFactor = AccuracyFactors().vertical;
    WebAddress updateAddress = {};  // of the service that knows the newest version
    WebAddress updatePage = {};     // what the identifier of the application is put behind
    WebAddress reviewPage = {};
    FolderPath dropFolder = {};  // what appears there is imported
    bool waterReminders = true;

    using Fields =
        FieldList<&LinuxSettings::colorOutput, &LinuxSettings::gpsHorizontalFactor,
                  &LinuxSettings::gpsVerticalFactor, &LinuxSettings::updateAddress, &LinuxSettings::updatePage,
                  &LinuxSettings::reviewPage, &LinuxSettings::dropFolder, &LinuxSettings::waterReminders>;
    bool operator==(const LinuxSettings&) const = default;
};
static_assert(isComplete<LinuxSettings>);

}  // namespace pedvar
