#include "wide/drawing/layout.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/index.h"

namespace zorvek::wide {

namespace {

constexpr double kTurn = 2 * 3.14159265358979323846;

// The angles at which the taxa stand, in the tree's order, each within half a turn of the angle of
// its wedge, so that they hardly ever fall.
std::vector<double> TaxonAngles(const Tree& tree, const std::vector<Point>& places) {
  std::vector<double> angles;
  for (const int node : tree.preorder) {
    if (!tree.IsTaxon(node)) continue;
    const double wedge = kTurn * (static_cast<double>(angles.size()) + 0.5) / tree.taxa;
    const double angle = std::atan2(places[Index(node)].y, places[Index(node)].x);
    angles.push_back(wedge + std::remainder(angle - wedge, kTurn));
  }
  return angles;
}

// The values that never fall and are nearest to these in the mean square (pool adjacent violators).
std::vector<double> NeverFalling(const std::vector<double>& values) {
  struct Pool {
    double sum;
    int count;
    double Mean() const { return sum / count; }
  };
  std::vector<Pool> pools;
  for (const double value : values) {
    Pool pool{value, 1};
    while (!pools.empty() && pools.back().Mean() > pool.Mean()) {
      pool.sum += pools.back().sum;
      pool.count += pools.back().count;
      pools.pop_back();
    }
    pools.push_back(pool);
  }
  std::vector<double> fitted;
  for (const Pool& pool : pools) fitted.insert(fitted.end(), Index(pool.count), pool.Mean());
  return fitted;
}

}  // namespace

std::vector<double> DrawnLengths(const Tree& tree) {
  double longest = 0;
  for (const int node : tree.preorder) longest = std::max(longest, tree.ShownLength(node));
  const double least = std::max(kLeastDrawn * longest, kLeastDrawnLength);
  std::vector<double> lengths(tree.nodes.size());
  for (const int node : tree.preorder) {
    const double length = tree.ShownLength(node);
    if (node != tree.root && length > least) lengths[Index(node)] = length;
  }
  return lengths;
}

std::vector<double> DrawnSupports(const Tree& tree) {
  const std::vector<double> lengths = DrawnLengths(tree);
  std::vector<double> supports(tree.nodes.size(), Tree::kNoSupport);
  for (const int node : tree.preorder) {
    if (!tree.IsTaxon(node) && lengths[Index(node)] > 0) {
      supports[Index(node)] = tree.At(node).support;
    }
  }
  const std::vector<int>& top = tree.At(tree.root).children;
  if (tree.IsRooted() && supports[Index(top[0])] >= 0 && supports[Index(top[1])] >= 0) {
    const bool first_longer = lengths[Index(top[0])] > lengths[Index(top[1])];
    supports[Index(top[first_longer ? 1 : 0])] = Tree::kNoSupport;
  }
  return supports;
}

Tree RootedForDrawing(const Tree& tree) {
  return tree.IsRooted() ? tree : RootedAtMidpoint(tree);
}

// Less `apart` times their rank, angles that are far enough from each other never fall. The circle
// is cut open where the gap is widest.
std::vector<double> LabelAngles(const Tree& tree, const std::vector<Point>& places, double apart) {
  std::vector<double> angles = TaxonAngles(tree, places);
  const std::size_t n = angles.size();
  std::size_t cut = 0;
  double widest = 0;
  for (std::size_t k = 0; k < n; ++k) {
    const double gap = angles[k] - (k == 0 ? angles[n - 1] - kTurn : angles[k - 1]);
    if (gap > widest) cut = k;
    widest = std::max(widest, gap);
  }
  std::vector<double> reduced(n);
  for (std::size_t k = 0; k < n; ++k) {
    const std::size_t from = (cut + k) % n;
    reduced[k] = angles[from] + (cut + k >= n ? kTurn : 0) - apart * static_cast<double>(k);
  }
  reduced = NeverFalling(reduced);
  // They may overlap across the cut only when there is hardly room; then they are spread evenly.
  const bool even = reduced[n - 1] - reduced[0] > kTurn - apart * static_cast<double>(n);
  for (std::size_t k = 0; k < n; ++k) {
    const double rank = static_cast<double>(k);
    angles[(cut + k) % n] =
        even ? reduced[0] + kTurn * rank / static_cast<double>(n) : reduced[k] + apart * rank;
  }
  return angles;
}

std::vector<Point> PhylogramLayout(const Tree& tree) {
  const std::vector<double> lengths = DrawnLengths(tree);
  std::vector<Point> places(tree.nodes.size());
  double row = 0;
  for (const int node : tree.preorder) {
    if (tree.IsTaxon(node)) places[Index(node)].y = row++;
    for (const int child : tree.At(node).children) {
      places[Index(child)].x = places[Index(node)].x + lengths[Index(child)];
    }
  }
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    const std::vector<int>& children = tree.At(*node).children;
    if (children.empty()) continue;
    places[Index(*node)].y =
        (places[Index(children.front())].y + places[Index(children.back())].y) / 2;
  }
  return places;
}

}  // namespace zorvek::wide
