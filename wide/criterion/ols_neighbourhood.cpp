#include "wide/criterion/ols_neighbourhood.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "core/index.h"
#include "wide/criterion/criterion.h"
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

}  // namespace

OlsNeighbourhood::OlsNeighbourhood(const Topology& topology, const double* const* distances,
                                   Precision precision, int threads)
    : OlsNeighbourhood(OlsTree(topology, distances, precision), topology.Nodes(),
                       LargestDistance(topology.taxa, distances)) {
  walkers_.resize(Index(std::max(1, threads)));
}

OlsNeighbourhood::OlsNeighbourhood(OlsTree tree, int closed, double largest_distance)
    : tree_(std::move(tree)),
      closed_(closed),
      largest_(largest_distance),
      inverse_(Index(tree_.Taxa() + 1)),
      walkers_(1) {
  for (std::size_t k = 1; k < inverse_.size(); ++k) inverse_[k] = 1 / static_cast<double>(k);
}

std::unique_ptr<Neighbourhood> OlsNeighbourhood::Contracted(
    const Topology& topology, const std::vector<HangingSubtree>& subtrees) const {
  return std::make_unique<OlsSector>(topology, subtrees, tree_, largest_);
}

void OlsNeighbourhood::Scan() {
  length_ = Length();
  margin_ = Margin();
  negative_ = tree_.NegativeLength();
}

bool OlsNeighbourhood::BestSpr(int holder, int subtree, SprMove& best, int thread) {
  Walker& walker = walkers_[Index(thread)];
  FindMoves(holder, subtree, margin_, walker);
  std::vector<SprMove>& found = walker.found;
  const std::size_t judged = std::min(kJudged, found.size());
  std::partial_sort(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(judged), found.end(),
                    [](const SprMove& x, const SprMove& y) { return x.gain > y.gain; });
  return Judge(judged, walker, best);
}

// The last number of the noise, G, makes exp(-G) exponentially distributed.
bool OlsNeighbourhood::Resettle(int holder, int subtree, double heat, const double* noise,
                                SprMove& move) {
  Scan();
  Walker& walker = walkers_[0];
  FindMoves(holder, subtree, -std::numeric_limits<double>::infinity(), walker);
  const SprMove* chosen = nullptr;
  double most = heat * *noise++;
  for (const SprMove& found : walker.found) {
    const double gain = found.gain + heat * *noise++;
    if (!(gain > most)) continue;
    most = gain;
    chosen = &found;
  }
  if (chosen == nullptr) return false;
  move = *chosen;
  const double unforeseen = OlsSprLength(tree_, walker.walk, move).Change() + move.gain;
  return unforeseen < heat * std::exp(-*noise);
}

// The subtree at u goes to the other side of v, beside the one subtree there or the other.
bool OlsNeighbourhood::BestNni(int u, int v, SprMove& best) {
  Scan();
  const int subtree = Current().Others(u, v).second;
  Walker& walker = walkers_[0];
  tree_.Begin(u, subtree, walker.walk);
  walker.walk.behind[Index(v)] = u;
  const auto [f, g] = Current().Others(v, u);
  walker.found = {{u, subtree, v, f}, {u, subtree, v, g}};
  return Judge(2, walker, best);
}

// The best of the first moves that were found by the length they give, if that is shorter.
bool OlsNeighbourhood::Judge(std::size_t count, const Walker& walker, SprMove& best) const {
  double shortest = length_ - margin_;
  bool any = false;
  for (std::size_t i = 0; i < count; ++i) {
    const SprMove& move = walker.found[i];
    const double length = length_ + OlsSprLength(tree_, walker.walk, move).Change();
    if (length >= shortest) continue;
    shortest = length;
    best = move;
    best.gain = length_ - length;
    any = true;
  }
  return any;
}

double OlsNeighbourhood::LengthAfter(const SprMove& move) {
  return Length() + OlsSprLength(tree_, walkers_[0].walk, move).Change();
}

void OlsNeighbourhood::SprMoves(int holder, int subtree, double margin,
                                std::vector<SprMove>& found) {
  FindMoves(holder, subtree, margin, walkers_[0]);
  found.insert(found.end(), walkers_[0].found.begin(), walkers_[0].found.end());
}

// A move whose raw gain is a loss of more than all negative lengths together cannot shorten the sum of
// the positive ones.
void OlsNeighbourhood::FindMoves(int holder, int subtree, double margin, Walker& walker) const {
  tree_.Begin(holder, subtree, walker.walk);
  walker.found.clear();
  const double least = margin - negative_;
  const auto [a, b] = Current().Others(holder, subtree);
  for (const int start : {a, b}) {
    if (!Ends(start)) walker.open.push_back({start, holder, 0});
  }
  while (!walker.open.empty()) {
    const Step step = walker.open.back();
    walker.open.pop_back();
    walker.walk.behind[Index(step.node)] = step.behind;
    const auto [f, g] = Current().Others(step.node, step.behind);
    const Quartet around = AroundNode(tree_, walker.walk, inverse_, step.node, f, g);
    Advance(step, f, around, least, walker);
    Advance(step, g, Turned(around), least, walker);
  }
}

// The NNI that takes w on into the edge from step.node to `ahead`, the subtree there being C.
void OlsNeighbourhood::Advance(const Step& step, int ahead, const Quartet& around, double least,
                               Walker& walker) const {
  const double gain = step.gain + InterchangeGain(around);
  if (gain > least) {
    walker.found.push_back({walker.walk.holder, walker.walk.subtree, step.node, ahead, gain});
  }
  if (!Ends(ahead)) walker.open.push_back({ahead, step.node, gain});
}

}  // namespace zorvek::wide
