// The monitor: its shared instance, set-up, the intake of fixes and the
// alert cycle that follows every projection.
#include "TarvoFramework/Tarvo.h"

#include "TarvoFramework/Directories.h"
#include "TarvoFramework/Geometry.h"
#include "TarvoFramework/MainQueue.h"
#include "monitor/ZoneIndex.h"

namespace tarvo {

TarvoDelegate::~TarvoDelegate() = default;

const std::shared_ptr<Tarvo>& Tarvo::sharedManager() {
  // Never destroyed: the monitor lives until the process ends.
  static auto* sharedTarvoInstance = new std::shared_ptr<Tarvo>;
  if (!*sharedTarvoInstance) *sharedTarvoInstance = std::make_shared<Tarvo>();
  return *sharedTarvoInstance;
}

Tarvo::Tarvo() = default;
Tarvo::~Tarvo() = default;

void Tarvo::initializes() {
  getPolygons();
  const std::string path = resourceDirectory() + "/localcaution.mp3";
  setCurrentaudioPlayer(makeSoundPlayer(path));
  if (currentaudioPlayer_) currentaudioPlayer_->setNumberOfLoops(0);
}

void Tarvo::checkPointinPolygonLatitude(double latitude, double Longitude,
                                        double Speed, double Heading) {
  setSpeed(Speed);
  setHeading(Heading);
  setCurrentLocation(CLLocationCoordinate2DMake(latitude, Longitude));
  // Fed from the properties, heading before speed.
  getPredictedPoints(currentLocation(), heading(), speed());
  setIsProcessing(false);
}

void Tarvo::getPredictedPoints(CLLocationCoordinate2D coordinate,
                               double Heading, double Speed) {
  const PredictedPositions points =
      predictPositions(coordinate, Heading, Speed);
  pLeftCoordinate = points.left;
  pMiddleCoordinate = points.middle;
  pRightCoordinate = points.right;
  pmidLeftCoordinate = points.midLeft;
  pmidMiddleCoordinate = points.midMiddle;
  pmidRightCoordinate = points.midRight;

  if (processPointInPolygon()) {
    showchatlabel();
    // An absent name on either side never equals anything.
    const bool sameArea = lastPolygonName_ && currentPolygonName_ &&
                          *lastPolygonName_ == *currentPolygonName_;
    if (!sameArea) {
      setLastPolygonName(currentPolygonName_);
      // A sound that is playing is never cut short by a new area, and is
      // not restarted for it either.
      const bool playing =
          currentaudioPlayer_ && currentaudioPlayer_->isPlaying();
      if (!playing) {
        if (currentaudioPlayer_) {
          currentaudioPlayer_->setNumberOfLoops(isHazardArea_ ? 2 : 1);
        }
        queuePlayTask();
      }
    }
  } else {
    hidegpsChatLabel();
    if (currentaudioPlayer_ && currentaudioPlayer_->isPlaying())
      queueStopTask();
    setLastPolygonName(std::string());
    setCurrentPolygonName(std::string());
    setIsHazardArea(false);
  }
  // The second evaluation leaves the state that the host reads until the
  // next fix; its verdict is not used.
  processPointInPolygon();
}

void Tarvo::showchatlabel() {
  if (std::shared_ptr<TarvoDelegate> d = delegate()) {
    d->RunwayIncrusionOccurredAtRunway(currentPolygonName_, currentPolygonGuid_,
                                       onRunway_);
  }
}

void Tarvo::hidegpsChatLabel() {
  // The name is the area last announced by sound, the identifier whatever
  // the evaluation matched last: the monitor keeps no identifier of its own
  // for the area that was left.
  if (std::shared_ptr<TarvoDelegate> d = delegate()) {
    d->RunwayIncrusionRemovededFromRunway(lastPolygonName_,
                                          currentPolygonGuid_);
  }
  if (currentaudioPlayer_) currentaudioPlayer_->stop();
}

std::shared_ptr<Tarvo> Tarvo::keepAlive() { return weak_from_this().lock(); }

// The sound tasks read the monitor's player and names when they run, not
// when they are queued, and keep the monitor alive until then. A monitor
// not owned by a shared_ptr must outlive its queued tasks.
void Tarvo::queuePlayTask() {
  std::shared_ptr<Tarvo> owner = keepAlive();
  dispatchToMainQueue([this, owner] {
    if (currentaudioPlayer_) currentaudioPlayer_->play();
  });
}

void Tarvo::queueStopTask() {
  std::shared_ptr<Tarvo> owner = keepAlive();
  dispatchToMainQueue([this, owner] {
    // Emptied right after this task is queued, so it normally does nothing:
    // hidegpsChatLabel() has already stopped the sound.
    const bool named = lastPolygonName_ && !lastPolygonName_->empty();
    if (named && currentaudioPlayer_) currentaudioPlayer_->stop();
  });
}

}  // namespace tarvo
