// Ordinary least squares: one tree under change, its length, and the SPR moves of each of its subtrees.
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
// [Desper2002], and judged by the sum of the positive lengths.
#ifndef ZORVEK_WIDE_CRITERION_OLS_NEIGHBOURHOOD_H
#define ZORVEK_WIDE_CRITERION_OLS_NEIGHBOURHOOD_H

#include <algorithm>
#include <vector>

#include "wide/criterion/neighbourhood.h"
#include "wide/criterion/ols_tree.h"

namespace zorvek::wide {

// Memory: 16 n^2 bytes, 4 n^2 in single precision.
class OlsNeighbourhood : public Neighbourhood {
 public:
  // Requires: what OlsTree does.  Cost: n^2.
  OlsNeighbourhood(const Topology& topology, const double* const* distances,
                   Precision precision = Precision::kDouble, int threads = 1);

  // The same of a tree in which moves are not to reach into the subtrees at the nodes `closed` and above.
  OlsNeighbourhood(OlsTree tree, int closed, double largest_distance);

  int Threads() const override { return static_cast<int>(walkers_.size()); }

  // Cost: n, and n for each node at or above a changed one.
  void Set(const Topology& topology) override { tree_.Set(topology); }

  const Topology& Current() const override { return tree_.Current(); }

  // Sum of the positive edge lengths.
  double Length() override { return tree_.PositiveLength(); }

  // 1e-12 of the length or of the largest distance: where edges are negative, there may be no length left.
  double Margin() override { return std::max(Length(), largest_) * kShorter; }

  void Scan() override;

  // Judges the most promising moves by the length they give.
  // Cost: constant for each edge outside the subtree, and LengthAfter of a few.
  using Neighbourhood::BestSpr;
  bool BestSpr(int holder, int subtree, SprMove& best, int thread) override;

  // Chooses by the decrease of the length with negative edges included, and lets the choice stand with the
  // probability that makes up for the difference [Metropolis1953].
  bool Resettle(int holder, int subtree, double heat, const double* noise, SprMove& move) override;

  // Cost: LengthAfter of two moves.
  bool BestNni(int u, int v, SprMove& best) override;

  // After Scan(), appends the SPR moves of the subtree `subtree` held by `holder` that may shorten the
  // tree by more than `margin`, with the gains by which they are ranked, in the order of the walk.
  // Cost: constant for each edge outside the subtree.
  void SprMoves(int holder, int subtree, double margin, std::vector<SprMove>& found);

  // What Length() would be after a move of the subtree whose moves were asked for last.
  // Cost: the number of edges on the way, and the smaller of two subtrees for two pairs.
  double LengthAfter(const SprMove& move);

  bool MovesAreDear() const override { return false; }

  // Cost: as Set.
  void Apply(const SprMove& move) override { tree_.Apply(move); }

  double EdgeLength(int u, int v) const override { return tree_.EdgeLength(u, v); }

  // The halves of the subtrees, of which each has two for good, are the leaves here.
  // Cost: n for each of them.
  std::unique_ptr<Neighbourhood> Contracted(
      const Topology& topology, const std::vector<HangingSubtree>& subtrees) const override;

 private:
  static constexpr double kShorter = 1e-12;

  // A node that the walk comes to, and the gain of having got w to the edge behind it.
  struct Step {
    int node, behind;
    double gain;
  };

  // What a thread works on.
  struct Walker {
    SprWalk walk;
    std::vector<Step> open;
    std::vector<SprMove> found;
  };

  bool Ends(int node) const { return Current().IsLeaf(node) || node >= closed_; }
  void FindMoves(int holder, int subtree, double margin, Walker& walker) const;
  void Advance(const Step& step, int ahead, const Quartet& around, double least,
               Walker& walker) const;
  bool Judge(std::size_t count, const Walker& walker, SprMove& best) const;

  OlsTree tree_;
  int closed_;
  double largest_;                                 // distance
  double length_ = 0, margin_ = 0, negative_ = 0;  // of the tree when Scan() was called
  std::vector<double> inverse_;                    // 1 / k
  std::vector<Walker> walkers_;                    // by thread
};

}  // namespace zorvek::wide

#endif
