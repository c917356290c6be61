// Five taxa as the equal-angle layout has them, each subtree in the wedge of its taxa:
//
//     0     1     2       Seen from 6, the taxon 1 and the branches of 5 and 7 take up three sights,
//      \    |    /        the angles between their outermost nodes. Between the sights lie three
//       5---6---7         gaps, the daylight. The branch of 5 stays, the others turn about 6 until
//      /         \        the gaps are equal. Since the sights are then apart, no edge of one branch
//     4           3       crosses one of another, and within a branch nothing has moved.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "core/index.h"
#include "wide/drawing/layout.h"

namespace zorvek::wide {

namespace {

constexpr double kTurn = 2 * 3.14159265358979323846;
constexpr std::size_t kPasses = 3;  // over all heads, for equal daylight
constexpr double kMostLooks = 6e7;  // of a node at a node, in all passes: 1 or 2 s
constexpr double kLeastGap = 1e-6;  // far more than rounding turns a branch

std::vector<int> TaxaBelow(const Tree& tree) {
  std::vector<int> below(tree.nodes.size());
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    if (tree.IsTaxon(*node)) below[Index(*node)] = 1;
    for (const int child : tree.At(*node).children) below[Index(*node)] += below[Index(child)];
  }
  return below;
}

std::vector<Point> EqualAngle(const Tree& tree, const std::vector<double>& lengths,
                              const std::vector<int>& below) {
  std::vector<double> wedge(tree.nodes.size());  // where that of each node begins
  std::vector<Point> places(tree.nodes.size());
  for (const int node : tree.preorder) {
    double begin = wedge[Index(node)];
    for (const int child : tree.At(node).children) {
      const double width = kTurn * below[Index(child)] / tree.taxa;
      const double angle = begin + width / 2;
      const double length = lengths[Index(child)];
      const Point from = places[Index(node)];
      places[Index(child)] = {from.x + length * std::cos(angle), from.y + length * std::sin(angle)};
      wedge[Index(child)] = begin;
      begin += width;
    }
  }
  return places;
}

// Turns branches about their nodes. Nodes that edges of length 0 join stand at one place and count
// as one node, whose name is that of the uppermost, its head. Nodes go by their place in preorder,
// where a subtree is a run.
class Daylight {
 public:
  Daylight(const Tree& tree, const std::vector<double>& lengths, const std::vector<Point>& places)
      : places_(places.size()),
        parent_(places.size()),
        end_(places.size()),
        splits_(places.size()),
        angle_(places.size()) {
    std::vector<std::size_t> rank(places.size());
    for (std::size_t k = 0; k < places.size(); ++k) {
      const int node = tree.preorder[k];
      rank[Index(node)] = k;
      places_[k] = places[Index(node)];
      parent_[k] = node == tree.root ? 0 : rank[Index(tree.At(node).parent)];
      end_[k] = k + 1;
      splits_[k] = lengths[Index(node)] > 0;
    }
    for (std::size_t k = places.size(); k-- > 1;) {
      end_[parent_[k]] = std::max(end_[parent_[k]], end_[k]);
    }
  }

  const std::vector<Point>& Places() const { return places_; }
  bool IsHead(std::size_t node) const {
    return node == 0 || (splits_[node] && end_[node] > node + 1);
  }

  // What is above the head, or at the top the first branch, stays; the others follow in their order,
  // with equal gaps between the sights. Does nothing where the sights leave no gaps.
  void Spread(std::size_t head) {
    std::vector<std::size_t> turning = Branches(head);
    const std::size_t all = turning.size() + (head == 0 ? 0 : 1);
    if (all < 3) return;
    const Sight fixed = head == 0 ? Below(head, turning[0]) : Above(head);
    if (head == 0) turning.erase(turning.begin());
    std::vector<Sight> sights;
    double seen = fixed.to - fixed.from;
    for (const std::size_t branch : turning) {
      sights.push_back(Below(head, branch));
      seen += sights.back().to - sights.back().from;
    }
    const double gap = (kTurn - seen) / static_cast<double>(all);
    if (gap < kLeastGap) return;
    double at = fixed.to + gap;
    for (std::size_t k = 0; k < turning.size(); ++k) {
      Turn(head, turning[k], at - sights[k].from);
      at += sights[k].to - sights[k].from + gap;
    }
  }

 private:
  // The angles between which a branch is seen. They are followed along its edges, so that they are
  // right for a branch that winds about the eye, too.
  struct Sight {
    double from;
    double to;

