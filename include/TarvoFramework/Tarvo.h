/// @file
/// The runway-incursion monitor.
#ifndef TARVOFRAMEWORK_TARVO_H_
#define TARVOFRAMEWORK_TARVO_H_

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "TarvoFramework/Coordinate.h"
#include "TarvoFramework/DMPolygon.h"
#include "TarvoFramework/SoundPlayer.h"
#include "TarvoFramework/TarvoDelegate.h"
#include "TarvoFramework/export.h"

namespace tarvo {

struct ProbeSet;
struct AreaVisit;
class ZoneIndex;

/// The monitor the host talks to: it keeps the registered areas in memory,
/// takes every position fix, looks 2 and 4 seconds ahead and tells its
/// delegate when the aircraft is in, or about to enter, an area.
///
/// Use:
///   auto& monitor = tarvo::Tarvo::sharedManager();
///   monitor->setDelegate(myDelegate);         // held weakly
///   monitor->initializes();                   // loads areas, makes the player
///   monitor->addPolygons("lon,lat lon,lat ...", "guid-1", "RWY 12R", false);
///   monitor->getPolygons();                   // new areas count from here on
///   monitor->checkPointinPolygonLatitude(lat, lon, speedKmh, headingDeg);
///
/// Kinds of area: an area whose name contains the exact, case-sensitive text
/// "HOLD SHORT" is a hold-short area; every other area (the empty name
/// included) is a hazard area; an area with an absent name is hold-short.
///
/// Ownership: the shared instance lives until the process ends. The monitor
/// holds every property strongly except the delegate, which it holds weakly.
/// Objects handed to a writer are shared, not copied.
///
/// Threading: the monitor starts no thread and takes no lock. Call it from
/// one thread. Delegate notices arrive synchronously on that thread; only the
/// tasks that start and stop the sound go to the main-queue executor
/// (MainQueue.h), and the host must run them on that same thread, because
/// they read the monitor's state when they run.
///
/// Speed: the evaluation finds the areas near the aircraft through an index
/// of the list, with the same results as testing every area. The index
/// follows a list that is replaced (setPolygons, getPolygons) or resized by
/// itself; a host that edits the list or its areas in place reports it with
/// polygonsEdited() (AreaEdits.h).
///
/// Failures: nothing throws, except that an exception thrown by a host's
/// delegate, sound player or main-queue executor passes through the call
/// that invoked it, with the fix half processed. A missing sound file leaves
/// the monitor silent but still notifying; an unavailable store gives an
/// empty area list. The monitor itself logs nothing; the store it writes to
/// logs its inserts and their failures (Log.h).
///
/// Units everywhere: latitudes and longitudes in decimal degrees (north and
/// east positive), speeds in km/h, headings in degrees clockwise from true
/// north. The monitor validates, clamps and wraps none of them.
class TARVO_EXPORT Tarvo : public std::enable_shared_from_this<Tarvo> {
 public:
  /// The process-wide monitor, made on the first call (not initialised: call
  /// initializes()). Never null; the same object on every call. Not safe
  /// against two threads making the first call at once.
  /// @return a reference to the process's own shared pointer, valid until the
  ///         process ends; copy it to share ownership.
  static const std::shared_ptr<Tarvo>& sharedManager();

  /// A fresh monitor: every coordinate (0, 0), every number 0, every flag
  /// false and every object absent. Hosts normally use sharedManager(); a
  /// separate instance must be owned by a std::shared_ptr, so that queued
  /// sound tasks can keep it alive (one that is not must outlive them). It
  /// shares the store, the main queue, the log and the player factory with
  /// every other monitor: those are process-wide.
  Tarvo();
  ~Tarvo();
  Tarvo(const Tarvo&) = delete;
  Tarvo& operator=(const Tarvo&) = delete;

