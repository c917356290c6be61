// The length of the tree after an SPR move, from the sums of the tree before it.
//
// X, held by w between o and v1, goes into the edge (vk, t); h1..hk hang from the way there:
//
//        X
//        |                                  Only the edges drawn here get another length. Each is had from
//   o ---w---v1---v2--- ... ---vk---t       the four subtrees around it: their sums in the tree as it is,
//            |    |            |            with X taken out of the subtree it is in now and put into the
//            h1   h2           hk           one it will be in.
#include <algorithm>

#include "core/index.h"
#include "wide/criterion/ols_neighbourhood.h"

namespace zorvek::wide {

namespace {

// An edge and the edges next to it: a leaf (part 0) and the two subtrees at its other end, or the four
// subtrees around an internal edge, 0 and 1 at one end, 2 and 3 at the other.
constexpr int kExternal = 3;
constexpr int kInternal = 4;

}  // namespace

struct OlsNeighbourhood::Parts {
  int count = kInternal;
  double leaves[kInternal] = {};
  double moved[kInternal] = {};  // S(X, part without X)
  double sum[kInternal][kInternal] = {};

  void Set(int i, int j, double value) { sum[i][j] = sum[j][i] = value; }

  // Takes X, with its number of leaves, out of a part (sign -1) or puts it in (sign 1).
  void Move(int part, double sign, double moved_leaves) {
    leaves[part] += sign * moved_leaves;
    for (int other = 0; other < count; ++other) {
      if (other != part) Set(part, other, sum[part][other] + sign * moved[other]);
    }
  }

  double Average(int i, int j) const { return sum[i][j] / (leaves[i] * leaves[j]); }