    void Widen(double angle) {
      from = std::min(from, angle);
      to = std::max(to, angle);
    }
  };

  // The nodes at the far ends of the edges that lead down from a head, in preorder.
  std::vector<std::size_t> Branches(std::size_t head) const {
    std::vector<std::size_t> branches;
    for (std::size_t node = head + 1; node < end_[head];) {
      if (splits_[node]) branches.push_back(node);
      node = splits_[node] ? end_[node] : node + 1;
    }
    return branches;
  }

  Sight Below(std::size_t head, std::size_t branch) {
    Sight sight = First(head, branch);
    for (std::size_t k = branch + 1; k < end_[branch]; ++k) {
      sight.Widen(Follow(head, parent_[k], k));
    }
    return sight;
  }

  // First the way up to the root, then what branches off it.
  Sight Above(std::size_t head) {
    Sight sight = First(head, parent_[head]);
    for (std::size_t node = parent_[head]; node != 0; node = parent_[node]) {
      sight.Widen(Follow(head, node, parent_[node]));
    }
    for (std::size_t k = 0; k < head; ++k) {
      if (end_[k] <= head) sight.Widen(Follow(head, parent_[k], k));
    }
    for (std::size_t k = end_[head]; k < places_.size(); ++k) {
      sight.Widen(Follow(head, parent_[k], k));
    }
    return sight;
  }

  double Angle(std::size_t eye, std::size_t node) const {
    return std::atan2(places_[node].y - places_[eye].y, places_[node].x - places_[eye].x);
  }

  Sight First(std::size_t eye, std::size_t node) {
    angle_[node] = Angle(eye, node);
    return {angle_[node], angle_[node]};
  }

  // The angle at which a node is seen when its neighbour's is known: along an edge it changes by less
  // than half a turn.
  double Follow(std::size_t eye, std::size_t known, std::size_t node) {
    const double angle = Angle(eye, node);
    return angle_[node] = angle + kTurn * std::round((angle_[known] - angle) / kTurn);
  }

  void Turn(std::size_t head, std::size_t branch, double angle) {
    const Point pivot = places_[head];
    const double sine = std::sin(angle);
    const double cosine = std::cos(angle);
    for (std::size_t k = branch; k < end_[branch]; ++k) {
      Point& p = places_[k];
      const Point arm{p.x - pivot.x, p.y - pivot.y};
      p = {pivot.x + arm.x * cosine - arm.y * sine, pivot.y + arm.x * sine + arm.y * cosine};
    }
  }

  std::vector<Point> places_;
  std::vector<std::size_t> parent_;
  std::vector<std::size_t> end_;  // of the run that is the node's subtree
  std::vector<bool> splits_;      // whether the edge above has a length
  std::vector<double> angle_;     // seen from the present head
};

// The heads, those first at which the second largest branch is large: there a turn matters most.
std::vector<std::size_t> ByWeight(const Tree& tree, const std::vector<int>& below,
                                  const Daylight& daylight) {
  std::vector<std::pair<int, std::size_t>> heads;
  for (std::size_t k = 0; k < tree.preorder.size(); ++k) {
    if (!daylight.IsHead(k)) continue;
    const int node = tree.preorder[k];
    int largest = tree.taxa - below[Index(node)];
    int second = 0;
    for (const int child : tree.At(node).children) {
      second = std::max(second, std::min(largest, below[Index(child)]));
      largest = std::max(largest, below[Index(child)]);
    }
    heads.emplace_back(second, k);
  }
  std::stable_sort(heads.begin(), heads.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  std::vector<std::size_t> order;
  for (const auto& head : heads) order.push_back(head.second);
  return order;
}

}  // namespace

std::vector<Point> UnrootedLayout(const Tree& tree) {
  const std::vector<double> lengths = DrawnLengths(tree);
  const std::vector<int> below = TaxaBelow(tree);
  std::vector<Point> places = EqualAngle(tree, lengths, below);
  Daylight daylight(tree, lengths, places);
  const std::vector<std::size_t> heads = ByWeight(tree, below, daylight);
  const double wanted = static_cast<double>(kPasses * heads.size());
  const auto turns = std::min(wanted, kMostLooks / static_cast<double>(places.size()));
  for (std::size_t k = 0; k < static_cast<std::size_t>(turns); ++k) {
    daylight.Spread(heads[k % heads.size()]);
  }
  for (std::size_t k = 0; k < places.size(); ++k) {
    places[Index(tree.preorder[k])] = daylight.Places()[k];
  }
  return places;
}

}  // namespace zorvek::wide
