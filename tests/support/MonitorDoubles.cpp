#include "support/MonitorDoubles.h"

#include <sstream>

namespace tarvo::testing {

namespace {
std::string text(const OptionalString& s) {
  return s ? '"' + *s + '"' : "absent";
}
}  // namespace

std::string describe(const Notice& n) {
  std::ostringstream out;
  if (n.occurred) {
    out << "occurred(" << text(n.name) << ", " << text(n.guid) << ", "
        << (n.onRunway ? "on runway" : "not on runway") << ")";
  } else {
    out << "removed(" << text(n.name) << ", " << text(n.guid) << ")";
  }
  return out.str();
}

std::string describe(const std::vector<Notice>& notices) {
  std::string out;
  for (const Notice& n : notices) out += describe(n) + "\n";
  return out;
}

Notice occurred(OptionalString name, OptionalString guid, bool onRunway) {
  return Notice{true, std::move(name), std::move(guid), onRunway};
}

Notice removed(OptionalString name, OptionalString guid) {
  return Notice{false, std::move(name), std::move(guid), false};
}

void RecordingDelegate::RunwayIncrusionOccurredAtRunway(
    const OptionalString& name, const OptionalString& guid, bool onRunway) {
  if (listens_ != Listens::RemovedOnly)
    notices.push_back(occurred(name, guid, onRunway));
}

void RecordingDelegate::RunwayIncrusionRemovededFromRunway(
    const OptionalString& name, const OptionalString& guid) {
  if (listens_ != Listens::OccurredOnly) notices.push_back(removed(name, guid));
}

void ScriptedPlayer::setNumberOfLoops(int n) {
  loops = n;
  ++loopSettings;
}

bool ScriptedPlayer::play() {
  ++plays;
  loopsAtPlay.push_back(loops);
  remainingTicks_ = (loops < 0 ? 1 : loops + 1) * ticksPerPlay_;
  return true;
}

void ScriptedPlayer::stop() {
  ++stops;
  if (stopTakesEffect) remainingTicks_ = 0;
}

std::size_t HeldExecutor::runAll() {
  std::size_t ran = 0;
  while (!tasks.empty()) {
    Task task = std::move(tasks.front());
    tasks.pop_front();
    task();
    ++ran;
  }
  return ran;
}

std::shared_ptr<DMPointArray> box(double south, double west, double north,
                                  double east) {
  return std::make_shared<DMPointArray>(
      DMPointArray{{south, west}, {south, east}, {north, east}, {north, west}});
}

std::shared_ptr<DMPolygon> area(OptionalString name, OptionalString guid,
                                std::shared_ptr<DMPointArray> ring) {
  auto polygon = std::make_shared<DMPolygon>();
  polygon->setPolygonName(std::move(name));
  polygon->setPolygonGUID(std::move(guid));
  polygon->setPolygonPoints(std::move(ring));
  return polygon;
}

}  // namespace tarvo::testing
