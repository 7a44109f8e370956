/// A small history of steps to look at.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace pedvar {

/// The moment from which the tests look: Wednesday evening, 1 May 2024 in Berlin.
inline constexpr const char* sampleNow = "2024-05-01T18:30";

/// Makes a health store in `folder` with three and a half weeks up to 1 May 2024: a phone, and a watch that counts
/// the same hours but was left at home on two days.
void writeSampleStore(const std::filesystem::path& folder);

/// A GPX file of a round walk of 5 km on the morning of 30 April 2024.
std::string sampleTrack();

/// Adds a weight every third day of April and two heights to the store in `folder`.
void addBodySamples(const std::filesystem::path& folder);

/// Adds three drinks to the store in `folder`, one of them behind the moment of looking, and water of another
/// source.
void addDrinks(const std::filesystem::path& folder);

/// A health export of one day with a record that has no number.
std::string sampleExport();

}  // namespace pedvar