  // What the edge adds to the length of the tree.
  double Length() const {
    const double length = count == kExternal
                              ? (Average(0, 1) + Average(0, 2) - Average(1, 2)) * 0.5
                              : InternalLength({leaves[0], leaves[1], leaves[2], leaves[3],
                                                Average(0, 1), Average(0, 2), Average(0, 3),
                                                Average(1, 2), Average(1, 3), Average(2, 3)});
    return std::max(length, 0.0);
  }
};

OlsNeighbourhood::Side OlsNeighbourhood::Seen(int from, int node) const {
  if (node != Up(from)) return {node, false};
  if (sums_.Parent(from) == sums_.Root()) return {node, false};
  return {from, true};
}

double OlsNeighbourhood::Leaves(Side side) const {
  const double below = leaves_[Index(side.node)];
  return side.beyond ? sums_.Taxa() - below : below;
}

double OlsNeighbourhood::Moved(Side side) const {
  const double below = to_moved_[Index(side.node)];
  return side.beyond ? moved_outward_ - below : below;
}

// S between the subtrees at two neighbours of a node.
double OlsNeighbourhood::AtNode(int node, int f, int g) const {
  const double between = between_[Index(node)];
  const int up = Up(node);
  if (f == up) return Outward(Seen(node, g)) - between;
  if (g == up) return Outward(Seen(node, f)) - between;
  return between;
}

// S between the subtree at the neighbour a of u and that at the neighbour b of v, u and v adjacent.
double OlsNeighbourhood::AcrossEdge(int u, int v, int a, int b) const {
  if (Up(u) != v) return AcrossEdge(v, u, b, a);
  const bool a_left = a == sums_.Left(u);
  if (Up(v) == u) {  // the edge between the root's children
    if (u != sums_.Left(sums_.Root())) return AcrossEdge(v, u, b, a);
    const bool b_left = b == sums_.Left(v);
    const double left = sums_.Central();
    if (a_left) return b_left ? left : across_[Index(u)] - left;
    if (b_left) return across_[Index(v)] - left;
    return outward_[Index(u)] - across_[Index(u)] - across_[Index(v)] + left;
  }
  const double to_sibling = a_left ? across_[Index(u)] : between_[Index(v)] - across_[Index(u)];
  if (b != Up(v)) return to_sibling;
  return outward_[Index(a)] - between_[Index(u)] - to_sibling;
}

double OlsNeighbourhood::Between(Side x, Side y) const {
  if (x.beyond) return sums_.Beyond(y.node, x.node);
  if (y.beyond) return sums_.Beyond(x.node, y.node);
  return sums_.Between(x.node, y.node);
}

void OlsNeighbourhood::Describe(Parts& parts, int place, Side side) const {
  parts.leaves[place] = Leaves(side);
  parts.moved[place] = Moved(side);
}

// Around the edge between internal nodes u and v: a and the other neighbour of u, c and that of v.
OlsNeighbourhood::Parts OlsNeighbourhood::AroundEdge(int u, int v, int a, int c) const {
  const auto other = [this](int node, int skipped, int named) {
    const auto [f, g] = topology_.Others(node, skipped);
    return f == named ? g : f;
  };
  const int b = other(u, v, a);
  const int d = other(v, u, c);
  Parts parts;
  Describe(parts, 0, Seen(u, a));
  Describe(parts, 1, Seen(u, b));
  Describe(parts, 2, Seen(v, c));
  Describe(parts, 3, Seen(v, d));
  parts.Set(0, 1, AtNode(u, a, b));
  parts.Set(0, 2, AcrossEdge(u, v, a, c));
  parts.Set(0, 3, AcrossEdge(u, v, a, d));
  parts.Set(1, 2, AcrossEdge(u, v, b, c));
  parts.Set(1, 3, AcrossEdge(u, v, b, d));
  parts.Set(2, 3, AtNode(v, c, d));
  return parts;
}

// The three subtrees at a node on the way, X taken out: what hangs there, what is behind, what is ahead.
OlsNeighbourhood::Parts OlsNeighbourhood::AroundNode(int node, int behind, int hanging,
                                                     int ahead) const {
  Parts parts;
  parts.count = kExternal;
  Describe(parts, 0, Seen(node, hanging));
  Describe(parts, 1, Seen(node, behind));
  Describe(parts, 2, Seen(node, ahead));
  parts.Set(0, 1, AtNode(node, hanging, behind));
  parts.Set(0, 2, AtNode(node, hanging, ahead));
  parts.Set(1, 2, AtNode(node, behind, ahead));
  parts.Move(1, -1, moved_leaves_);
  return parts;
}

double OlsNeighbourhood::PositiveLength(int u, int v) const {
  return std::max(lengths_[Index(Up(u) == v ? u : v)], 0.0);
}

// Of the edge from a node on the way to the next one.
double OlsNeighbourhood::PathLength(int node, int behind, int next, int ahead) const {
  Parts parts = AroundEdge(node, next, behind, ahead);
  parts.Move(0, -1, moved_leaves_);
  parts.Move(2, 1, moved_leaves_);
  return parts.Length();
}

// Of the edge to what hangs from a node on the way.
double OlsNeighbourhood::HangingLength(int node, int behind, int hanging, int ahead) const {
  if (topology_.IsLeaf(hanging)) {
    Parts parts = AroundNode(node, behind, hanging, ahead);
    parts.Move(2, 1, moved_leaves_);
    return parts.Length();
  }
  Parts parts = AroundEdge(node, hanging, behind, topology_.Others(hanging, node).first);
  parts.Move(0, -1, moved_leaves_);
  parts.Move(1, 1, moved_leaves_);
  return parts.Length();
}

// Of the edge (o, v1) that closes behind w: o and v1 are the other neighbours of w.
double OlsNeighbourhood::ClosedLength(int held_by, int other, int node, int ahead) const {
  const auto [f, g] = topology_.Others(node, held_by);
  const int hanging = f == ahead ? g : f;
  const Parts at_node = AroundNode(node, held_by, hanging, ahead);  // hanging, all at o, ahead
  Parts parts;
  if (topology_.IsLeaf(other)) {
    parts = at_node;
    std::swap(parts.leaves[0], parts.leaves[1]);
    std::swap(parts.moved[0], parts.moved[1]);
    parts.Set(0, 2, at_node.sum[1][2]);
    parts.Set(1, 2, at_node.sum[0][2]);
    parts.Move(2, 1, moved_leaves_);
    return parts.Length();
  }
  const auto [a, b] = topology_.Others(other, held_by);
  Describe(parts, 0, Seen(other, a));
  Describe(parts, 1, Seen(other, b));
  Describe(parts, 2, Seen(node, hanging));
  Describe(parts, 3, Seen(node, ahead));
  parts.Set(0, 1, AtNode(other, a, b));
  parts.Set(0, 2, Between(Seen(other, a), Seen(node, hanging)));
  parts.Set(1, 2, at_node.sum[0][1] - parts.sum[0][2]);
  parts.Set(0, 3, Outward(Seen(other, a)) - parts.sum[0][1] - parts.sum[0][2] - parts.moved[0]);
  parts.Set(1, 3, at_node.sum[1][2] - parts.sum[0][3]);
  parts.Set(2, 3, at_node.sum[0][2]);
  parts.Move(3, 1, moved_leaves_);
  return parts.Length();
}

// Of the three edges at w in its new place, between vk, t and X.
double OlsNeighbourhood::TargetLengths(const SprMove& move) const {
  const auto [node, subtree, from, to, gain] = move;
  const Side target = Seen(from, to);
  const double to_target = Moved(target);
  const double rest = sums_.Taxa() - moved_leaves_ - Leaves(target);
  const double rest_target = Outward(target) - to_target;
  const double rest_moved = moved_outward_ - to_target;

  const auto [f, g] = topology_.Others(from, behind_[Index(from)]);
  const int hanging = f == to ? g : f;
  const Parts at_from = AroundNode(from, behind_[Index(from)], hanging, to);
  Parts back;  // what hangs at vk, what is behind; X, t
  for (int place : {0, 1}) {
    back.leaves[place] = at_from.leaves[place];
    back.Set(place, 2, at_from.moved[place]);
    back.Set(place, 3, at_from.sum[place][2]);
  }
  back.leaves[2] = moved_leaves_;
  back.leaves[3] = Leaves(target);
  back.Set(0, 1, at_from.sum[0][1]);
  back.Set(2, 3, to_target);

  // The edge to one end, `head`, whose subtrees stand at `at`, the two others being `x` and all the rest.
  const auto edge_to = [&](int head, int at, double head_leaves, double x_leaves, double head_x,
                           double head_rest, double x_rest, auto part_x) {
    Parts parts;
    parts.count = topology_.IsLeaf(head) ? kExternal : kInternal;
    const int last = parts.count - 1;
    parts.leaves[last - 1] = x_leaves;
    parts.leaves[last] = rest;
    parts.Set(last - 1, last, x_rest);
    if (parts.count == kExternal) {
      parts.leaves[0] = head_leaves;
      parts.Set(0, 1, head_x);
      parts.Set(0, 2, head_rest);
      return parts.Length();
    }
    const auto [a, b] = topology_.Others(head, at);
    const Side side_a = Seen(head, a);
    parts.leaves[0] = Leaves(side_a);
    parts.leaves[1] = Leaves(Seen(head, b));
    parts.Set(0, 1, AtNode(head, a, b));
    parts.Set(0, 2, part_x(side_a));
    parts.Set(1, 2, head_x - parts.sum[0][2]);
    parts.Set(0, 3, Outward(side_a) - parts.sum[0][1] - parts.sum[0][2]);
    parts.Set(1, 3, head_rest - parts.sum[0][3]);
    return parts.Length();
  };
  return back.Length() +
         edge_to(to, from, Leaves(target), moved_leaves_, to_target, rest_target, rest_moved,
                 [this](Side part) { return Moved(part); }) +
         edge_to(subtree, node, moved_leaves_, Leaves(target), to_target, rest_moved, rest_target,
                 [&](Side part) { return Between(part, target); });
}

double OlsNeighbourhood::LengthAfter(const SprMove& move) {
  const auto [held_by, subtree, from, to, gain] = move;
  double change = TargetLengths(move) - PositiveLength(from, to);
  int ahead = to;
  int node = from;
  for (;;) {
    const int behind = behind_[Index(node)];
    const auto [f, g] = topology_.Others(node, behind);
    const int hanging = f == ahead ? g : f;
    change += HangingLength(node, behind, hanging, ahead) - PositiveLength(node, hanging);
    if (behind == held_by) break;
    change +=
        PathLength(behind, behind_[Index(behind)], node, ahead) - PositiveLength(behind, node);
    ahead = node;
    node = behind;
  }
  const auto [a, b] = topology_.Others(held_by, subtree);
  const int other = a == node ? b : a;
  change += ClosedLength(held_by, other, node, ahead);
  for (const int near : topology_.At(held_by)) change -= PositiveLength(held_by, near);
  return Length() + change;
}

}  // namespace zorvek::wide
