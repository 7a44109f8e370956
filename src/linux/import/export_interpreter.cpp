#include "linux/import/export_interpreter.h"

#include "linux/import/source_identity.h"

#include <cmath>
#include <utility>

namespace pedvar {

namespace {

constexpr std::size_t longestName = 1024;               // bytes of a type, a unit, a source or a device
constexpr std::size_t heavyWorkouts = 4 * 1024 * 1024;  // bytes of routes and texts that make a batch of their own

struct RecordAttributes {
    const Attribute* type = nullptr;
    const Attribute* unit = nullptr;
    const Attribute* value = nullptr;
    const Attribute* sourceName = nullptr;
    const Attribute* device = nullptr;
    const Attribute* startDate = nullptr;
    const Attribute* endDate = nullptr;
};

/// Sorted out by length first: an export holds millions of these.
RecordAttributes recordAttributes(const Tag& tag) {
    RecordAttributes found;
    for (const Attribute& attribute : tag.attributes) {
        const std::string_view name = attribute.name;
        switch (name.size()) {
            case 4:
                if (name == "type") found.type = &attribute;
                if (name == "unit") found.unit = &attribute;
                break;
            case 5:
                if (name == "value") found.value = &attribute;
                break;
            case 6:
                if (name == "device") found.device = &attribute;
                break;
            case 7:
                if (name == "endDate") found.endDate = &attribute;
                break;
            case 9:
                if (name == "startDate") found.startDate = &attribute;
                break;
            case 10:
                if (name == "sourceName") found.sourceName = &attribute;
                break;
            default:
                break;
        }
    }
    return found;
}

std::string textOf(const Attribute* attribute) {
    std::string scratch;
    return attribute == nullptr ? std::string() : std::string(valueOf(*attribute, scratch));
}

bool isTooLong(const Attribute* attribute) {
    return attribute != nullptr && attribute->raw.size() > longestName;
}

bool saysHandTyped(const Tag& metadata) {
    const Attribute* const key = metadata.find("key");
    const Attribute* const value = metadata.find("value");
    return key != nullptr && value != nullptr && textOf(key) == "HKWasUserEntered" && textOf(value) == "1";
}

}  // namespace

ExportInterpreter::ExportInterpreter(BatchSink& sink, RouteFiles& routes, Limits limits)
    : sink_(&sink), routes_(&routes), limits_(limits) {}

ExportInterpreter::Element ExportInterpreter::elementNamed(std::string_view name) {
    if (name == "Record") return Element::record;
    if (name == "MetadataEntry") return Element::metadataEntry;
    if (name == "Location") return Element::location;
    if (name == "Workout") return Element::workout;
    if (name == "WorkoutStatistics") return Element::workoutStatistics;
    if (name == "WorkoutActivity") return Element::workoutActivity;
    if (name == "WorkoutRoute") return Element::workoutRoute;
    if (name == "FileReference") return Element::fileReference;
    if (name == "Me") return Element::me;
    if (name == "ExportDate") return Element::exportDate;
    return Element::other;
}

void ExportInterpreter::startElement(const Tag& tag) {
    const Element element = elementNamed(tag.name);
    const Element parent = path_.empty() ? Element::other : path_.back();
    path_.push_back(element);
    switch (element) {
        case Element::record:
            finishRecord();
            record_ = readRecord(tag);
            break;
        case Element::metadataEntry:
            if (parent == Element::record && record_ && *record_ && saysHandTyped(tag))
                (*record_)->isHandTyped = true;
            if (parent == Element::workout || parent == Element::workoutActivity) startInWorkout(parent, tag);
            break;
        case Element::workout:
            finishRecord();
            startWorkout(tag);
            break;
        case Element::me:
            readPerson(tag);
            break;
        case Element::exportDate:
            if (const auto date = dates_.parse(textOf(tag.find("value")))) exportDate_ = date;
            break;
        default:
            if (workout_) startInWorkout(parent, tag);
            break;
    }
}

/// An element inside a workout, whose parent decides what it is about.
void ExportInterpreter::startInWorkout(Element parent, const Tag& tag) {
    if (!workout_) return;
    const Element element = path_.back();
    const auto level = parent == Element::workout ? WorkoutReader::Level::workout : WorkoutReader::Level::part;
    const bool isOfWorkout = parent == Element::workout || parent == Element::workoutActivity;
    if (element == Element::metadataEntry) workout_->addMetadata(tag, level);
    if (element == Element::workoutStatistics && isOfWorkout) workout_->addStatistic(tag, level);
    if (element == Element::workoutActivity) workout_->addPart();
    if (element == Element::fileReference && parent == Element::workoutRoute) workout_->addRouteReference(tag);
    if (element == Element::location && parent == Element::workoutRoute) workout_->addLocation(tag, dates_);
}

void ExportInterpreter::endElement(std::string_view) {
    const Element element = path_.back();
    path_.pop_back();
    if (element == Element::record) finishRecord();
    if (element == Element::workoutRoute && workout_) workout_->endRoute();
    if (element == Element::workout) finishWorkout();
}

void ExportInterpreter::malformedMarkup() {
    ++batch_.counts.read;
    ++batch_.counts.skipped[SkipReason::malformed];
}

ExportInterpreter::RecordResult ExportInterpreter::readRecord(const Tag& tag) {
    const RecordAttributes attributes = recordAttributes(tag);
    if (attributes.type == nullptr) return std::unexpected(SkipReason::missingAttribute);
    if (isTooLong(attributes.type) || isTooLong(attributes.unit) || isTooLong(attributes.sourceName) ||
        isTooLong(attributes.device)) {
        return std::unexpected(SkipReason::tooVaried);
    }
    Series& series = seriesOf(*attributes.type, attributes.unit);
    if (series.skip) return std::unexpected(*series.skip);
    if (attributes.sourceName == nullptr || attributes.value == nullptr || attributes.startDate == nullptr ||
        attributes.endDate == nullptr) {
        return std::unexpected(SkipReason::missingAttribute);
    }
    std::string scratch;
    const auto value = parseExportNumber(valueOf(*attributes.value, scratch));
    if (!value) return std::unexpected(SkipReason::badValue);
    const double kept = series.unit.toKept(*value);
    if (!std::isfinite(kept)) return std::unexpected(SkipReason::badValue);
    const auto start = dates_.parse(valueOf(*attributes.startDate, scratch));
    const auto end = dates_.parse(valueOf(*attributes.endDate, scratch));
    if (!start || !end || *end < *start) return std::unexpected(SkipReason::badDate);
    return OpenRecord{
        .series = &series,
        .source = &sourceOf(*attributes.sourceName, attributes.device),
        .row = {.series = 0, .source = 0, .start = *start, .duration = *end - *start, .value = kept},
    };
}

void ExportInterpreter::finishRecord() {
    if (!record_) return;
    ++batch_.counts.read;
    const auto row = *record_ ? completed(**record_) : std::unexpected(record_->error());
    record_.reset();
    if (row) {
        batch_.samples.push_back(*row);
    } else {
        ++batch_.counts.skipped[row.error()];
    }
}

std::expected<SampleRow, SkipReason> ExportInterpreter::completed(const OpenRecord& record) {
    Series& series = *record.series;
    Source& source = *record.source;
    auto& sourceNumber = record.isHandTyped ? source.typed : source.measured;
    if (!series.number) series.number = seriesNumbers_.number(series.name, batch_.newSeries);
    if (!sourceNumber) {
        sourceNumber = sourceNumbers_.number(
            record.isHandTyped ? handTyped(source.description) : source.description, batch_.newSources);
    }
    if (!series.number || !sourceNumber) return std::unexpected(SkipReason::tooVaried);
    SampleRow row = record.row;
    row.series = *series.number;
    row.source = *sourceNumber;
    return row;
}

ExportInterpreter::Series& ExportInterpreter::seriesOf(const Attribute& type, const Attribute* unit) {
    const std::string_view rawUnit = unit == nullptr ? std::string_view{} : unit->raw;
    return seriesCache_.find(type.raw, rawUnit, [&] {
        Series series{.skip = {}, .name = {.type = textOf(&type), .unit = {}}, .unit = {}, .number = {}};
        const std::string writtenUnit = textOf(unit);
        if (!isQuantityType(series.name.type)) {
            series.skip = SkipReason::notAQuantity;
        } else if (writtenUnit.empty()) {
            series.skip = SkipReason::missingAttribute;
        } else if (const auto kept = keptUnit(series.name.type, writtenUnit)) {
            series.unit = *kept;
            series.name.unit = kept->symbol;
        } else {
            series.skip = SkipReason::unknownUnit;
        }
        return series;
    });
}

ExportInterpreter::Source& ExportInterpreter::sourceOf(const Attribute& name, const Attribute* device) {
    const std::string_view rawDevice = device == nullptr ? std::string_view{} : withoutAddress(device->raw);
    return sourceCache_.find(name.raw, rawDevice, [&] {
        return Source{.description = describeSource(textOf(&name), textOf(device)), .measured = {}, .typed = {}};
    });
}

void ExportInterpreter::startWorkout(const Tag& tag) {
    finishWorkout();
    workout_.emplace(tag, dates_);
    const Attribute* const name = tag.find("sourceName");
    const Attribute* const device = tag.find("device");
    if (name != nullptr && !isTooLong(name) && !isTooLong(device)) {
        workoutSource_ = sourceOf(*name, device).description;
    }
}

void ExportInterpreter::finishWorkout() {
    if (!workout_) return;
    ++batch_.counts.workoutsRead;
    auto [row, routesMissing, bytes] = workout_->finish(*routes_);
    const auto description = std::exchange(workoutSource_, {});
    const bool isTyped = workout_->isHandTyped();
    workout_.reset();
    const auto source =
        row && description
            ? sourceNumbers_.number(isTyped ? handTyped(*description) : *description, batch_.newSources)
            : std::nullopt;
    if (!source) {
        ++batch_.counts.workoutsSkipped;
        return;
    }
    row->source = *source;
    batch_.counts.routesMissing += routesMissing;
    batch_.workouts.push_back(std::move(*row));
    batch_.workoutBytes += bytes;
    if (batch_.workoutBytes >= heavyWorkouts) handOver();
}

void ExportInterpreter::readPerson(const Tag& tag) {
    person_.dateOfBirth = parseExportDay(textOf(tag.find("HKCharacteristicTypeIdentifierDateOfBirth")));
    const std::string sex = textOf(tag.find("HKCharacteristicTypeIdentifierBiologicalSex"));
    if (sex == "HKBiologicalSexMale") person_.sex = Gender::male;
    if (sex == "HKBiologicalSexFemale") person_.sex = Gender::female;
    if (sex == "HKBiologicalSexOther") person_.sex = Gender::other;
}

bool ExportInterpreter::wantsMore(std::uint64_t bytesRead) {
    batch_.bytesRead = bytesRead;
    if (batch_.samples.size() >= limits_.rowsPerBatch || bytesRead - batchStart_ >= limits_.bytesPerBatch)
        handOver();
    return isWanted_;
}

void ExportInterpreter::handOver() {
    const std::uint64_t bytesRead = batch_.bytesRead;
    const std::size_t usualRows = batch_.samples.capacity();
    isWanted_ = isWanted_ && sink_->take(std::exchange(batch_, {}));
    batch_.samples.reserve(usualRows);
    batch_.bytesRead = bytesRead;
    batchStart_ = bytesRead;
}

void ExportInterpreter::finish(const ImportResult<ReadOutcome>& outcome) {
    if (outcome) batch_.counts.repairedBytes = outcome->repairedBytes;
    batch_.end = DocumentEnd{outcome, person_, exportDate_};
    handOver();
}

}  // namespace pedvar
