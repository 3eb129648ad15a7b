// Random registries and tracks for the differential test: a Scene owns an
// area list, hands out fixes that wander among its areas, and now and then
// changes the list the ways a host may (replace, shuffle, grow, edit in
// place, rename), telling the monitor as AreaEdits.h asks.
#ifndef TARVO_TESTS_SUPPORT_DIFFERENTIALSCENES_H_
#define TARVO_TESTS_SUPPORT_DIFFERENTIALSCENES_H_

#include <TarvoFramework/DMPolygon.h>
#include <TarvoFramework/Tarvo.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace tarvo::testing {

enum class SceneKind {
  kMixed,         // rotated rectangles and concave rings around an airport
  kFloatGrid,     // vertices and fixes on a grid that floats hold exactly
  kAntimeridian,  // rings whose longitudes straddle +-180
  kDegenerate,    // 0-2 vertices, meridian edges, NaN, inf, huge, subnormal
  kAirport,       // a shipped airport file, unchanged
};

struct SceneFix {
  double latitude, longitude, speed, heading;
};

class Scene {
 public:
  Scene(SceneKind kind, int areas, std::uint32_t seed);
  // Areas read from a points-text TSV (guid, name, kind, points).
  static Scene airport(const std::string& path, std::uint32_t seed);

  SceneFix nextFix();
  // Maybe changes the monitor's list; with fullCheck the monitor checks the
  // list itself and in-place edits go unreported.
  void changeList(Tarvo& monitor, bool fullCheck);

  int areaCount() const { return static_cast<int>(list_->size()); }
  std::string describe() const;

 private:
  std::shared_ptr<DMPolygon> makeArea(int serial);
  std::shared_ptr<DMPointArray> makeRing();
  OptionalString makeName(int serial);
  void jumpToArea();

  SceneKind kind_;
  std::mt19937 rng_;
  double centreLat_ = 44.88, centreLon_ = -93.22, spanDeg_ = 0.05;
  std::shared_ptr<DMPolygonArray> list_;
  SceneFix at_{44.88, -93.22, 20.0, 90.0};
  int serial_ = 0;
  bool installed_ = false;
  std::string lastChange_ = "none";
};

}  // namespace tarvo::testing

#endif  // TARVO_TESTS_SUPPORT_DIFFERENTIALSCENES_H_
