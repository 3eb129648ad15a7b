// Angle conversions, look-ahead projection and the crossing test.
//
// Every rounding below is part of the required result. A value declared
// float is rounded to single precision where it is stored; an expression
// that mixes float and double is evaluated in double. The build forbids
// contracting a*b+c into one fused operation and keeps GCC's SLP vectoriser
// from deleting the double -> float -> double round trips of a coordinate
// pair (see cmake/TarvoCompilerOptions.cmake); the tests pin the results.
#include "TarvoFramework/Geometry.h"

#include <cmath>
#include <type_traits>

#if defined(__SSE2__)
#include <emmintrin.h>
#define TARVO_CROSSING_SSE2 1
#elif defined(__aarch64__) && defined(__ARM_NEON)
#include <arm_neon.h>
#define TARVO_CROSSING_NEON 1
#endif

namespace {

constexpr double kPi = 3.141592653589793;

// Earth radius in km; stored in single precision it is 6371.009765625.
constexpr float kEarthRadiusKm = 6371.01f;
constexpr float kSideOffsetDegrees = 10.0f;
// Hours in 4 s and 2 s, as eight-decimal values (not 1/900 and 1/1800).
constexpr double kFarHours = 0.00111111;
constexpr double kMidHours = 0.00055556;

// The maths library in double precision. In C++, std::sin(float) would pick
// the single-precision overload; every call here must widen first.
double dsin(double x) { return std::sin(x); }
double dcos(double x) { return std::cos(x); }
double dasin(double x) { return std::asin(x); }
double datan2(double y, double x) { return std::atan2(y, x); }

// The parts of the destination formula that depend only on the fix.
struct Origin {
  float phi1;     // latitude, radians
  float lambda1;  // longitude, radians
  float sinPhi1;
  float cosPhi1;
};

Origin makeOrigin(float latitudeDeg, float longitudeDeg) {
  Origin o;
  o.phi1 = static_cast<float>(DegreesToRadians(latitudeDeg));
  o.lambda1 = static_cast<float>(DegreesToRadians(longitudeDeg));
  o.cosPhi1 = static_cast<float>(dcos(o.phi1));
  o.sinPhi1 = static_cast<float>(dsin(o.phi1));
  return o;
}

// A bearing with the sine and cosine the formula takes of it.
struct Bearing {
  float theta;  // radians
  double sinTheta;
  double cosTheta;
};

Bearing makeBearing(float bearingDeg) {
  Bearing b;
  b.theta = static_cast<float>(DegreesToRadians(bearingDeg));
  b.sinTheta = dsin(b.theta);
  b.cosTheta = dcos(b.theta);
  return b;
}

// An angular distance with its sine and cosine, each rounded to single.
struct Distance {
  float sinDelta;
  float cosDelta;
};

Distance makeDistance(float distanceKm) {
  const float delta = distanceKm / kEarthRadiusKm;
  return Distance{static_cast<float>(dsin(delta)),
                  static_cast<float>(dcos(delta))};
}

// Great-circle destination from the origin on bearing b after distance d.
// The products p and q are single; q * cos(theta) and the sums stay double
// until they are stored.
tarvo::CLLocationCoordinate2D destination(const Origin& o, const Bearing& b,
                                          const Distance& d) {
  const float p = o.sinPhi1 * d.cosDelta;
  const float q = o.cosPhi1 * d.sinDelta;
  const float phi2 = static_cast<float>(dasin(p + q * b.cosTheta));
  const double y = (b.sinTheta * d.sinDelta) * o.cosPhi1;
  const double x = d.cosDelta - o.sinPhi1 * dsin(phi2);
  const float lambda2 = static_cast<float>(o.lambda1 + datan2(y, x));
  const float latitude = static_cast<float>(RadiansToDegrees(phi2));
  const float longitude = static_cast<float>(RadiansToDegrees(lambda2));
  return tarvo::CLLocationCoordinate2DMake(latitude, longitude);
}

}  // namespace

extern "C" {

double DegreesToRadians(double degrees) { return (degrees * kPi) / 180.0; }

double RadiansToDegrees(double radians) { return (radians * 180.0) / kPi; }

}  // extern "C"

