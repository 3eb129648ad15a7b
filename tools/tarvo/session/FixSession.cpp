#include "session/FixSession.h"

#include <TarvoFramework/Geometry.h>
#include <TarvoFramework/MainQueue.h>
#include <TarvoFramework/Tarvo.h>

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
  for (const auto& a : *areas_) byGuid_[a->polygonGUID().value_or("")] = a;
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

const FixRecord& FixSession::hand(const TrackFix& fix, double clockSeconds) {
  const auto& monitor = Tarvo::sharedManager();
  recorder_->beginFix(clockSeconds);
  monitor->checkPointinPolygonLatitude(fix.latitude, fix.longitude,
                                       fix.speedKmh, fix.headingDeg);
  mainQueue().runPending();  // the play and stop tasks of this fix
  FixRecord r = observe(*monitor, *recorder_);
  r.fix = fix;
  r.index = records_.size();
  r.clockSeconds = clockSeconds;
  if (r.area) {
    r.state = contains(r.area->guid, fix.latitude, fix.longitude)
                  ? FixState::Inside
                  : FixState::Near;
  }
  printer_.onFix(r);
  records_.push_back(std::move(r));
  return records_.back();
}

void FixSession::printSummary(const std::vector<SkippedFix>& skipped) {
  printer_.printSummary(summarize(records_, skipped), records_);
  out_.flush();
}

}  // namespace tarvo::cli
