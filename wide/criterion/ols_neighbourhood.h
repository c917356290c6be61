// Ordinary least squares: one tree under change, its exact sums, its length, and the SPR moves of each
// of its subtrees.
//
// For a subtree X held by node w, take X and w out and walk the rest from where they were. At a node v,
// entered from P behind it, with the subtrees F and G ahead, moving w from the edge behind v into the
// edge towards F is one NNI, which trades the places of w's subtree X and of G:
//
//        X                          X
//        |                          |
//   P ---w---v--- F    ->    P ---v---w--- F
//            |                    |
//            G                    G
//
// The gain of an SPR move is the sum of the gains of the NNIs on the way. Each NNI needs six average
// distances, and all of them follow from the sums of the tree and from S(X, below y) for every node y,
// which one row of sums gives. So a target costs a constant, and all targets of all subtrees n^2.
//
// Moves are ranked by this gain, the decrease of the least-squares length with negative edges included
// [Desper2002, equation 12], and judged by the sum of the positive lengths.
#ifndef ZORVEK_WIDE_CRITERION_OLS_NEIGHBOURHOOD_H
#define ZORVEK_WIDE_CRITERION_OLS_NEIGHBOURHOOD_H

#include <vector>

#include "core/index.h"
#include "core/ordered_sum.h"
#include "core/subtree_sums.h"
#include "wide/criterion/neighbourhood.h"

namespace zorvek::wide {

// Memory: 16 n^2 bytes.
class OlsNeighbourhood : public Neighbourhood {
 public:
  // Requires: n >= 4.  Cost: n^2.
  OlsNeighbourhood(const Topology& topology, const double* const* distances);

  // Cost: n, and n for each node at or above a changed one.
  void Set(const Topology& topology) override;

  const Topology& Current() const override { return topology_; }

  // Sum of the positive edge lengths.
  double Length() override { return positive_.Total(); }

  // 1e-12 of the length.
  double Margin() override { return Length() * kShorter; }

  // Judges the most promising moves by the length they give.
  // Cost: constant for each edge outside the subtree, and LengthAfter of a few.
  bool BestSpr(int holder, int subtree, SprMove& best) override;

  // Cost: LengthAfter of two moves.
  bool BestNni(int u, int v, SprMove& best) override;

  // Appends the SPR moves of the subtree `subtree` held by `holder` that may shorten the tree by more
  // than `margin`, with the gains by which they are ranked, in the order of the walk.
  // Cost: constant for each edge outside the subtree.
  void SprMoves(int holder, int subtree, double margin, std::vector<SprMove>& found);

  // What Length() would be after a move of the subtree whose moves were asked for last.
  // Cost: the number of edges on the way, and the smaller of two subtrees for two pairs.
  double LengthAfter(const SprMove& move);

  // Cost: as Set.
  void Apply(const SprMove& move) override;

  double EdgeLength(int u, int v) const override { return lengths_[Index(Up(u) == v ? u : v)]; }

  std::unique_ptr<Neighbourhood> Contracted(const Topology&,
                                            const std::vector<int>&) const override {
    return nullptr;
  }

 private:
  static constexpr double kShorter = 1e-12;  // share of the length

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
  bool Judge(std::size_t count, SprMove& best);
  void SumsTo(int holder, int subtree);
  void Walk(int holder, int subtree, double least, std::vector<SprMove>& found);

  // For LengthAfter, in ols_spr_length.cpp.
  struct Parts;
  Side Seen(int from, int node) const;
  double Leaves(Side side) const;
  double Outward(Side side) const { return outward_[Index(side.node)]; }
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
  double TargetLengths(const SprMove& move) const;

  Topology topology_;
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
  std::vector<SprMove> found_;
};

}  // namespace zorvek::wide

#endif
