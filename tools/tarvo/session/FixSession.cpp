#include "session/FixSession.h"

#include <TarvoFramework/Geometry.h>
#include <TarvoFramework/MainQueue.h>
#include <TarvoFramework/Tarvo.h>

#include <algorithm>

#include "IncursionSummary.h"

namespace tarvo::cli {
namespace {

FixRecord observe(const Tarvo& monitor, ReplayRecorder& recorder) {
  FixRecord r;
  r.notices = recorder.takeNotices();
  r.sounds = recorder.takeSounds();
  r.predicted = {monitor.pLeftCoordinate,      monitor.pMiddleCoordinate,
                 monitor.pRightCoordinate,     monitor.pmidLeftCoordinate,
                 monitor.pmidMiddleCoordinate, monitor.pmidRightCoordinate};
  if (!r.notices.empty() && r.notices.back().occupied) {
    const Notice& n = r.notices.back();
    r.area = AreaRef{n.name, n.guid, monitor.isHazardArea()};
    r.onRunway = n.onRunway;
  }
  return r;
}

}  // namespace

FixSession::FixSession(std::ostream& out, Options options)
    : out_(out),
      recorder_(std::make_shared<ReplayRecorder>()),
      printer_(out, options.print) {
  recorder_->install(options.realSound);
  const auto& monitor = Tarvo::sharedManager();
  monitor->setDelegate(recorder_);
  monitor->initializes();
  areas_ = monitor->polygons();
  if (!areas_) areas_ = std::make_shared<DMPolygonArray>();
  for (const auto& a : *areas_) {
    const std::string guid = a->polygonGUID().value_or("");
    byGuid_[guid] = a;
    const auto& ring = a->polygonPoints();
    if (a->polygonName().value_or("").find("HOLD SHORT") != std::string::npos ||
        !ring || ring->empty()) {
      continue;
    }
    Box box{guid, a->polygonName().value_or(""), 90, -90, 180, -180};
    for (const DMPoint& p : *ring) {
      box.south = std::min(box.south, p.latitude());
      box.north = std::max(box.north, p.latitude());
      box.west = std::min(box.west, p.longitude());
      box.east = std::max(box.east, p.longitude());
    }
    hazardBoxes_.push_back(box);
  }
}

// Whether the point itself lies in the area, tested as the monitor tests.
bool FixSession::contains(const std::string& guid, double lat,
                          double lon) const {
  auto it = byGuid_.find(guid);
  if (it == byGuid_.end() || !it->second->polygonPoints()) return false;
  const DMPointArray& ring = *it->second->polygonPoints();
  return pointInPolygon(ring.data(), static_cast<std::int32_t>(ring.size()),
                        static_cast<float>(lat), static_cast<float>(lon));
}

void FixSession::startFlight(const std::string& name) {
  flights_.push_back(name);
  printer_.startFlight(name);
  if (trace_.size() == 0) return;
  const auto& monitor = Tarvo::sharedManager();
  monitor->setLastPolygonName(std::nullopt);
  monitor->setCurrentPolygonName(std::nullopt);
  monitor->setCurrentPolygonGuid(std::nullopt);
  monitor->setIsHazardArea(false);
  monitor->setOnRunway(false);
  for (CLLocationCoordinate2D* c :
       {&monitor->pLeftCoordinate, &monitor->pMiddleCoordinate,
        &monitor->pRightCoordinate, &monitor->pmidLeftCoordinate,
        &monitor->pmidMiddleCoordinate, &monitor->pmidRightCoordinate}) {
    *c = CLLocationCoordinate2D{};
  }
  if (monitor->currentaudioPlayer()) monitor->currentaudioPlayer()->stop();
  mainQueue().runPending();
}

const FixRecord& FixSession::hand(const TrackFix& fix, double clockSeconds) {
  const auto& monitor = Tarvo::sharedManager();
  recorder_->beginFix(clockSeconds);
  monitor->checkPointinPolygonLatitude(fix.latitude, fix.longitude,
                                       fix.speedKmh, fix.headingDeg);
  mainQueue().runPending();  // the play and stop tasks of this fix
  FixRecord r = observe(*monitor, *recorder_);
  r.fix = fix;
  r.index = trace_.size();
  r.flight = flights_.empty() ? 0 : flights_.size() - 1;
  r.clockSeconds = clockSeconds;
  for (const Box& b : hazardBoxes_) {
    if (fix.latitude >= b.south && fix.latitude <= b.north &&
        fix.longitude >= b.west && fix.longitude <= b.east &&
        contains(b.guid, fix.latitude, fix.longitude)) {
      r.hazardsInside.push_back(b.name);
    }
  }
  if (r.area) {
    r.state = contains(r.area->guid, fix.latitude, fix.longitude)
                  ? FixState::Inside
                  : FixState::Near;
  }
  printer_.onFix(r);
  trace_.add(r);
  last_ = std::move(r);
  return last_;
}

void FixSession::printSummary(const std::vector<SkippedFix>& skipped) {
  printer_.printSummary(summarize(trace_, skipped, flights_), trace_);
  out_.flush();
}

}  // namespace tarvo::cli
