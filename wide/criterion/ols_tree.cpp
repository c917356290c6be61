#include "wide/criterion/ols_tree.h"

#include <algorithm>
#include <utility>

#include "core/index.h"

namespace zorvek::wide {

OlsTree::OlsTree(const Topology& topology, SubtreeSums sums)
    : topology_(topology),
      sums_(std::move(sums)),
      place_(Index(2 * topology.taxa - 1)),
      first_leaf_(place_.size()),
      last_leaf_(place_.size()),
      leaves_(place_.size()),
      outward_(place_.size()),
      between_(place_.size()),
      across_(place_.size()),
      lengths_(place_.size()),
      positive_(2 * topology.taxa - 2),
      negative_(2 * topology.taxa - 2) {
  for (int leaf = 0; leaf < topology.taxa; ++leaf) {
    leaves_[Index(leaf)] = sums_.Leaves(leaf);
    outward_[Index(leaf)] = sums_.Outward(leaf);
  }
  order_.reserve(place_.size());
  Follow();
}

void OlsTree::Set(const Topology& topology) {
  topology_ = topology;
  Follow();
}

void OlsTree::Apply(const SprMove& move) {
  topology_.Apply(move);
  Follow();
}

// Orients the edges away from the root edge and brings the sums up to date.
void OlsTree::Follow() {
  const auto adopt = [this](int node, int left, int right) {
    if (sums_.Left(node) != left || sums_.Right(node) != right) {
      sums_.SetChildren(node, left, right);
    }
  };
  const auto [first, second] = topology_.root;
  adopt(sums_.Root(), first, second);
  order_.clear();
  leaf_order_.clear();
  stack_.assign({{second, first}, {first, second}});
  while (!stack_.empty()) {
    const auto [node, behind] = stack_.back();
    stack_.pop_back();
    place_[Index(node)] = static_cast<int>(order_.size());
    order_.push_back(node);
    first_leaf_[Index(node)] = static_cast<int>(leaf_order_.size());
    if (topology_.IsLeaf(node)) {
      leaf_order_.push_back(node);
      continue;
    }
    const auto [left, right] = topology_.Others(node, behind);
    adopt(node, left, right);
    stack_.emplace_back(right, node);
    stack_.emplace_back(left, node);
  }
  for (auto node = order_.rbegin(); node != order_.rend(); ++node) {
    int& last = last_leaf_[Index(*node)];
    last = topology_.IsLeaf(*node) ? first_leaf_[Index(*node)] + 1
                                   : last_leaf_[Index(sums_.Right(*node))];
  }
  sums_.Update();
  RefreshLengths();
}

void OlsTree::RefreshLengths() {
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

double OlsTree::AcrossEdge(int u, int v, int a, int b) const {
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

double OlsTree::Between(Side x, Side y) const {
  if (x.beyond) return sums_.Beyond(y.node, Below(y.node), x.node);
  if (y.beyond) return sums_.Beyond(x.node, Below(x.node), y.node);
  const bool fewer = Leaves(x) <= Leaves(y);
  return sums_.ToLeaves((fewer ? y : x).node, Below((fewer ? x : y).node));
}

// S(X, below y) is a number of a row at a leaf y, and a sum of two of them above.
void OlsTree::Begin(int holder, int subtree, SprWalk& walk) const {
  const bool below = Up(holder) != subtree;     // X is below its holder, else beyond it
  const int inside = below ? subtree : holder;  // X is what is below this node, or all that is not
  walk.holder = holder;
  walk.subtree = subtree;
  walk.leaves = Leaves({inside, !below});
  walk.outward = outward_[Index(inside)];
  walk.to_below.resize(place_.size());
  walk.behind.resize(place_.size());
  const auto pass = [&](int from, int to) {  // children before parents
    for (int place = to - 1; place >= from; --place) {
      const int y = order_[Index(place)];
      double& to_y = walk.to_below[Index(y)];
      if (sums_.IsLeaf(y)) {
        const double near = sums_.ToLeaf(inside, y);
        to_y = below ? near : outward_[Index(y)] - near;
      } else {
        to_y = walk.to_below[Index(sums_.Left(y))] + walk.to_below[Index(sums_.Right(y))];
      }
    }
  };
  const int first = place_[Index(inside)];
  const LeafRange leaves = Below(inside);
  const int last = place_[Index(leaves.last[-1])] + 1;  // the last node below it is a leaf
  if (!below) return pass(first, last);
  walk.to_below[Index(subtree)] = 0;
  pass(last, static_cast<int>(order_.size()));
  pass(0, first);
}

}  // namespace zorvek::wide
