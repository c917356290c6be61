// With D(x,y) the balanced average between the subtrees on the far sides of two edges x and y of a node,
// and P, Q the nodes at the ends of an edge e,
//
//   a       c        length = (D(e,c) + D(e,f) - D(c,f) - D(a,b)) / 2     at Q, and D(a,b) at P
//    \     /
//     P-e-Q          where P is a taxon there is no D(a,b). This is the formula in four averages across
//    /     \         the edge, two and two of which make one average at Q.
//   b       f
//
// So three averages at each node are enough. Nodes are taken in the order of their rows, those below
// before those above. A node below has a row of averages between it and all nodes outside, which the node
// above makes its own from two of them; then they are no longer needed. Since the larger subtree comes
// first, no more rows are kept at a time than a number of taxa can be halved.
#include <algorithm>
#include <utility>

#include "core/index.h"
#include "wide/criterion/edge_lengths.h"
#include "wide/criterion/numbering.h"

namespace zorvek::wide {

namespace {

double Mean(double a, double b) {
  return a * 0.5 + b * 0.5;  // the sum might be too large
}

class Lengths {
 public:
  Lengths(const Topology& topology, const double* const* distances)
      : topology_(topology),
        distances_(distances),
        numbering_(NumberNodes(topology)),
        last_(topology.Nodes() - 1),
        sibling_(Index(topology.Nodes()), -1),
        parent_(Index(topology.Nodes()), -1),
        averages_(Index(topology.Nodes())),
        twice_(Index(topology.Nodes())) {
    for (int u = 1; u <= last_; ++u) {
      if (IsLeaf(u)) continue;
      const auto [large, small] = Children(u);
      sibling_[Index(large)] = small;
      sibling_[Index(small)] = large;
      parent_[Index(large)] = parent_[Index(small)] = u;
    }
  }

  std::vector<double> ByNode() {
    for (int u = 1; u <= last_; ++u) IsLeaf(u) ? TakeLeaf(u) : TakeInner(u);
    std::vector<double> lengths(twice_.size());
    for (int u = 1; u <= last_; ++u) {
      lengths[Index(numbering_.node[Index(u)])] = twice_[Index(u)] * 0.5;
    }
    return lengths;
  }

 private:
  bool IsLeaf(int u) const { return topology_.IsLeaf(numbering_.node[Index(u)]); }

  std::pair<int, int> Children(int u) const { return {numbering_.first[Index(u - 1)] - 1, u - 1}; }

  // The averages between a leaf and all nodes but those above it, where the row is not read.
  void TakeLeaf(int u) {
    std::vector<double>& row = averages_[Index(u)];
    row.swap(spare_);
    row.resize(averages_.size());
    const double* own = distances_[numbering_.node[Index(u)]];
    for (int v = 0; v <= last_; ++v) {
      const int node = numbering_.node[Index(v)];
      if (topology_.IsLeaf(node)) {
        row[Index(v)] = own[node];
      } else {
        const auto [large, small] = Children(v);
        row[Index(v)] = Mean(row[Index(large)], row[Index(small)]);
      }
    }
  }

  void TakeInner(int u) {
    const auto [large, small] = Children(u);
    std::vector<double>& row = averages_[Index(large)];
    std::vector<double>& other = averages_[Index(small)];
    const double below = row[Index(small)];
    above_.clear();
    for (int node = u; node != last_; node = parent_[Index(node)]) {
      above_.push_back(sibling_[Index(node)]);
    }
    const double to_large = ToAbove(row);
    const double to_small = ToAbove(other);
    twice_[Index(large)] += below + (to_large - to_small);
    twice_[Index(small)] += below + (to_small - to_large);
    twice_[Index(u)] = (u == last_ ? to_large + to_small : 0) - below;
    for (std::size_t v = 0; v < row.size(); ++v) row[v] = Mean(row[v], other[v]);
    averages_[Index(u)] = std::move(row);
    spare_ = std::move(other);
  }

  // The average between the node of a row and all that is above its parent, taxon 0 among it.
  double ToAbove(const std::vector<double>& row) const {
    double average = row[0];
    for (auto node = above_.rbegin(); node != above_.rend(); ++node) {
      average = Mean(average, row[Index(*node)]);
    }
    return average;
  }

  const Topology& topology_;
  const double* const* distances_;
  const Numbering numbering_;
  const int last_;  // the neighbour of taxon 0
  std::vector<int> sibling_, parent_;
  std::vector<std::vector<double>> averages_;  // those that are needed now
  std::vector<double> twice_;                  // the lengths so far
  std::vector<double> spare_;
  std::vector<int> above_;  // the subtrees beside the way from a node to taxon 0
};

}  // namespace

std::vector<double> BalancedLengths(const Topology& topology, const double* const* distances) {
  return Lengths(topology, distances).ByNode();
}

}  // namespace zorvek::wide