  /// Loads the stored areas (getPolygons), then makes the caution-sound player
  /// from "<resource directory>/localcaution.mp3" with the current player
  /// factory and sets its loop count to 0. A missing or undecodable file
  /// leaves currentaudioPlayer() null, silently; so does a factory that
  /// throws. Calling it again reloads the areas and replaces the player.
  /// Touches nothing else. Call it on the monitor's thread; it blocks for
  /// the store's reads and the sound file's decoding.
  void initializes();

  /// --- Registry: areas in the store -------------------------------------

  /// Replaces polygons() with a new list of every stored area, in store order,
  /// each with its vertices in the order they were given. An unavailable store
  /// gives an empty list. The only call of the registry that changes
  /// polygons(). The monitor holds the new list strongly; a list or record
  /// handed out earlier stays valid for whoever still holds it. Reads in one
  /// transaction, so another process writing meanwhile is seen whole or not
  /// at all; logs nothing.
  void getPolygons();

  /// Stores an area. points: "lon,lat lon,lat ..." with single blanks between
  /// vertices; pieces after the second in a vertex are ignored; empty or
  /// comma-less elements are skipped; the texts are stored unvalidated and read
  /// as numbers later (a text that is no number reads as 0). With
  /// isforceReplace, an area already stored under the GUID is deleted first.
  /// Returns false only when the GUID is (still) stored; true otherwise, also
  /// when the store failed to write (see the log, or group the call in a
  /// StoreWriteBatch, whose commit() tells). The writes are one transaction:
  /// the area is stored whole or, after a disk or file failure (full disk,
  /// I/O error, lock), not at all; a kill mid-call leaves it absent. Refuse
  /// names and GUIDs for which storeTextProblem() (StoreText.h) gives a
  /// reason before calling: the store's SQL misreads them.
  /// The change reaches the monitoring only after getPolygons().
  /// The store logs the SQL text of every insert (one line for the area, one
  /// per vertex) and each insert's failure.
  /// @param points the vertices as text, read during the call and not kept;
  ///        an empty text stores an area with no vertex.
  /// @param forPolygonGUID the host's identifier, compared byte for byte.
  /// @param PolygonName stored as given; decides the area's kind once loaded.
  /// @param isforceReplace true: replace an area stored under the GUID.
  /// @return false when the GUID is stored (nothing written); true otherwise.
  bool addPolygons(const std::string& points, const std::string& forPolygonGUID,
                   const std::string& PolygonName, bool isforceReplace);

  /// Deletes the area stored under the GUID (an unknown GUID succeeds), its
  /// vertices and its row in one transaction. Returns false when the store
  /// failed (not open, or a delete failed; not logged). A failure
  /// to commit at the end (full disk, lock) is logged and undoes the call
  /// even when it returned true: group it in a StoreWriteBatch to know.
  /// Takes effect after getPolygons(). A GUID that names a store column
  /// (storeTextProblem()) matches every area.
  /// @param guid the area's identifier, read during the call; when several
  ///        areas share it, only the one with the highest id is deleted.
  bool removePolygon(const std::string& guid);

  /// Deletes every area, in one transaction. Returns false when the store
  /// failed (not open, or a delete failed; not logged). A failure
  /// to commit at the end (full disk, lock) is logged and undoes the call
  /// even when it returned true: group it in a StoreWriteBatch to know.
  /// Takes effect after getPolygons().
  bool removeAllPolygons();

  /// --- Monitoring ----------------------------------------------------------

  /// Hands in one fix: latitude and longitude in degrees, speed in km/h,
  /// heading in degrees clockwise from true north. Nothing is checked or
  /// converted; NaN and out-of-range values are used as given. Records the
  /// fix, projects the six look-ahead points, evaluates the areas, notifies
  /// the delegate and queues the sound tasks, then sets isProcessing() false.
  /// One delegate notice per fix (to a live delegate), delivered before it
  /// returns.
  /// Call it on the monitor's thread only, and not from a delegate notice.
  /// @param latitude degrees, north positive; NaN lies in no area.
  /// @param Longitude degrees, east positive; NaN lies in no area; not
  ///        wrapped at +-180.
  /// @param Speed km/h; at or below zero (also -infinity) the look-ahead
  ///        points stay on the fix; NaN makes them NaN, so only the fix
  ///        itself can match an area.
  /// @param Heading degrees clockwise from true north, used as given, not
  ///        normalised (see predictPositions() in Geometry.h); NaN makes the
  ///        look-ahead points NaN.
  void checkPointinPolygonLatitude(double latitude, double Longitude,
                                   double Speed, double Heading);

