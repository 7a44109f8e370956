/// Writes inputs that the fuzz targets begin with: DIR/TARGET/NAME.
#include "recording/checkpoint_store.h"
#include "routes/gpx_writer.h"
#include "support/fake_document_parts.h"
#include "support/sample_sessions.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <string>

using namespace pedvar;

namespace {

constexpr const char* healthExport = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE HealthData [
<!ELEMENT HealthData (ExportDate,Me,Record*)>
]>
<HealthData locale="en_GB">
 <ExportDate value="2024-05-01 18:00:00 +0200"/>
 <Me HKCharacteristicTypeIdentifierDateOfBirth="1990-06-15"/>
 <Record type="HKQuantityTypeIdentifierStepCount" sourceName="Ada&#8217;s Phone" unit="count"
  startDate="2024-05-01 08:00:00 +0200" endDate="2024-05-01 08:10:00 +0200" value="900"/>
 <Workout workoutActivityType="HKWorkoutActivityTypeWalking" duration="30" durationUnit="min" sourceName="Ada"
  startDate="2024-05-01 09:00:00 +0200" endDate="2024-05-01 09:30:00 +0200">
  <MetadataEntry key="HKIndoorWorkout" value="0"/>
  <WorkoutRoute><FileReference path="/workout-routes/route.gpx"/></WorkoutRoute>
 </Workout>
</HealthData>
)";

std::string gpx() {
    std::vector<CLLocation> points;
    for (const LocationPoint& point : sampleRoute(5)) points.push_back(locationOf(point));
    return writeGPX(points, "Tom & Jerry", "Walking", points.front().timestamp);
}

/// A document in parts as the target for sessions takes it: the frame, then the texts of the list.
std::string inParts(const FakeDocumentParts& documents, const char* key, const std::string& list) {
    std::string result = documents.frame(key).value();
    for (const Part& part : documents.list(list)) result += '\0' + part.text;
    return result;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    const std::filesystem::path folder = arguments[1];
    for (const char* target : {"export_reader", "gpx", "session"}) create_directories(folder / target);
    writeFile(folder / "export_reader/export.xml", healthExport);
    writeFile(folder / "gpx/walk.gpx", gpx());

    FakeDocumentParts documents;
    SessionHistory history(documents);
    static_cast<void>(history.add(sampleSession(2)));
    static_cast<void>(history.add(sampleSession(3, 0)));
    CheckpointStore checkpoints(documents, history);
    static_cast<void>(checkpoints.save(sampleCheckpoint(1, 3), CheckpointTiming::forced));
    writeFile(folder / "session/history", inParts(documents, sessionsKey, sessionsKey));
    writeFile(folder / "session/history.json", documents.document(sessionsKey));
    writeFile(folder / "session/checkpoint", inParts(documents, inProgressKey, routeList(uuidOf(1))));
    writeFile(folder / "session/checkpoint.json", documents.document(inProgressKey));
}
