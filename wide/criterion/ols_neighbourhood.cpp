#include "wide/criterion/ols_neighbourhood.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/index.h"
#include "wide/criterion/ols_sector.h"
#include "wide/criterion/ols_spr_length.h"

namespace zorvek::wide {

namespace {

constexpr std::size_t kJudged = 16;  // moves of one subtree that are judged, by decreasing gain

// The same four subtrees with C and D in each other's places.
Quartet Turned(const Quartet& q) {
  return {q.a, q.b, q.d, q.c, q.ab, q.ad, q.ac, q.bd, q.bc, q.cd};
}

// X, P, F and G as A, B, C and D, X being taken out of P. What is not a sum at v itself comes from
//
//   S(P,F) = S(F, all else) - S(F,G) - S(X,F)       S(X,P) = S(X, all else) - S(X,F) - S(X,G)
Quartet AroundNode(const OlsTree& tree, const SprWalk& walk, const std::vector<double>& inverses,
                   int node, int f, int g) {
  const Side to_f = tree.Seen(node, f);
  const Side to_g = tree.Seen(node, g);
  const double xf = walk.To(to_f);
  const double xg = walk.To(to_g);
  const double fg = tree.AtNode(node, f, g);
  Quartet q;
  q.a = walk.leaves;
  q.c = tree.Leaves(to_f);
  q.d = tree.Leaves(to_g);
  q.b = tree.Taxa() - q.a - q.c - q.d;
  const auto inverse = [&](double count) { return inverses[static_cast<std::size_t>(count)]; };
  const double per_x = inverse(q.a), per_p = inverse(q.b), per_f = inverse(q.c);
  const double per_g = inverse(q.d);
  q.ab = (walk.outward - xf - xg) * per_x * per_p;
  q.ac = xf * per_x * per_f;
  q.ad = xg * per_x * per_g;
  q.bc = (tree.Outward(to_f) - fg - xf) * per_p * per_f;
  q.bd = (tree.Outward(to_g) - fg - xg) * per_p * per_g;
  q.cd = fg * per_f * per_g;
  return q;
}

double Largest(int n, const double* const* distances) {
  double largest = 0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) largest = std::max(largest, std::fabs(distances[i][j]));
  }
  return largest;
}

}  // namespace

OlsNeighbourhood::OlsNeighbourhood(const Topology& topology, const double* const* distances)
    : OlsNeighbourhood(OlsTree(topology, distances), topology.Nodes(),
                       Largest(topology.taxa, distances)) {}

OlsNeighbourhood::OlsNeighbourhood(OlsTree tree, int closed, double largest_distance)
    : tree_(std::move(tree)),
      closed_(closed),
      largest_(largest_distance),
      inverse_(Index(tree_.Taxa() + 1)) {
  for (std::size_t k = 1; k < inverse_.size(); ++k) inverse_[k] = 1 / static_cast<double>(k);
}

std::unique_ptr<Neighbourhood> OlsNeighbourhood::Contracted(
    const Topology& topology, const std::vector<HangingSubtree>& subtrees) const {
  return std::make_unique<OlsSector>(topology, subtrees, tree_, largest_);
}

bool OlsNeighbourhood::BestSpr(int holder, int subtree, SprMove& best, int) {
  found_.clear();
  SprMoves(holder, subtree, Margin(), found_);
  const std::size_t judged = std::min(kJudged, found_.size());
  std::partial_sort(found_.begin(), found_.begin() + static_cast<std::ptrdiff_t>(judged),
                    found_.end(),
                    [](const SprMove& x, const SprMove& y) { return x.gain > y.gain; });
  return Judge(judged, best);
}

// The subtree at u goes to the other side of v, beside the one subtree there or the other.
bool OlsNeighbourhood::BestNni(int u, int v, SprMove& best) {
  const int subtree = Current().Others(u, v).second;
  tree_.Begin(u, subtree, walk_);
  walk_.behind[Index(v)] = u;
  const auto [f, g] = Current().Others(v, u);
  found_ = {{u, subtree, v, f}, {u, subtree, v, g}};
  return Judge(2, best);
}

// The best of the first moves in found_ by the length they give, if that is shorter.
bool OlsNeighbourhood::Judge(std::size_t count, SprMove& best) {
  const double before = Length();
  double shortest = before - Margin();
  bool any = false;
  for (std::size_t i = 0; i < count; ++i) {
    const double length = LengthAfter(found_[i]);
    if (length >= shortest) continue;
    shortest = length;
    best = found_[i];
    best.gain = before - length;
    any = true;
  }
  return any;
}

double OlsNeighbourhood::LengthAfter(const SprMove& move) {
  return Length() + OlsSprLength(tree_, walk_, move).Change();
}

// A move whose raw gain is a loss of more than all negative lengths together cannot shorten the sum of
// the positive ones.
void OlsNeighbourhood::SprMoves(int holder, int subtree, double margin,
                                std::vector<SprMove>& found) {
  tree_.Begin(holder, subtree, walk_);
  const double least = margin - tree_.NegativeLength();
  const auto [a, b] = Current().Others(holder, subtree);
  for (const int start : {a, b}) {
    if (!Ends(start)) stack_.push_back({start, holder, 0});
  }
  while (!stack_.empty()) {
    const Step step = stack_.back();
    stack_.pop_back();
    walk_.behind[Index(step.node)] = step.behind;
    const auto [f, g] = Current().Others(step.node, step.behind);
    const Quartet around = AroundNode(tree_, walk_, inverse_, step.node, f, g);
    Advance(step, f, around, least, found);
    Advance(step, g, Turned(around), least, found);
  }
}

// The NNI that takes w on into the edge from step.node to `ahead`, the subtree there being C.
void OlsNeighbourhood::Advance(const Step& step, int ahead, const Quartet& around, double least,
                               std::vector<SprMove>& found) {
  const double gain = step.gain + InterchangeGain(around);
  if (gain > least) found.push_back({walk_.holder, walk_.subtree, step.node, ahead, gain});
  if (!Ends(ahead)) stack_.push_back({ahead, step.node, gain});
}

}  // namespace zorvek::wide