namespace tarvo {

PredictedPositions predictPositions(CLLocationCoordinate2D position,
                                    double heading, double speed) {
  // Exactly this comparison: a NaN speed is not replaced.
  if (speed <= 0.0) speed = 0.0;
  const float h = static_cast<float>(heading);
  const float far = static_cast<float>(speed * kFarHours);
  const float mid = static_cast<float>(speed * kMidHours);
  const Origin origin = makeOrigin(static_cast<float>(position.latitude),
                                   static_cast<float>(position.longitude));
  // The three bearings and two distances, each with its sine and cosine,
  // worked out once: the six points only combine them.
  const Bearing left = makeBearing(h - kSideOffsetDegrees);
  const Bearing middle = makeBearing(h);
  const Bearing right = makeBearing(kSideOffsetDegrees + h);
  const Distance farD = makeDistance(far);
  const Distance midD = makeDistance(mid);

  PredictedPositions out;
  out.left = destination(origin, left, farD);
  out.middle = destination(origin, middle, farD);
  out.right = destination(origin, right, farD);
  out.midLeft = destination(origin, left, midD);
  out.midMiddle = destination(origin, middle, midD);
  out.midRight = destination(origin, right, midD);
  return out;
}

namespace {

// The crossing latitude of edge (i, j) in exactly this order, and whether
// the point lies below it. An edge along a meridian divides 0 by 0 here;
// the NaN never counts.
bool below(const DMPoint& pi, const DMPoint& pj, double lat, double lon) {
  double d = pj.latitude() - pi.latitude();
  d = d * (lon - pi.longitude());
  d = d / (pj.longitude() - pi.longitude());
  return lat < d + pi.latitude();
}

// Whether edge (i, j) flips the result. Deliberately unlike: >= for the i
// end, > for the j end.
bool flips(const DMPoint& pi, const DMPoint& pj, double lat, double lon) {
  const bool iAtOrAbove = pi.longitude() >= lon;
  const bool jAbove = pj.longitude() > lon;
  return iAtOrAbove != jAbove && below(pi, pj, lat, lon);
}

#if defined(TARVO_CROSSING_SSE2) || defined(TARVO_CROSSING_NEON)
// The vertices as (latitude, longitude) pairs of doubles, for the vector
// loads below.
static_assert(std::is_standard_layout<tarvo::DMPoint>::value &&
                  sizeof(tarvo::DMPoint) == 2 * sizeof(double),
              "DMPoint must be two packed doubles");

const double* pairs(const DMPoint* vertices) {
  return reinterpret_cast<const double*>(vertices);
}
#endif

// Edges (i, i - 1) and (i + 1, i), i from 1, two at a time: the longitude
// comparisons of both edges in one vector step, then the scalar arithmetic
// for the (rare) edges that qualify. Returns the first i not examined.
std::int32_t twoEdgesAtATime(const DMPoint* v, std::int32_t count, double lat,
                             double lon, bool& inside) {
  std::int32_t i = 1;
#if defined(TARVO_CROSSING_SSE2)
  const __m128d l = _mm_set1_pd(lon);
  for (; i + 1 < count; i += 2) {
    const __m128d a0 = _mm_loadu_pd(pairs(v + i - 1));
    const __m128d a1 = _mm_loadu_pd(pairs(v + i));
    const __m128d a2 = _mm_loadu_pd(pairs(v + i + 1));
    const __m128d iEnds = _mm_unpackhi_pd(a1, a2);  // lon of i, i + 1
    const __m128d jEnds = _mm_unpackhi_pd(a0, a1);  // lon of i - 1, i
    const int qualifies = _mm_movemask_pd(_mm_cmpge_pd(iEnds, l)) ^
                          _mm_movemask_pd(_mm_cmpgt_pd(jEnds, l));
    if (qualifies == 0) continue;
    if ((qualifies & 1) && below(v[i], v[i - 1], lat, lon)) inside = !inside;
    if ((qualifies & 2) && below(v[i + 1], v[i], lat, lon)) inside = !inside;
  }
#elif defined(TARVO_CROSSING_NEON)
  const float64x2_t l = vdupq_n_f64(lon);
  for (; i + 1 < count; i += 2) {
    const float64x2_t jEnds = vld2q_f64(pairs(v + i - 1)).val[1];
    const float64x2_t iEnds = vld2q_f64(pairs(v + i)).val[1];
    const uint64x2_t q = veorq_u64(vcgeq_f64(iEnds, l), vcgtq_f64(jEnds, l));
    const bool first = vgetq_lane_u64(q, 0) != 0;
    const bool second = vgetq_lane_u64(q, 1) != 0;
    if (first && below(v[i], v[i - 1], lat, lon)) inside = !inside;
    if (second && below(v[i + 1], v[i], lat, lon)) inside = !inside;
  }
#else
  (void)v, (void)count, (void)lat, (void)lon, (void)inside;
#endif
  return i;
}

#if defined(TARVO_CROSSING_SSE2) || defined(TARVO_CROSSING_NEON)
// The whole test for a small ring, where the branches of the loop would be
// mispredicted more often than not: edges (i, j) and (i + 1, i), j the
// vertex before i, two at a time, both crossing latitudes computed whether
// the edges qualify or not (the value of an edge that does not qualify is
// ignored), in exactly the operations of below(); the flips are counted
// from the comparison masks. An odd last edge runs alone in the low lane.
constexpr std::int32_t kFewVertices = 8;

bool fewEdgesWithoutBranches(const DMPoint* v, std::int32_t count, double lat,
                             double lon) {
  int flips = 0;
#if defined(TARVO_CROSSING_SSE2)
  const __m128d l = _mm_set1_pd(lon);
  const __m128d point = _mm_set1_pd(lat);
  for (std::int32_t i = 0; i < count; i += 2) {
    const bool pair = i + 1 < count;
    const __m128d a0 = _mm_loadu_pd(pairs(v + (i == 0 ? count - 1 : i - 1)));
    const __m128d a1 = _mm_loadu_pd(pairs(v + i));
    const __m128d a2 = _mm_loadu_pd(pairs(v + (pair ? i + 1 : i)));
    const __m128d iLon = _mm_unpackhi_pd(a1, a2);
    const __m128d iLat = _mm_unpacklo_pd(a1, a2);
    const __m128d jLon = _mm_unpackhi_pd(a0, a1);
    const __m128d jLat = _mm_unpacklo_pd(a0, a1);
    const __m128d qualifies =
        _mm_xor_pd(_mm_cmpge_pd(iLon, l), _mm_cmpgt_pd(jLon, l));
    __m128d d = _mm_sub_pd(jLat, iLat);
    d = _mm_mul_pd(d, _mm_sub_pd(l, iLon));
    d = _mm_div_pd(d, _mm_sub_pd(jLon, iLon));
    const __m128d crosses = _mm_cmplt_pd(point, _mm_add_pd(d, iLat));
    flips ^= _mm_movemask_pd(_mm_and_pd(qualifies, crosses)) & (pair ? 3 : 1);
  }
#else
  const float64x2_t l = vdupq_n_f64(lon);
  const float64x2_t point = vdupq_n_f64(lat);
  for (std::int32_t i = 0; i < count; i += 2) {
    const bool pair = i + 1 < count;
    const float64x2_t a0 = vld1q_f64(pairs(v + (i == 0 ? count - 1 : i - 1)));
    const float64x2_t a1 = vld1q_f64(pairs(v + i));
    const float64x2_t a2 = vld1q_f64(pairs(v + (pair ? i + 1 : i)));
    const float64x2_t iLon = vzip2q_f64(a1, a2), iLat = vzip1q_f64(a1, a2);
    const float64x2_t jLon = vzip2q_f64(a0, a1), jLat = vzip1q_f64(a0, a1);
    const uint64x2_t qualifies =
        veorq_u64(vcgeq_f64(iLon, l), vcgtq_f64(jLon, l));
    float64x2_t d = vsubq_f64(jLat, iLat);
    d = vmulq_f64(d, vsubq_f64(l, iLon));
    d = vdivq_f64(d, vsubq_f64(jLon, iLon));
    const uint64x2_t f =
        vandq_u64(qualifies, vcltq_f64(point, vaddq_f64(d, iLat)));
    flips ^= static_cast<int>(vgetq_lane_u64(f, 0) & 1u);
    if (pair) flips ^= static_cast<int>(vgetq_lane_u64(f, 1) & 2u);
  }
#endif
  return ((flips ^ (flips >> 1)) & 1) != 0;
}
#endif

// The loop for rings of any size: the first edge, pairs of edges, then the
// odd one out. Kept out of line: where the compiler lays out its loop
// decides its speed more than anything in it (0.3 or 0.5 ns per edge).
__attribute__((noinline)) bool anyEdges(const DMPoint* vertices,
                                        std::int32_t count, double lat,
                                        double lon) {
  bool inside = flips(vertices[0], vertices[count - 1], lat, lon);
  std::int32_t i = twoEdgesAtATime(vertices, count, lat, lon, inside);
  for (; i < count; ++i) {
    if (flips(vertices[i], vertices[i - 1], lat, lon)) inside = !inside;
  }
  return inside;
}

}  // namespace

// The edges are examined in the order (0, n - 1), (1, 0), (2, 1), ...; the
// result is the parity of the flips, so examining two at a time changes
// nothing. Selected at build time: SSE2 on x86, NEON on AArch64, one edge
// at a time elsewhere.
bool pointInPolygon(const DMPoint* vertices, std::int32_t count, float latitude,
                    float longitude) {
  if (vertices == nullptr || count <= 0) return false;
  const double lat = latitude;
  const double lon = longitude;
#if defined(TARVO_CROSSING_SSE2) || defined(TARVO_CROSSING_NEON)
  if (count <= kFewVertices) {
    return fewEdgesWithoutBranches(vertices, count, lat, lon);
  }
#endif
  return anyEdges(vertices, count, lat, lon);
}

}  // namespace tarvo
