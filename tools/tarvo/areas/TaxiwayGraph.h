// The taxiway network of an airport in a local frame, for following a
// taxiway from a holding position to the runway it leads onto.
#ifndef TARVO_TOOLS_AREAS_TAXIWAYGRAPH_H_
#define TARVO_TOOLS_AREAS_TAXIWAYGRAPH_H_

#include <cstddef>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "areas/LocalFrame.h"
#include "areas/RunwayShape.h"

namespace tarvo::cli {

class TaxiwayGraph {
 public:
  // Ways that share a node (the same position to 1 cm) are joined there.
  void addWay(const std::vector<Vec2>& nodes, double width);

  struct Path {
    std::vector<Vec2> points;  // from the start to the runway's edge
    std::size_t runway = 0;    // index into the runways given
    double width = 0.0;        // of the taxiway at the start
  };

  // The shortest way along the taxiways from the node nearest start (at
  // most 5 m away) to the edge of one of the runways, up to maxLength
  // metres. nullopt when no runway is reached or start is on a runway.
  std::optional<Path> pathToRunway(Vec2 start,
                                   const std::vector<RunwayShape>& runways,
                                   double maxLength) const;

 private:
  std::size_t node(Vec2 p);

  std::vector<Vec2> points_;
  std::vector<std::vector<std::pair<std::size_t, double>>> edges_;  // to, width
  std::map<std::pair<long long, long long>, std::size_t> index_;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_TAXIWAYGRAPH_H_
