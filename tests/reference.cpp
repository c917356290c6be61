#include "tests/reference.h"

#include "driver/run_state.h"

namespace zorvek::reference {

namespace {

using Leaves = std::vector<int>;

Leaves Collect(double node, int from, TreeTable tree) {
  FC(static_cast<int>(node), from, tree);
  return std::exchange(temp1, {});
}

// The subtrees at u away from v, in the order parent, left, right.
std::pair<Leaves, Leaves> SubtreesAt(int u, int v, TreeTable tree) {
  std::vector<Leaves> found;
  for (const Field side : {kParent, kLeft, kRight}) {
    if (tree[u - n][side] != v) found.push_back(Collect(tree[u - n][side], u, tree));
  }
  return {found.at(0), found.at(1)};
}

template <typename Real>
Real Average(const Leaves& x, const Leaves& y) {
  Real sum = 0;
  for (const int i : x) {
    for (const int j : y) sum += DM1[i][j];
  }
  return sum / static_cast<Real>(x.size() * y.size());
}

template <typename Real>
Real ExternalLength(int leaf, int node, TreeTable tree) {
  const Leaves i = {leaf};
  const auto [a, b] = SubtreesAt(node, leaf, tree);
  return (Average<Real>(i, a) + Average<Real>(i, b) - Average<Real>(a, b)) * Real(0.5);
}

template <typename Real>
Real InternalLength(int u, int v, TreeTable tree) {
  const auto [a, b] = SubtreesAt(u, v, tree);
  const auto [c, d] = SubtreesAt(v, u, tree);
  const Real w = Real(a.size() * d.size() + b.size() * c.size()) /
                 Real((a.size() + b.size()) * (c.size() + d.size()));
  return ((1 - w) * (Average<Real>(a, d) + Average<Real>(b, c)) +
          w * (Average<Real>(a, c) + Average<Real>(b, d)) -
          (Average<Real>(a, b) + Average<Real>(c, d))) *
         Real(0.5);
}

}  // namespace

template <typename Real>
Real Delta(int u, int v, TreeTable tree) {
  const auto [a, b] = SubtreesAt(u, v, tree);
  const auto [c, d] = SubtreesAt(v, u, tree);
  const auto shared = Real(a.size() * d.size() + b.size() * c.size());
  const Real w = shared / Real((a.size() + b.size()) * (c.size() + d.size()));
  const Real w2 = shared / Real((a.size() + c.size()) * (b.size() + d.size()));
  return (((w - 1) * (Average<Real>(a, c) + Average<Real>(b, d)) -
           (w2 - 1) * (Average<Real>(a, b) + Average<Real>(c, d))) -
          (w - w2) * (Average<Real>(a, d) + Average<Real>(b, c))) *
         Real(0.5);
}

template <typename Real>
Real Evaluate(TreeTable tree) {
  Real total = 0;
  const auto add = [&total](Real length) {
    if (length > 0) total += length;
    return static_cast<double>(length);
  };
  const auto edge = [tree](int node, int child) {
    return child < n ? ExternalLength<Real>(child, node, tree)
                     : InternalLength<Real>(child, node, tree);
  };
  for (int row = 0; row < n - 2; ++row) {
    tree[row][kLeftLength] = add(edge(n + row, Id(tree[row], kLeft)));
    tree[row][kRightLength] = add(edge(n + row, Id(tree[row], kRight)));
  }
  tree[n - 2][kLeftLength] = add(InternalLength<Real>(2 * n - 4, 2 * n - 3, tree));
  return total;
}

bool FastLocalSearch(TreeTable tree) {
  double best = -1e8;
  std::pair<int, int> edge;
  for (int row = 0; row < n - 2; ++row) {
    for (const Field side : {kLeft, kRight}) {
      const int child = Id(tree[row], side);
      const double gain = child < n ? -1e8 : Delta<double>(child, n + row, tree);
      if (gain > best) edge = {n + row, child};
      best = std::max(best, gain);
    }
  }
  if (!(best > 0)) return false;
  Interchange(tree, edge.first, edge.second);
  return true;
}

Search::Search(std::uint32_t seed) : best(OPT), current(T1) {
  random.seedWithValue(seed);
  best_length = current_length = reference::Evaluate<double>(best);
}

double Search::Shift(TreeTable tree, double bound) {
  const Field side = random.nextAtMost(1) == 0 ? kLeft : kRight;
  const double* central = tree[n - 4 + static_cast<int>(random.nextAtMost(1))];
  Leaves leaves = Collect(central[side], Id(central, kSelf), tree);
  const int first = leaves[0];
  for (int row = 0; row < n - 2; ++row) {
    for (const Field field : {kLeft, kRight}) {
      if (IsContained(Id(tree[row], field), leaves)) tree[row][field] = -1.0;
    }
  }
  do {
    std::rotate(leaves.begin(), leaves.begin() + 1, leaves.end());
    std::size_t next = 0;
    for (int row = 0; row < n - 2; ++row) {
      for (const Field field : {kLeft, kRight}) {
        if (tree[row][field] == -1.0) tree[row][field] = leaves[next++];
      }
    }
    const double length = reference::Evaluate<double>(tree);
    if (length < bound) return length;
    reference::FastLocalSearch(tree);
  } while (leaves[0] != first);
  return bound;
}

void Search::Step() {
  const auto improves = [this] {
    if (!(current_length < best_length)) return 0;
    best_length = current_length;
    CopyTree(current, best);
    return 1;
  };
  reference::FastLocalSearch(current);
  current_length = reference::Evaluate<double>(current);
  int successes = improves();
  current_length = Shift(current, current_length);
  successes += improves();
  if (successes > 0 || ++stalled <= 20) return;
  stalled = 0;
  CopyTree(best, current);
  std::vector<std::pair<int, int>> eligible;
  for (int row = 0; row < n - 4; ++row) {
    for (const Field side : {kLeft, kRight}) {
      if (current[row][side] >= n) eligible.emplace_back(row, side);
    }
  }
  if (eligible.empty()) return;
  for (;;) {
    const int row = static_cast<int>(random.nextAtMost(static_cast<std::uint32_t>(n - 3)));
    const Field side = random.nextAtMost(1) == 0 ? kLeft : kRight;
    if (std::count(eligible.begin(), eligible.end(), std::pair<int, int>(row, side)) == 0) continue;
    Interchange(current, n + row, Id(current[row], side));
    return;
  }
}

template double Evaluate<double>(TreeTable);
template double Delta<double>(int, int, TreeTable);
template long double Evaluate<long double>(TreeTable);
template long double Delta<long double>(int, int, TreeTable);

}  // namespace zorvek::reference
