#include "wide/criterion/ols_neighbourhood.h"

#include <algorithm>

#include "core/index.h"

namespace zorvek::wide {

namespace {

constexpr std::size_t kJudged = 16;  // moves of one subtree that are judged, by decreasing gain

}  // namespace

OlsNeighbourhood::OlsNeighbourhood(const Topology& topology, const double* const* distances)
    : topology_(topology),
      sums_(topology.taxa, distances),
      place_(Index(2 * topology.taxa - 1)),
      leaves_(place_.size()),
      outward_(place_.size()),
      between_(place_.size()),
      across_(place_.size()),
      inverse_(Index(topology.taxa + 1)),
      lengths_(place_.size()),
      positive_(2 * topology.taxa - 2),
      negative_(2 * topology.taxa - 2),
      to_moved_(place_.size()),
      behind_(place_.size()) {
  for (std::size_t k = 1; k < inverse_.size(); ++k) inverse_[k] = 1 / static_cast<double>(k);
  for (int leaf = 0; leaf < topology.taxa; ++leaf) {
    leaves_[Index(leaf)] = 1;
    outward_[Index(leaf)] = sums_.Outward(leaf);
  }
  order_.reserve(place_.size());
  Follow();
}

void OlsNeighbourhood::Set(const Topology& topology) {
  topology_ = topology;
  Follow();
}

void OlsNeighbourhood::Apply(const SprMove& move) {
  topology_.Apply(move);
  Follow();
}

// Orients the links away from the root edge and brings the sums up to date.
void OlsNeighbourhood::Follow() {
  const auto adopt = [this](int node, int left, int right) {
    if (sums_.Left(node) != left || sums_.Right(node) != right)
      sums_.SetChildren(node, left, right);
  };
  adopt(sums_.Root(), topology_.root.first, topology_.root.second);
  order_.clear();
  stack_.assign({{topology_.root.second, topology_.root.first, 0},
                 {topology_.root.first, topology_.root.second, 0}});
  while (!stack_.empty()) {
    const auto [node, behind, unused] = stack_.back();
    stack_.pop_back();
    place_[Index(node)] = static_cast<int>(order_.size());
    order_.push_back(node);
    if (topology_.IsLeaf(node)) continue;
    const auto [left, right] = topology_.Others(node, behind);
    adopt(node, left, right);
    stack_.push_back({right, node, 0});
    stack_.push_back({left, node, 0});
  }
  sums_.Update();
  RefreshLengths();
}

void OlsNeighbourhood::RefreshLengths() {
  for (const int node : sums_.ChangedEdges()) {
    const bool central = sums_.Parent(node) == sums_.Root();
    const double length =
        sums_.IsLeaf(node) ? sums_.ExternalLength(node) : InternalLength(sums_.Around(node));
    lengths_[Index(node)] = length;
    const bool counts = !central || node == topology_.root.first;  // the central edge once
    positive_.Set(node, counts ? std::max(length, 0.0) : 0.0);
    negative_.Set(node, counts ? std::max(-length, 0.0) : 0.0);
    if (sums_.IsLeaf(node)) continue;
    leaves_[Index(node)] = sums_.Leaves(node);
    outward_[Index(node)] = sums_.Outward(node);
    between_[Index(node)] = sums_.Between(node);
    across_[Index(node)] = sums_.Across(node);
  }
}

// Fills to_moved_ for the nodes that the walk of this subtree meets.
void OlsNeighbourhood::SumsTo(int node, int subtree) {
  const bool below = Up(node) != subtree;  // X is below its node, else beyond it
  moved_leaves_ = below ? leaves_[Index(subtree)] : sums_.Taxa() - leaves_[Index(node)];
  moved_outward_ = outward_[Index(below ? subtree : node)];
  const int inside = below ? subtree : node;  // X is what is below this node, or all that is not
  const int first = place_[Index(inside)];
  const int last = first + 2 * sums_.Leaves(inside) - 1;
  const auto pass = [this, inside, below](int from, int to) {
    for (int place = to - 1; place >= from; --place) {
      const int y = order_[Index(place)];
      if (sums_.IsLeaf(y)) {
        const double near = sums_.ToLeaf(inside, y);
        to_moved_[Index(y)] = below ? near : outward_[Index(y)] - near;
      } else {
        to_moved_[Index(y)] = to_moved_[Index(sums_.Left(y))] + to_moved_[Index(sums_.Right(y))];
      }
    }
  };
  if (!below) return pass(first, last);
  to_moved_[Index(subtree)] = 0;
  pass(last, static_cast<int>(order_.size()));
  pass(0, first);
}

bool OlsNeighbourhood::BestSpr(int holder, int subtree, SprMove& best) {
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
  const int subtree = topology_.Others(u, v).second;
  SumsTo(u, subtree);
  behind_[Index(v)] = u;
  const auto [f, g] = topology_.Others(v, u);
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

// A move whose raw gain is a loss of more than all negative lengths together cannot shorten the sum of
// the positive ones.
void OlsNeighbourhood::SprMoves(int holder, int subtree, double margin,
                                std::vector<SprMove>& found) {
  SumsTo(holder, subtree);
  const auto [a, b] = topology_.Others(holder, subtree);
  for (const int start : {a, b}) {
    if (!topology_.IsLeaf(start)) stack_.push_back({start, holder, 0});
  }
  Walk(holder, subtree, margin - negative_.Total(), found);
}

void OlsNeighbourhood::Walk(int holder, int subtree, double least, std::vector<SprMove>& found) {
  // What lies beyond a neighbour ahead: leaves, S to all else, S to X.
  struct Ahead {
    double leaves, outward, moved;
  };
  const double x = moved_leaves_;
  const double inverse_x = inverse_[static_cast<std::size_t>(x)];
  const int taxa = sums_.Taxa();
  while (!stack_.empty()) {
    const Step step = stack_.back();
    stack_.pop_back();
    const std::size_t v = Index(step.node);
    behind_[v] = step.behind;
    const auto [f, g] = topology_.Others(step.node, step.behind);
    const int up = Up(step.node);
    const auto look = [&](int ahead) -> Ahead {
      if (ahead == up) return {taxa - leaves_[v], outward_[v], moved_outward_ - to_moved_[v]};
      const std::size_t y = Index(ahead);
      return {leaves_[y], outward_[y], to_moved_[y]};
    };
    const Ahead to_f = look(f);
    const Ahead to_g = look(g);
    const double fg = f == up   ? to_g.outward - between_[v]
                      : g == up ? to_f.outward - between_[v]
                                : between_[v];
    const double p = taxa - x - to_f.leaves - to_g.leaves;
    const auto inverse = [this](double count) { return inverse_[static_cast<std::size_t>(count)]; };
    const double ip = inverse(p), jf = inverse(to_f.leaves), jg = inverse(to_g.leaves);
    const double average_pf = (to_f.outward - fg - to_f.moved) * ip * jf;
    const double average_pg = (to_g.outward - fg - to_g.moved) * ip * jg;
    const double average_xp = (moved_outward_ - to_f.moved - to_g.moved) * inverse_x * ip;
    const double average_xf = to_f.moved * inverse_x * jf;
    const double average_xg = to_g.moved * inverse_x * jg;
    const double average_fg = fg * jf * jg;
    const auto advance = [&](int ahead, const Quartet& around) {
      const double gain = step.gain + InterchangeGain(around);
      if (gain > least) {
        found.push_back({holder, subtree, step.node, ahead, gain});
      }
      if (!topology_.IsLeaf(ahead)) stack_.push_back({ahead, step.node, gain});
    };
    advance(f, {x, p, to_f.leaves, to_g.leaves, average_xp, average_xf, average_xg, average_pf,
                average_pg, average_fg});
    advance(g, {x, p, to_g.leaves, to_f.leaves, average_xp, average_xg, average_xf, average_pg,
                average_pf, average_fg});
  }
}

}  // namespace zorvek::wide
