// The paved surfaces (row 110) and painted taxi lines (row 120) of an
// apt.dat airport, for the map around its areas. Bezier nodes (rows 112,
// 114, 116) are taken at their node positions; the curve between them is
// not drawn.
#ifndef TARVO_TOOLS_AREAS_APTDATPAVEMENT_H_
#define TARVO_TOOLS_AREAS_APTDATPAVEMENT_H_

#include <string>
#include <vector>

#include "areas/AirportSource.h"

namespace tarvo::cli {

class AptDatPavement {
 public:
  explicit AptDatPavement(std::vector<ContextFeature>& out) : out_(out) {}

  // Row 110 "110 surface smoothness orientation name...": a surface whose
  // rings follow; row 120 "120 name...": a line whose nodes follow.
  void startSurface(const std::vector<std::string>& words);
  void startLine(const std::vector<std::string>& words);
  // Rows 111-116 (code is the row code): a node of what was started.
  void node(int code, LatLon at);
  // Any other row ends what was started.
  void end();

 private:
  void start(const char* kind, bool polygon, const std::vector<std::string>& w,
             std::size_t nameFrom);
  void closeRing();

  std::vector<ContextFeature>& out_;
  ContextFeature current_;
  std::vector<LatLon> ring_;
  bool open_ = false;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_APTDATPAVEMENT_H_
