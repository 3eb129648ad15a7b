#include "support/DifferentialScenes.h"

#include <TarvoFramework/AreaEdits.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>

namespace tarvo::testing {
namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kGrid = 1.0 / 64;  // floats hold every multiple exactly

double snap(double x) { return std::round(x / kGrid) * kGrid; }

// A star-shaped ring (concave for most draws) of n vertices.
DMPointArray starRing(std::mt19937& rng, double lat, double lon, double r,
                      int n) {
  std::uniform_real_distribution<double> u(0.3, 1.0);
  DMPointArray ring;
  for (int k = 0; k < n; ++k) {
    const double a = 2 * kPi * k / n, s = r * u(rng);
    ring.emplace_back(lat + s * std::sin(a), lon + 1.4 * s * std::cos(a));
  }
  return ring;
}

DMPointArray rotatedRect(double lat, double lon, double len, double wid,
                         double bearing) {
  const double ux = std::sin(bearing), uy = std::cos(bearing);
  DMPointArray ring;
  const double corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
  for (const auto& c : corners) {
    const double east = c[0] * len * ux - c[1] * wid * uy;
    const double north = c[0] * len * uy + c[1] * wid * ux;
    ring.emplace_back(lat + north, lon + 1.4 * east);
  }
  return ring;
}

}  // namespace

Scene::Scene(SceneKind kind, int areas, std::uint32_t seed)
    : kind_(kind), rng_(seed), list_(std::make_shared<DMPolygonArray>()) {
  if (kind == SceneKind::kFloatGrid) {
    centreLat_ = 10.0, centreLon_ = 20.0, spanDeg_ = 0.5;
  } else if (kind == SceneKind::kAntimeridian) {
    centreLat_ = -16.0, centreLon_ = 179.99, spanDeg_ = 0.02;
  } else if (kind == SceneKind::kDegenerate) {
    centreLat_ = 0.0, centreLon_ = 0.0, spanDeg_ = 0.01;
  }
  at_ = {centreLat_, centreLon_, 20.0, 90.0};
  for (int k = 0; k < areas; ++k) list_->push_back(makeArea(serial_++));
}

Scene Scene::airport(const std::string& path, std::uint32_t seed) {
  Scene scene(SceneKind::kAirport, 0, seed);
  std::ifstream in(path);
  std::string line;
  std::getline(in, line);  // header
  double latSum = 0, lonSum = 0;
  int vertices = 0;
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    std::string guid, name, kind, points;
    std::getline(fields, guid, '\t');
    std::getline(fields, name, '\t');
    std::getline(fields, kind, '\t');
    std::getline(fields, points);
    auto ring = std::make_shared<DMPointArray>();
    std::istringstream pairs(points);
    std::string pair;
    while (pairs >> pair) {
      const std::size_t comma = pair.find(',');
      const double lon = std::stod(pair.substr(0, comma));
      const double lat = std::stod(pair.substr(comma + 1));
      ring->emplace_back(lat, lon);
      latSum += lat, lonSum += lon, ++vertices;
    }
    auto area = std::make_shared<DMPolygon>();
    area->setPolygonName(name);
    area->setPolygonGUID(guid);
    area->setPolygonPoints(ring);
    scene.list_->push_back(area);
  }
  if (vertices > 0) {
    scene.centreLat_ = latSum / vertices, scene.centreLon_ = lonSum / vertices;
  }
  scene.spanDeg_ = 0.03;
  scene.at_ = {scene.centreLat_, scene.centreLon_, 20.0, 90.0};
  return scene;
}

OptionalString Scene::makeName(int serial) {
  const std::string n = std::to_string(serial);
  switch (std::uniform_int_distribution<int>(0, 9)(rng_)) {
    case 0:
      return std::nullopt;
    case 1:
      return std::string();
    case 2:
    case 3:
      return "RWY " + n + " HOLD SHORT";
    case 4:
      return "hold short " + n;
    case 5:
      return "TWY " + n + " HOLD  SHORT";
    default:
      return "RWY " + n;
  }
}

std::shared_ptr<DMPointArray> Scene::makeRing() {
  std::uniform_real_distribution<double> u(-1.0, 1.0), u01(0.0, 1.0);
  const double lat = centreLat_ + spanDeg_ * u(rng_);
  const double lon = centreLon_ + spanDeg_ * u(rng_);
  const int shape = std::uniform_int_distribution<int>(0, 9)(rng_);
  DMPointArray ring;
  switch (kind_) {
    case SceneKind::kFloatGrid:
      ring = starRing(rng_, lat, lon, 0.05, 3 + shape);
      for (DMPoint& p : ring)
        p = DMPoint(snap(p.latitude()), snap(p.longitude()));
      break;
    case SceneKind::kAntimeridian:
      ring = starRing(rng_, lat, 180.0, 0.02, 4 + shape);
      for (DMPoint& p : ring) {
        if (p.longitude() > 180.0) p.setLongitude(p.longitude() - 360.0);
      }
      break;
    case SceneKind::kDegenerate: {
      ring = rotatedRect(lat, lon, 0.002, 0.001, u01(rng_) * kPi);
      const double tiny = std::numeric_limits<double>::denorm_min() * 3;
      switch (shape) {
        case 0:
          ring.resize(std::uniform_int_distribution<int>(0, 2)(rng_));
          break;
        case 1:
          for (DMPoint& p : ring) p.setLongitude(snap(lon));
          break;
        case 2:
          ring[1].setLatitude(kNaN);
          break;
        case 3:
          ring[2].setLongitude(kNaN);
          break;
        case 4:
          ring[0].setLatitude(kInf);
          break;
        case 5:
          ring[3].setLongitude(-kInf);
          break;
        case 6:
          ring = {{0.0, 0.0}, {1.0, tiny}, {2.0, 0.0}, {1.5, -tiny}};
          break;
        case 7:
          ring.push_back(ring.front());
          break;
        case 8:
          ring[0].setLatitude(1e300);
          ring[1].setLatitude(-1e300);
          break;
        default:
          break;
      }
      break;
    }
    default:
      ring = shape < 5 ? rotatedRect(lat, lon, 0.0002 + 0.01 * u01(rng_),
                                     0.0003 * (1 + u01(rng_)), u01(rng_) * kPi)
                       : starRing(rng_, lat, lon, 0.003, 5 + 4 * shape);
  }
  return std::make_shared<DMPointArray>(std::move(ring));
}

