#include "wide/drawing/layout.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace zorvek::wide {

namespace {

constexpr double kTurn = 2 * 3.14159265358979323846;
constexpr int kPasses = 3;  // over all nodes, for equal daylight

std::vector<int> TaxaBelow(const Tree& tree) {
  std::vector<int> below(tree.nodes.size());
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    if (tree.IsTaxon(*node)) below[Index(*node)] = 1;
    for (const int child : tree.At(*node).children) below[Index(*node)] += below[Index(child)];
  }
  return below;
}

std::vector<Point> EqualAngle(const Tree& tree) {
  const std::vector<int> below = TaxaBelow(tree);
  std::vector<double> wedge(tree.nodes.size());  // where that of each node begins
  std::vector<Point> places(tree.nodes.size());
  for (const int node : tree.preorder) {
    double begin = wedge[Index(node)];
    for (const int child : tree.At(node).children) {
      const double width = kTurn * below[Index(child)] / tree.taxa;
      const double angle = begin + width / 2;
      const double length = tree.ShownLength(child);
      const Point from = places[Index(node)];
      places[Index(child)] = {from.x + length * std::cos(angle), from.y + length * std::sin(angle)};
      wedge[Index(child)] = begin;
      begin += width;
    }
  }
  return places;
}

// Turns subtrees about their upper ends. The nodes of a subtree follow each other in preorder.
class Daylight {
 public:
  Daylight(const Tree& tree, std::vector<Point>& places)
      : tree_(tree), places_(places), begin_(places.size()), end_(places.size()) {
    for (std::size_t k = 0; k < places.size(); ++k) begin_[Index(tree.preorder[k])] = k;
    for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
      const std::vector<int>& children = tree.At(*node).children;
      end_[Index(*node)] =
          children.empty() ? begin_[Index(*node)] + 1 : end_[Index(children.back())];
    }
  }

  // What is above the node, or at the top the first child, stays; the others follow in their order,
  // with equal gaps between what is seen of them.
  void Spread(int node) {
    const std::vector<int>& children = tree_.At(node).children;
    const bool top = node == tree_.root;
    const Sight fixed = top ? Below(node, children[0]) : Above(node);
    std::vector<Sight> turning;
    double seen = fixed.to - fixed.from;
    for (std::size_t k = top ? 1 : 0; k < children.size(); ++k) {
      turning.push_back(Below(node, children[k]));
      seen += turning.back().to - turning.back().from;
    }
    const double gap = (kTurn - seen) / (static_cast<double>(turning.size()) + 1);
    if (gap < 0) return;
    double at = fixed.to + gap;
    for (std::size_t k = 0; k < turning.size(); ++k) {
      Turn(node, children[k + (top ? 1 : 0)], at - turning[k].from);
      at += turning[k].to - turning[k].from + gap;
    }
  }

 private:
  // The angles between which some nodes are seen; no more than a turn lies between them.
  struct Sight {
    double from = 0;
    double to = 0;
    bool any = false;
  };

  Sight Below(int node, int child) const {
    Sight sight;
    Look(node, begin_[Index(child)], end_[Index(child)], sight);
    return sight;
  }

  Sight Above(int node) const {
    Sight sight;
    Look(node, 0, begin_[Index(node)], sight);
    Look(node, end_[Index(node)], places_.size(), sight);
    return sight;
  }

  // Widens the sight by the nodes from, to in preorder.
  void Look(int node, std::size_t from, std::size_t to, Sight& sight) const {
    const Point eye = places_[Index(node)];
    for (std::size_t k = from; k < to; ++k) {
      const Point p = places_[Index(tree_.preorder[k])];
      if (p.x == eye.x && p.y == eye.y) continue;
      double angle = std::atan2(p.y - eye.y, p.x - eye.x);
      if (!sight.any) sight = {angle, angle, true};
      const double middle = (sight.from + sight.to) / 2;
      angle = middle + std::remainder(angle - middle, kTurn);
      sight = {std::min(sight.from, angle), std::max(sight.to, angle), true};
    }
  }

  void Turn(int node, int child, double angle) {
    const Point pivot = places_[Index(node)];
    const double sine = std::sin(angle);
    const double cosine = std::cos(angle);
    for (std::size_t k = begin_[Index(child)]; k < end_[Index(child)]; ++k) {
      Point& p = places_[Index(tree_.preorder[k])];
      const Point arm{p.x - pivot.x, p.y - pivot.y};
      p = {pivot.x + arm.x * cosine - arm.y * sine, pivot.y + arm.x * sine + arm.y * cosine};
    }
  }

  const Tree& tree_;
  std::vector<Point>& places_;
  std::vector<std::size_t> begin_;  // of each node's subtree in preorder
  std::vector<std::size_t> end_;
};

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

std::vector<Point> UnrootedLayout(const Tree& tree) {
  std::vector<Point> places = EqualAngle(tree);
  Daylight daylight(tree, places);
  for (int pass = 0; pass < kPasses; ++pass) {
    for (const int node : tree.preorder) {
      if (!tree.IsTaxon(node)) daylight.Spread(node);
    }
  }
  return places;
}

std::vector<Point> PhylogramLayout(const Tree& tree) {
  std::vector<Point> places(tree.nodes.size());
  double row = 0;
  for (const int node : tree.preorder) {
    if (tree.IsTaxon(node)) places[Index(node)].y = row++;
    for (const int child : tree.At(node).children) {
      places[Index(child)].x = places[Index(node)].x + tree.ShownLength(child);
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
