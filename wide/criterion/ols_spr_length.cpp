#include "wide/criterion/ols_spr_length.h"

#include <algorithm>
#include <utility>

#include "core/index.h"

namespace zorvek::wide {

namespace {

enum Part { kA, kB, kC, kD };

}  // namespace

// The subtrees around an edge, A and B at one end, C and D at the other, as in Quartet. An edge that ends
// in a leaf has it for A, and no B.
struct OlsSprLength::Parts {
  bool external = false;
  double leaves[4] = {};
  double moved[4] = {};  // S(X, part without X)
  double sum[4][4] = {};

  void Set(int i, int j, double value) { sum[i][j] = sum[j][i] = value; }

  // A is a leaf, with its distances to C and D.
  void Leaf(double to_c, double to_d) {
    external = true;
    leaves[kA] = 1;
    Set(kA, kC, to_c);
    Set(kA, kD, to_d);
  }

  // Takes X, with its number of leaves, out of a part (sign -1) or puts it in (sign 1).
  void Move(int part, double sign, double moved_leaves) {
    leaves[part] += sign * moved_leaves;
    for (const int other : {kA, kB, kC, kD}) {
      if (other != part) Set(part, other, sum[part][other] + sign * moved[other]);
    }
  }

  double Average(int i, int j) const { return sum[i][j] / (leaves[i] * leaves[j]); }