  /// The per-fix work: projects the six points into the coordinate members
  /// below, then runs the alert cycle (evaluate, notify, start or stop the
  /// sound, evaluate once more). Note the argument order: heading, then speed.
  /// It does not record the fix: currentLocation(), speed() and heading()
  /// keep what they were, and the evaluation tests currentLocation().
  /// @param coordinate where the look-ahead starts, degrees.
  /// @param Heading degrees clockwise from true north, as given.
  /// @param Speed km/h, as in predictPositions() (Geometry.h).
  void getPredictedPoints(CLLocationCoordinate2D coordinate, double Heading,
                          double Speed);

  /// Sends the occurrence notice (currentPolygonName, currentPolygonGuid,
  /// onRunway) to a live delegate, synchronously; without one it does
  /// nothing.
  void showchatlabel();

  /// Sends the removal notice (lastPolygonName, currentPolygonGuid) to a live
  /// delegate, synchronously, then stops the player (when there is one) on
  /// the calling thread.
  void hidegpsChatLabel();

  /// Sets isHazardArea(): false when the name is absent or contains
  /// "HOLD SHORT" (case-sensitive), true otherwise. Returns the new value.
  /// @param name an area's name, read during the call; empty is a hazard.
  bool checkISHazardforName(const OptionalString& name);

  /// Tests the current and the six predicted positions against every area in
  /// list order and records the area found (currentPolygonName,
  /// currentPolygonGuid, isHazardArea, onRunway). Returns true when something
  /// was found. The first hazard match among the current position and the
  /// first five predicted points ends the scan; a match of the far right
  /// point does not. The list must not change while this runs. Reads the
  /// seven positions from currentLocation() and the six coordinate members;
  /// notifies nobody and queues nothing. A null list, a null record and a
  /// record without vertices match nothing.
  bool processPointInPolygon();

  /// Whether the point lies in the ring (see pointInPolygon in Geometry.h). A
  /// null or empty ring gives false. Reads nothing of the monitor's state.
  /// @param points the ring, borrowed for the call.
  /// @param Latitude degrees, single precision; NaN gives false.
  /// @param Longitude degrees, single precision; NaN gives false.
  bool checkPointInPolygon(const std::shared_ptr<DMPointArray>& points,
                           float Latitude, float Longitude) const;

  /// --- Properties: plain accessors, no validation, no side effects ----------
  /// Getters return references to the monitor's own members, valid until
  /// the matching setter runs; setters take their argument by value and
  /// hold objects strongly (the delegate excepted). Monitor thread only.

  ///@{
  /// The host's location source; the monitor never uses it.
  const std::shared_ptr<void>& locationManager() const {
    return locationManager_;
  }
  void setLocationManager(std::shared_ptr<void> m) {
    locationManager_ = std::move(m);
  }
  ///@}

  ///@{
  /// The latest fix, as handed in.
  CLLocationCoordinate2D currentLocation() const { return currentLocation_; }
  void setCurrentLocation(CLLocationCoordinate2D c) { currentLocation_ = c; }
  double speed() const { return speed_; }  ///< km/h
  void setSpeed(double speed) { speed_ = speed; }
  double heading() const { return heading_; }  ///< degrees
  void setHeading(double heading) { heading_ = heading; }
  ///@}

  ///@{
  /// Cleared after every fix; never set by the monitor and never read by it.
  bool isProcessing() const { return isProcessing_; }
  void setIsProcessing(bool v) { isProcessing_ = v; }
  ///@}

  ///@{
  /// Name of the area for which the sound was last started: absent until the
  /// first entry, empty after a fix outside every area.
  const OptionalString& lastPolygonName() const { return lastPolygonName_; }
  void setLastPolygonName(OptionalString n) { lastPolygonName_ = std::move(n); }
  ///@}

