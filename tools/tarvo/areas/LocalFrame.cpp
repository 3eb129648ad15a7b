#include "areas/LocalFrame.h"

namespace tarvo::cli {
namespace {

constexpr double kSemiMajor = 6378137.0;             // WGS 84 a
constexpr double kEccentricity2 = 6.69437999014e-3;  // WGS 84 e^2
constexpr double kRadPerDeg = 3.14159265358979323846 / 180.0;

}  // namespace

LocalFrame::LocalFrame(LatLon origin) : origin_(origin) {
  const double s = std::sin(origin.lat * kRadPerDeg);
  const double w = 1.0 - kEccentricity2 * s * s;
  const double meridian =
      kSemiMajor * (1.0 - kEccentricity2) / (w * std::sqrt(w));
  const double primeVertical = kSemiMajor / std::sqrt(w);
  metresPerDegLat_ = meridian * kRadPerDeg;
  metresPerDegLon_ =
      primeVertical * std::cos(origin.lat * kRadPerDeg) * kRadPerDeg;
}

Vec2 LocalFrame::toLocal(LatLon p) const {
  return {(p.lon - origin_.lon) * metresPerDegLon_,
          (p.lat - origin_.lat) * metresPerDegLat_};
}

LatLon LocalFrame::toGeo(Vec2 p) const {
  return {origin_.lat + p.y / metresPerDegLat_,
          origin_.lon + p.x / metresPerDegLon_};
}

}  // namespace tarvo::cli