  // What the edge adds to the length of the tree [Rzhetsky1993].
  double Length() const {
    const double length = external
                              ? (Average(kA, kC) + Average(kA, kD) - Average(kC, kD)) * 0.5
                              : InternalLength({leaves[kA], leaves[kB], leaves[kC], leaves[kD],
                                                Average(kA, kB), Average(kA, kC), Average(kA, kD),
                                                Average(kB, kC), Average(kB, kD), Average(kC, kD)});
    return std::max(length, 0.0);
  }
};

OlsSprLength::Stop OlsSprLength::StopAt(int node, int ahead) const {
  const int behind = walk_.behind[Index(node)];
  const auto [f, g] = topology_.Others(node, behind);
  return {node, behind, f == ahead ? g : f, ahead};
}

void OlsSprLength::Describe(Parts& parts, int part, Side side) const {
  parts.leaves[part] = tree_.Leaves(side);
  parts.moved[part] = walk_.To(side);
}

// Around the edge between internal nodes u and v: a and the other neighbour of u are A and B, c and that
// of v are C and D.
OlsSprLength::Parts OlsSprLength::AroundEdge(int u, int v, int a, int c) const {
  const auto other = [this](int node, int skipped, int named) {
    const auto [f, g] = topology_.Others(node, skipped);
    return f == named ? g : f;
  };
  const int b = other(u, v, a);
  const int d = other(v, u, c);
  Parts parts;
  Describe(parts, kA, tree_.Seen(u, a));
  Describe(parts, kB, tree_.Seen(u, b));
  Describe(parts, kC, tree_.Seen(v, c));
  Describe(parts, kD, tree_.Seen(v, d));
  parts.Set(kA, kB, tree_.AtNode(u, a, b));
  parts.Set(kA, kC, tree_.AcrossEdge(u, v, a, c));
  parts.Set(kA, kD, tree_.AcrossEdge(u, v, a, d));
  parts.Set(kB, kC, tree_.AcrossEdge(u, v, b, c));
  parts.Set(kB, kD, tree_.AcrossEdge(u, v, b, d));
  parts.Set(kC, kD, tree_.AtNode(v, c, d));
  return parts;
}

// The three subtrees at a stop, X taken out: A hangs there, C is behind, D ahead.
OlsSprLength::Parts OlsSprLength::AroundStop(const Stop& stop) const {
  const auto [node, behind, hanging, ahead] = stop;
  Parts parts;
  parts.external = true;
  Describe(parts, kA, tree_.Seen(node, hanging));
  Describe(parts, kC, tree_.Seen(node, behind));
  Describe(parts, kD, tree_.Seen(node, ahead));
  parts.Set(kA, kC, tree_.AtNode(node, hanging, behind));
  parts.Set(kA, kD, tree_.AtNode(node, hanging, ahead));
  parts.Set(kC, kD, tree_.AtNode(node, behind, ahead));
  parts.Move(kC, -1, walk_.leaves);
  return parts;
}

// Fills in A and B, the halves of the subtree at `end`, which hangs from `at`; C and D are there. Known
// are the sums of both halves to C and to D, and that of the first half to C.
void OlsSprLength::Halve(Parts& parts, int end, int at, double to_c, double to_d,
                         double half_to_c) const {
  const auto [a, b] = topology_.Others(end, at);
  const Side half = tree_.Seen(end, a);
  parts.leaves[kA] = tree_.Leaves(half);
  parts.leaves[kB] = tree_.Leaves(tree_.Seen(end, b));
  const double halves = tree_.AtNode(end, a, b);
  const double half_to_d = tree_.Outward(half) - halves - half_to_c - parts.moved[kA];
  parts.Set(kA, kB, halves);
  parts.Set(kA, kC, half_to_c);
  parts.Set(kB, kC, to_c - half_to_c);
  parts.Set(kA, kD, half_to_d);
  parts.Set(kB, kD, to_d - half_to_d);
}

// What an edge adds to the length of the tree as it is.
double OlsSprLength::Now(int u, int v) const {
  return std::max(tree_.EdgeLength(u, v), 0.0);
}

// The edge from vi to hi, with X no more behind but ahead.
double OlsSprLength::Hanging(const Stop& stop) const {
  if (topology_.IsLeaf(stop.hanging)) {
    Parts parts = AroundStop(stop);
    parts.Move(kD, 1, walk_.leaves);
    return parts.Length();
  }
  const int half = topology_.Others(stop.hanging, stop.node).first;
  Parts parts = AroundEdge(stop.node, stop.hanging, stop.behind, half);
  parts.Move(kA, -1, walk_.leaves);
  parts.Move(kB, 1, walk_.leaves);
  return parts.Length();
}

// The edge from vi to vi+1, with X no more behind vi but ahead of vi+1, where the way goes on to
// `beyond`.
double OlsSprLength::OnTheWay(const Stop& stop, int beyond) const {
  Parts parts = AroundEdge(stop.node, stop.ahead, stop.behind, beyond);
  parts.Move(kA, -1, walk_.leaves);
  parts.Move(kC, 1, walk_.leaves);
  return parts.Length();
}

// The edge (o, v1) that closes behind w: A and B at o, h1 is C, and all ahead of v1 with X is D.
double OlsSprLength::Closed(const Stop& first) const {
  const auto [node, holder, hanging, ahead] = first;
  const auto [f, g] = topology_.Others(holder, walk_.subtree);
  const int o = f == node ? g : f;
  const Parts at_node = AroundStop(first);  // h1; o; ahead
  Parts parts;
  if (topology_.IsLeaf(o)) {
    parts.Leaf(at_node.sum[kA][kC], at_node.sum[kC][kD]);
    parts.moved[kA] = at_node.moved[kC];
    parts.leaves[kC] = at_node.leaves[kA];
    parts.moved[kC] = at_node.moved[kA];
    parts.leaves[kD] = at_node.leaves[kD];
    parts.moved[kD] = at_node.moved[kD];
    parts.Set(kC, kD, at_node.sum[kA][kD]);
  } else {
    const auto [a, b] = topology_.Others(o, holder);
    const Side half = tree_.Seen(o, a);
    const Side hung = tree_.Seen(node, hanging);
    Describe(parts, kA, half);
    Describe(parts, kB, tree_.Seen(o, b));
    Describe(parts, kC, hung);
    Describe(parts, kD, tree_.Seen(node, ahead));
    parts.Set(kC, kD, at_node.sum[kA][kD]);
    Halve(parts, o, holder, at_node.sum[kA][kC], at_node.sum[kC][kD], tree_.Between(half, hung));
  }
  parts.Move(kD, 1, walk_.leaves);
  return parts.Length();
}

// The edge from w in its new place to vk: A hangs at vk, B is behind it, C is X, D what is at t.
double OlsSprLength::Behind(const Stop& last) const {
  const Side target = tree_.Seen(move_.from, move_.to);
  const Parts at_last = AroundStop(last);
  Parts parts;
  for (const auto& [part, there] : {std::pair(kA, kA), std::pair(kB, kC)}) {
    parts.leaves[part] = at_last.leaves[there];
    parts.Set(part, kC, at_last.moved[there]);
    parts.Set(part, kD, at_last.sum[there][kD]);
  }
  parts.leaves[kC] = walk_.leaves;
  parts.leaves[kD] = tree_.Leaves(target);
  parts.Set(kA, kB, at_last.sum[kA][kC]);
  parts.Set(kC, kD, walk_.To(target));
  return parts.Length();
}

// The edge from w in its new place to t: A and B at t, C is X, D all else.
double OlsSprLength::ToTarget() const {
  const auto [from, to] = std::pair(move_.from, move_.to);
  const Side target = tree_.Seen(from, to);
  const double to_moved = walk_.To(target);
  const double to_rest = tree_.Outward(target) - to_moved;
  Parts parts;
  parts.leaves[kC] = walk_.leaves;
  parts.leaves[kD] = tree_.Taxa() - walk_.leaves - tree_.Leaves(target);
  parts.Set(kC, kD, walk_.outward - to_moved);
  if (topology_.IsLeaf(to)) {
    parts.Leaf(to_moved, to_rest);
  } else {
    const Side half = tree_.Seen(to, topology_.Others(to, from).first);
    Halve(parts, to, from, to_moved, to_rest, walk_.To(half));
  }
  return parts.Length();
}

// The edge from w in its new place to X: A and B in X, C what is at t, D all else.
double OlsSprLength::ToMoved() const {
  const auto [holder, subtree] = std::pair(walk_.holder, walk_.subtree);
  const Side target = tree_.Seen(move_.from, move_.to);
  const double to_target = walk_.To(target);
  const double to_rest = walk_.outward - to_target;
  Parts parts;
  parts.leaves[kC] = tree_.Leaves(target);
  parts.leaves[kD] = tree_.Taxa() - walk_.leaves - tree_.Leaves(target);
  parts.Set(kC, kD, tree_.Outward(target) - to_target);
  if (topology_.IsLeaf(subtree)) {
    parts.Leaf(to_target, to_rest);
  } else {
    const Side half = tree_.Seen(subtree, topology_.Others(subtree, holder).first);
    Halve(parts, subtree, holder, to_target, to_rest, tree_.Between(half, target));
  }
  return parts.Length();
}

// From the target back to where X is now.
double OlsSprLength::Change() const {
  Stop stop = StopAt(move_.from, move_.to);
  double change = Behind(stop) + ToTarget() + ToMoved() - Now(move_.from, move_.to);
  for (;;) {
    change += Hanging(stop) - Now(stop.node, stop.hanging);
    if (stop.behind == walk_.holder) break;
    const Stop before = StopAt(stop.behind, stop.node);
    change += OnTheWay(before, stop.ahead) - Now(before.node, stop.node);
    stop = before;
  }
  change += Closed(stop);
  for (const int near : topology_.At(walk_.holder)) change -= Now(walk_.holder, near);
  return change;
}

}  // namespace zorvek::wide