  ///@{
  /// The area found by the last evaluation; the name is emptied by a fix
  /// outside every area, the identifier is never reset.
  const OptionalString& currentPolygonName() const {
    return currentPolygonName_;
  }
  void setCurrentPolygonName(OptionalString n) {
    currentPolygonName_ = std::move(n);
  }
  const OptionalString& currentPolygonGuid() const {
    return currentPolygonGuid_;
  }
  void setCurrentPolygonGuid(OptionalString g) {
    currentPolygonGuid_ = std::move(g);
  }
  ///@}

  ///@{
  /// The caution sound; null when none could be made.
  const std::shared_ptr<SoundPlayer>& currentaudioPlayer() const {
    return currentaudioPlayer_;
  }
  void setCurrentaudioPlayer(std::shared_ptr<SoundPlayer> p) {
    currentaudioPlayer_ = std::move(p);
  }
  ///@}

  ///@{
  /// Kind of the area last found (true: hazard), and whether the aircraft
  /// itself stands in the hazard area found.
  bool isHazardArea() const { return isHazardArea_; }
  void setIsHazardArea(bool v) { isHazardArea_ = v; }
  bool onRunway() const { return onRunway_; }
  void setOnRunway(bool v) { onRunway_ = v; }
  ///@}

  ///@{
  /// The areas being monitored; null until the first getPolygons().
  const std::shared_ptr<DMPolygonArray>& polygons() const { return polygons_; }
  void setPolygons(std::shared_ptr<DMPolygonArray> p) {
    polygons_ = std::move(p);
  }
  ///@}

  ///@{
  /// Held weakly: reads null once the host's delegate is gone.
  std::shared_ptr<TarvoDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<TarvoDelegate> d) { delegate_ = std::move(d); }
  ///@}

  /// --- The six look-ahead points of the latest fix; (0, 0) before the first.
  CLLocationCoordinate2D pLeftCoordinate;       ///< 4 s ahead, heading - 10
  CLLocationCoordinate2D pMiddleCoordinate;     ///< 4 s ahead, on the heading
  CLLocationCoordinate2D pRightCoordinate;      ///< 4 s ahead, heading + 10
  CLLocationCoordinate2D pmidLeftCoordinate;    ///< 2 s ahead, heading - 10
  CLLocationCoordinate2D pmidMiddleCoordinate;  ///< 2 s ahead, on the heading
  CLLocationCoordinate2D pmidRightCoordinate;   ///< 2 s ahead, heading + 10

 private:
  friend class ZoneIndexAccess;
  struct ScanState;
  bool scanArea(AreaVisit& visit, ScanState& scan);
  bool visitArea(AreaVisit& visit, ScanState& scan);
  void passOverAreas(ScanState& scan);
  void setProbes(ProbeSet& probes) const;
  void recordMatch(const DMPolygon& area, ScanState& scan);
  void keepLastMatch(const ScanState& scan);
  void queuePlayTask();
  void queueStopTask();
  std::shared_ptr<Tarvo> keepAlive();

  std::shared_ptr<void> locationManager_;
  CLLocationCoordinate2D currentLocation_;
  double speed_ = 0.0;
  double heading_ = 0.0;
  bool isProcessing_ = false;
  OptionalString lastPolygonName_;
  OptionalString currentPolygonName_;
  OptionalString currentPolygonGuid_;
  std::shared_ptr<SoundPlayer> currentaudioPlayer_;
  bool isHazardArea_ = false;
  bool onRunway_ = false;
  std::shared_ptr<DMPolygonArray> polygons_;
  std::weak_ptr<TarvoDelegate> delegate_;

  /// Not properties: the evaluation's index of polygons_ (made on first use)
  /// and whether it checks the list in full on every evaluation.
  std::unique_ptr<ZoneIndex> zoneIndex_;
  bool verifyZoneIndex_ = false;
};

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_TARVO_H_
