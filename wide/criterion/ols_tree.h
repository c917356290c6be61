// A tree under ordinary least squares: its topology, its exact sums and its edge lengths, kept through
// changes; and the walk of one subtree over the rest of it, which SPR moves are made of.
#ifndef ZORVEK_WIDE_CRITERION_OLS_TREE_H
#define ZORVEK_WIDE_CRITERION_OLS_TREE_H

#include <utility>
#include <vector>

#include "core/index.h"
#include "core/ordered_sum.h"
#include "core/subtree_sums.h"
#include "wide/data/topology.h"

namespace zorvek::wide {

// A subtree as seen from a node outside it: what is below `node`, or all that is not.
struct Side {
  int node;
  bool beyond;
};

// The subtree X that SPR moves take along, and where it may go.
struct SprWalk {
  int holder = -1, subtree = -1;  // X hangs at `holder` by its node `subtree`
  double leaves = 0;
  double outward = 0;            // S(X, all else)
  std::vector<double> to_below;  // S(X, what is below y), X itself left out, per node y outside X
  std::vector<int> behind;       // per node that the walk has met: where it was entered from

  double To(Side side) const {
    const double below = to_below[Index(side.node)];
    return side.beyond ? outward - below : below;
  }
};

// S(X, Y) is the sum of the distances between the leaves of two subtrees, from SubtreeSums. There is a
// root on the edge between two internal nodes; `below` is away from it.
class OlsTree {
 public:
  // Requires: n >= 4, a symmetric matrix of finite numbers; in single precision it outlives this, and its
  // diagonal is 0.  Cost: n^2.
  OlsTree(const Topology& topology, const double* const* distances, Precision precision)
      : OlsTree(topology, SubtreeSums(topology.taxa, distances, precision)) {}

  // The same of sums in which no tree is set yet, leaves that stand for many taxa among them. The edge
  // above such a leaf has a length of no meaning, which is the same in every tree that has the leaf
  // beside the same other one.
  OlsTree(const Topology& topology, SubtreeSums sums);

  // Cost: n, and n for each node at or above a changed one.
  void Set(const Topology& topology);
  void Apply(const SprMove& move);

  const Topology& Current() const { return topology_; }
  int Taxa() const { return sums_.AllLeaves(); }

  // Sums over the edges of their positive lengths, and of their negative ones without the sign.
  double PositiveLength() { return positive_.Total(); }
  double NegativeLength() { return negative_.Total(); }

  double EdgeLength(int u, int v) const { return lengths_[Index(Up(u) == v ? u : v)]; }

  // The neighbour of a node on the way to the root edge; of an end of that edge, the other end.
  int Up(int node) const {
    const int parent = sums_.Parent(node);
    return parent == sums_.Root() ? sums_.Sibling(node) : parent;
  }

  // The subtree at a neighbour of `from`.
  Side Seen(int from, int neighbour) const {
    const bool beyond = neighbour == Up(from);
    return {beyond ? from : neighbour, beyond};
  }

  double Leaves(Side side) const {
    const double below = leaves_[Index(side.node)];
    return side.beyond ? Taxa() - below : below;
  }

  // S(the subtree, all else).
  double Outward(Side side) const { return outward_[Index(side.node)]; }

  // S between the subtrees at the neighbours f and g of a node.
  double AtNode(int node, int f, int g) const {
    const double children = between_[Index(node)];
    const int up = Up(node);
    if (f == up) return outward_[Index(g)] - children;
    if (g == up) return outward_[Index(f)] - children;
    return children;
  }

  // S between the subtree at the neighbour a of u and that at the neighbour b of v, u and v adjacent.
  double AcrossEdge(int u, int v, int a, int b) const;

  // S between any two disjoint subtrees.  Cost: the leaves of the smaller one.
  double Between(Side x, Side y) const;

  // S between a leaf and what is below a node.
  double ToLeaf(int node, int leaf) const { return sums_.ToLeaf(node, leaf); }

  // Takes up the subtree at `subtree`, held by `holder`: all but what the walk itself fills in.
  // Cost: constant for each edge outside the subtree.
  void Begin(int holder, int subtree, SprWalk& walk) const;

 private:
  void Follow();
  LeafRange Below(int node) const {
    return {leaf_order_.data() + first_leaf_[Index(node)],
            leaf_order_.data() + last_leaf_[Index(node)]};
  }
  void RefreshLengths();

  Topology topology_;
  SubtreeSums sums_;
  std::vector<int> order_, place_;           // nodes in preorder, and where each stands there
  std::vector<int> leaf_order_;              // the leaves among them
  std::vector<int> first_leaf_, last_leaf_;  // per node, where those below it begin and end
  std::vector<double> leaves_, outward_, between_, across_;  // per node, as SubtreeSums has them
  std::vector<double> lengths_;                              // of the edge above each node
  OrderedSum positive_, negative_;
  std::vector<std::pair<int, int>> stack_;  // nodes to be followed, and where from
};

}  // namespace zorvek::wide

#endif
