// One tree under change: its exact sums, its length, and the best place for each of its subtrees.
//
// For a subtree X held by node w, take X and w out and walk the rest from the place they left. At a
// node v, entered from behind, with the subtrees F and G ahead and P behind, moving w from the edge
// behind v into the edge towards F is one interchange:
//
//        X                      X            The gain of regrafting X into any edge is the sum of
//        the |                      |            gains of the interchanges on the way there. Each
//        needs six
//   P ---w---v--- F   ->   P ---v---w--- F   average distances, and all follow from the sums of the
//   tree
//            |                  |            and from S(X, below y) for every node y, which one
//            pass over G                  G            row X gives. So a target costs a constant,
//            and all targets of
//                                            all subtrees n^2.
//
// Regrafting is ranked by this gain, the decrease of the least-squares length with negative edges
// included [Desper2002], and judged by the sum of the positive lengths.
#ifndef ZORVEK_WIDE_REGRAFTER_H
#define ZORVEK_WIDE_REGRAFTER_H

#include <vector>

#include "tree/ordered_sum.h"
#include "tree/subtree_sums.h"
#include "wide/links.h"
#include "wide/tree.h"

namespace zorvek::wide {

// Moving the subtree at `subtree` with the node that holds it into the edge (from, to).
struct Regraft {
  int node = -1, subtree = -1, from = -1, to = -1;
  double gain = 0;  // decrease of the raw least-squares length
};

// One instance serves one thread. What it says depends on the distances and the links alone.
// Memory: 16 n^2 bytes.
class Regrafter {
 public:
  // Requires: n >= 4.  Cost: n^2.
  Regrafter(const Links& links, const double* const* distances);

  // Takes another tree.  Cost: n, and n for each node at or above a changed one.
  void Set(const Links& links);

  const Links& Tree() const { return links_; }

  // Sum of the positive edge lengths, and of the absolute values of the negative ones.
  double Length() { return positive_.Total(); }
  double Negative() { return negative_.Total(); }

  // Fills `found` with the regrafts of a subtree whose gain exceeds `least`, in the order of the
  // walk. Cost: constant for each edge outside the subtree.
  void Regrafts(int node, int subtree, double least, std::vector<Regraft>& found);

  // What Length() would be after a regraft among those last found.
  // Cost: the number of edges on the way, and the smaller of two subtrees for two pairs.
  double LengthAfter(const Regraft& regraft);

  // Makes a regraft.  Cost: as Set.
  void Apply(const Regraft& regraft);

  // The tree with its lengths.  Cost: n.
  wide::Tree Result() const;

 private:
  struct Step {
    int node, behind;
    double gain;
  };

  // A subtree as seen from a node outside it: what is below `node`, or all that is not.
  struct Side {
    int node;
    bool beyond;
  };

  int Up(int node) const {
    const int parent = sums_.Parent(node);
    return parent == sums_.Root() ? sums_.Sibling(node) : parent;
  }
  void Follow();
  void RefreshLengths();
  void SumsTo(int node, int subtree);
  void Walk(int node, int subtree, double least, std::vector<Regraft>& found);

  // For LengthAfter, in regraft_length.cpp.
  struct Parts;
  Side Seen(int from, int node) const;
  double Leaves(Side side) const;
  double Outward(Side side) const { return outward_[static_cast<std::size_t>(side.node)]; }
  double Moved(Side side) const;
  double AtNode(int node, int f, int g) const;
  double AcrossEdge(int u, int v, int a, int b) const;
  double Between(Side x, Side y) const;
  void Describe(Parts& parts, int place, Side side) const;
  Parts AroundEdge(int u, int v, int a, int c) const;
  Parts AroundNode(int node, int behind, int hanging, int ahead) const;
  double PositiveLength(int u, int v) const;
  double PathLength(int node, int behind, int next, int ahead) const;
  double HangingLength(int node, int behind, int hanging, int ahead) const;
  double ClosedLength(int held_by, int other, int node, int ahead) const;
  double TargetLengths(const Regraft& regraft) const;

  Links links_;
  SubtreeSums sums_;
  std::vector<int> order_, place_;  // nodes in preorder, and where each stands there
  std::vector<double> leaves_, outward_, between_, across_;  // per node, as SubtreeSums has them
  std::vector<double> inverse_;                              // 1 / k
  std::vector<double> lengths_;                              // of the edge above each node
  OrderedSum positive_, negative_;
  std::vector<double> to_moved_;  // S(X, below y) without X itself, per node y
  double moved_outward_ = 0;      // S(X, all else)
  double moved_leaves_ = 0;
  std::vector<int> behind_;  // per node of the last walk: where it was entered from
  std::vector<Step> stack_;
};

}  // namespace zorvek::wide

#endif
