#include "areas/TaxiwayGraph.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <queue>

namespace tarvo::cli {

std::size_t TaxiwayGraph::node(Vec2 p) {
  const std::pair<long long, long long> key{std::llround(p.x * 100),
                                            std::llround(p.y * 100)};
  auto [it, added] = index_.emplace(key, points_.size());
  if (added) {
    points_.push_back(p);
    edges_.emplace_back();
  }
  return it->second;
}

void TaxiwayGraph::addWay(const std::vector<Vec2>& nodes, double width) {
  for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
    const std::size_t a = node(nodes[i]);
    const std::size_t b = node(nodes[i + 1]);
    if (a == b) continue;
    edges_[a].push_back({b, width});
    edges_[b].push_back({a, width});
  }
}

std::optional<TaxiwayGraph::Path> TaxiwayGraph::pathToRunway(
    Vec2 start, const std::vector<RunwayShape>& runways,
    double maxLength) const {
  std::size_t first = points_.size();
  double nearest = 5.0;
  for (std::size_t i = 0; i < points_.size(); ++i) {
    const double d = (points_[i] - start).length();
    if (d <= nearest) nearest = d, first = i;
  }
  if (first == points_.size()) return std::nullopt;
  for (const RunwayShape& r : runways) {
    if (r.contains(points_[first])) return std::nullopt;
  }
  // Dijkstra from the start node; the first runway edge reached wins.
  const double inf = std::numeric_limits<double>::infinity();
  std::vector<double> dist(points_.size(), inf);
  std::vector<std::size_t> from(points_.size(), points_.size());
  using Item = std::pair<double, std::size_t>;
  std::priority_queue<Item, std::vector<Item>, std::greater<Item>> queue;
  dist[first] = 0;
  queue.push({0, first});
  double best = inf;
  std::size_t bestNode = 0, bestRunway = 0;
  Vec2 bestCut;
  while (!queue.empty()) {
    const auto [d, u] = queue.top();
    queue.pop();
    if (d > dist[u] || d >= best || d > maxLength) continue;
    for (const auto& [v, width] : edges_[u]) {
      const Vec2 step = points_[v] - points_[u];
      const double length = step.length();
      for (std::size_t r = 0; r < runways.size(); ++r) {
        auto t = runways[r].distanceAlong(points_[u], step.unit());
        if (t && *t <= length && d + *t < best) {
          best = d + *t;
          bestNode = u;
          bestRunway = r;
          bestCut = points_[u] + step.unit() * *t;
        }
      }
      if (d + length < dist[v]) {
        dist[v] = d + length;
        from[v] = u;
        queue.push({dist[v], v});
      }
    }
  }
  if (best > maxLength) return std::nullopt;
  Path path;
  path.runway = bestRunway;
  path.points.push_back(bestCut);
  for (std::size_t n = bestNode; n != points_.size(); n = from[n]) {
    path.points.push_back(points_[n]);
  }
  path.points.push_back(start);
  std::reverse(path.points.begin(), path.points.end());
  // The start node and the hold position are one point when they coincide.
  if ((path.points[0] - path.points[1]).length() < 0.05) {
    path.points.erase(path.points.begin() + 1);
  }
  path.width = edges_[first].empty() ? 23.0 : edges_[first].front().second;
  return path;
}

}  // namespace tarvo::cli