std::shared_ptr<DMPolygon> Scene::makeArea(int serial) {
  auto area = std::make_shared<DMPolygon>();
  area->setPolygonName(makeName(serial));
  if (serial % 7 != 3) area->setPolygonGUID("guid-" + std::to_string(serial));
  if (kind_ != SceneKind::kDegenerate || serial % 11 != 5) {
    area->setPolygonPoints(makeRing());
  }
  return area;
}

// Puts the aircraft on a vertex or the middle of a random area, so that
// matches, ties and boundaries are frequent.
void Scene::jumpToArea() {
  if (list_->empty()) return;
  const auto& area = (*list_)[std::uniform_int_distribution<std::size_t>(
      0, list_->size() - 1)(rng_)];
  if (!area || !area->polygonPoints() || area->polygonPoints()->empty()) return;
  const DMPointArray& ring = *area->polygonPoints();
  const DMPoint& a = ring[std::uniform_int_distribution<std::size_t>(
      0, ring.size() - 1)(rng_)];
  const DMPoint& b = ring[std::uniform_int_distribution<std::size_t>(
      0, ring.size() - 1)(rng_)];
  const double t = std::uniform_real_distribution<double>(0.0, 1.0)(rng_);
  at_.latitude = a.latitude() + t * (b.latitude() - a.latitude());
  at_.longitude = a.longitude() + t * (b.longitude() - a.longitude());
  if (std::uniform_int_distribution<int>(0, 2)(rng_) == 0) {
    at_.latitude = a.latitude(), at_.longitude = a.longitude();
  }
}

SceneFix Scene::nextFix() {
  std::uniform_real_distribution<double> u01(0.0, 1.0);
  const double roll = u01(rng_);
  if (roll < 0.15) jumpToArea();
  at_.heading =
      roll < 0.9 ? at_.heading + 20 * (u01(rng_) - 0.5) : -40 + 440 * u01(rng_);
  at_.speed = roll < 0.95 ? 150 * u01(rng_) : (roll < 0.98 ? 0.0 : -5.0);
  if (roll > 0.999) at_.speed = std::numeric_limits<double>::quiet_NaN();
  // One second on, roughly along the heading (a degree is about 111 km).
  const double step = (std::isnan(at_.speed) ? 0 : at_.speed) / 3.6 / 111195.0;
  at_.latitude += step * std::cos(at_.heading * kPi / 180);
  at_.longitude += 1.4 * step * std::sin(at_.heading * kPi / 180);
  if (std::fabs(at_.latitude - centreLat_) > 2 * spanDeg_ ||
      std::fabs(at_.longitude - centreLon_) > 2 * spanDeg_) {
    at_.latitude = centreLat_, at_.longitude = centreLon_;
  }
  SceneFix f = at_;
  if (kind_ == SceneKind::kFloatGrid && roll < 0.5) {
    f.latitude = snap(f.latitude), f.longitude = snap(f.longitude);
  }
  return f;
}

void Scene::changeList(Tarvo& monitor, bool fullCheck) {
  if (!installed_) {
    monitor.setPolygons(list_);
    installed_ = true;
    return;
  }
  if (kind_ == SceneKind::kAirport) return;
  std::uniform_int_distribution<int> what(0, 199);
  const int w = what(rng_);
  if (w >= 7 || list_->empty()) return;
  std::uniform_int_distribution<std::size_t> any(0, list_->size() - 1);
  bool inPlace = true;
  switch (w) {
    case 0:  // a new, shuffled list
      list_ = std::make_shared<DMPolygonArray>(*list_);
      std::shuffle(list_->begin(), list_->end(), rng_);
      monitor.setPolygons(list_);
      inPlace = false, lastChange_ = "shuffled copy";
      break;
    case 1:  // the list grows by itself
      list_->push_back(makeArea(serial_++));
      inPlace = false, lastChange_ = "push_back";
      break;
    case 2:
      (*list_)[any(rng_)] = makeArea(serial_++);
      lastChange_ = "element replaced";
      break;
    case 3:
      std::swap((*list_)[any(rng_)], (*list_)[any(rng_)]);
      lastChange_ = "elements swapped";
      break;
    case 4:
      if ((*list_)[0]) (*list_)[0]->setPolygonPoints(makeRing());
      lastChange_ = "ring replaced";
      break;
    case 5: {
      const auto& area = (*list_)[any(rng_)];
      if (area && area->polygonPoints() && !area->polygonPoints()->empty()) {
        DMPoint& p = area->polygonPoints()->front();
        p.setLatitude(p.latitude() + 0.001);
        p.setLongitude(p.longitude() - 0.002);
      }
      lastChange_ = "vertex moved";
      break;
    }
    default:
      if ((*list_)[0]) (*list_)[0]->setPolygonName(makeName(serial_++));
      lastChange_ = "renamed";
  }
  if (inPlace && !fullCheck) polygonsEdited(monitor);
}

std::string Scene::describe() const {
  return "scene of " + std::to_string(list_->size()) +
         " areas, last change: " + lastChange_;
}

}  // namespace tarvo::testing
