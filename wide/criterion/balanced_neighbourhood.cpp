// How the nodes are numbered, on five taxa. The walk sets out from taxon 0, goes into the larger of two
// subtrees first, and gives a node its row when it comes back from it; so the rows of a subtree end at
// its own one and begin at first_ of it.
//
//   0         2            row    0  1  2  3  4  5  6  7         A pair of nodes neither of which is
//    \       /             node   0  2  3  7  4  6  1  5         below the other is got from the children
//     5--6--7              first  0  1  2  1  4  1  6  1         of the later one; a pair of a node and
//    /   |   \                                                   one below it from the parent of the
//   1    4    3                                                  upper one and its child on the other side.
//
// An SPR move of X, held by p, from the edge (a,b) to the edge (c,d) changes the subtrees of the nodes on
// the way, path = a..c, p, and no other pairs than these: a node on the path with any other, and two
// nodes of one subtree that hangs from the path, if the one is above the other.
//
//       h1     X          each node v of such a subtree, at q0: D(v,q) for the nodes q of the path, the
//       |      |          farthest from q0 first; then, from the path on, D(v,u) for the nodes u above v
//   b---a--c---p---d
//          |              Every average is made of others as it would be anew, and never adjusted by a
//          h2             difference, so errors do not add up.
#include "wide/criterion/balanced_neighbourhood.h"

#include <algorithm>
#include <cmath>

#include "core/index.h"

namespace zorvek::wide {

namespace {

constexpr double kShorter = 1e-12;   // share of the largest distance
constexpr int kMostExponent = 1000;  // of the unit, so that it and its inverse are ordinary numbers

double Largest(int n, const double* const* distances) {
  double largest = 0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) largest = std::max(largest, std::fabs(distances[i][j]));
  }
  return largest;
}

double UnitOf(double largest) {
  int exponent = 0;
  std::frexp(largest, &exponent);
  return std::ldexp(1.0, std::clamp(exponent, -kMostExponent, kMostExponent));
}

}  // namespace

BalancedNeighbourhood::BalancedNeighbourhood(const Topology& topology,
                                             const double* const* distances)
    : distances_(distances),
      row_(Index(topology.Nodes())),
      node_(row_.size()),
      near_(row_.size()),
      across_(row_.size()),
      first_(row_.size()),
      averages_(new double[row_.size() * row_.size()]),
      behind_(row_.size()) {
  const double largest = Largest(topology.taxa, distances);
  unit_ = UnitOf(largest);
  margin_ = kShorter * (largest / unit_);
  Set(topology);
}

void BalancedNeighbourhood::Set(const Topology& topology) {
  topology_ = topology;
  NumberNodes();
  FillUnrelated(distances_);
  FillAncestors();
  Mirror();
  TakeAcross();
  SumLength();
}

std::pair<int, int> BalancedNeighbourhood::Others(int row, int skipped) const {
  const std::array<int, 3>& near = near_[Index(row)];
  if (near[0] == skipped) return {near[1], near[2]};
  return {near[0], near[1] == skipped ? near[2] : near[1]};
}

void BalancedNeighbourhood::NumberNodes() {
  const int top = topology_.leaf_adjacent[0];
  std::vector<std::pair<int, int>> order{{top, 0}};  // nodes, each after its parent
  for (std::size_t k = 0; k < order.size(); ++k) {
    const auto [node, parent] = order[k];
    if (topology_.IsLeaf(node)) continue;
    const auto [a, b] = topology_.Others(node, parent);
    order.push_back({a, node});
    order.push_back({b, node});
  }
  std::vector<int> size(row_.size(), 1);
  for (auto at = order.rbegin(); at != order.rend(); ++at) {
    if (at->first != top) size[Index(at->second)] += size[Index(at->first)];
  }
  row_[0] = node_[0] = first_[0] = 0;
  row_[Index(top)] = topology_.Nodes() - 1;
  for (const auto& [node, parent] : order) {
    const int row = RowOf(node);
    node_[Index(row)] = node;
    first_[Index(row)] = row - size[Index(node)] + 1;
    if (topology_.IsLeaf(node)) continue;
    auto [large, small] = topology_.Others(node, parent);
    if (size[Index(large)] < size[Index(small)]) std::swap(large, small);
    row_[Index(small)] = row - 1;
    row_[Index(large)] = row - 1 - size[Index(small)];
  }
  for (int row = 0; row < topology_.Nodes(); ++row) {
    const int node = node_[Index(row)];
    std::array<int, 3>& near = near_[Index(row)];
    if (topology_.IsLeaf(node)) {
      near = {RowOf(topology_.leaf_adjacent[Index(node)]), -1, -1};
    } else {
      for (std::size_t k = 0; k < 3; ++k) near[k] = RowOf(topology_.At(node)[k]);
    }
  }
}

// D of the pairs neither of which is below the other, in the row of the later one.
void BalancedNeighbourhood::FillUnrelated(const double* const* distances) {
  const double scale = 1 / unit_;
  const int rows = topology_.Nodes();
  for (int u = 0; u < rows; ++u) {
    double* row = Row(u);
    row[u] = 0;
    if (!IsLeaf(u)) {
      const double* small = Row(u - 1);
      const double* large = Row(first_[Index(u - 1)] - 1);
      for (int v = 0; v < first_[Index(u)]; ++v) row[v] = (large[v] + small[v]) * 0.5;
      continue;
    }
    const double* own = distances[node_[Index(u)]];
    for (int v = u == 0 ? 1 : 0; v < (u == 0 ? rows : u); ++v) {
      row[v] = IsLeaf(v) ? own[node_[Index(v)]] * scale
                         : (row[v - 1] + row[first_[Index(v - 1)] - 1]) * 0.5;
    }
  }
  for (int u = 1; u < rows; ++u) Row(u)[0] = Row(0)[u];
}

// D of the pairs of a node and one below it, in the row of the upper one. The columns that are read are
// those of the smaller subtrees.
void BalancedNeighbourhood::FillAncestors() {
  for (int u = topology_.Nodes() - 1; u > 0; --u) {
    if (IsLeaf(u)) continue;
    const int small = u - 1;
    const int large = first_[Index(small)] - 1;
    const std::array<int, 3>& near = near_[Index(u)];
    const int parent = near[0] + near[1] + near[2] - small - large;
    const double* up = Row(parent);
    const double* other = Row(small);
    double* row = Row(u);
    for (int v = first_[Index(large)]; v <= large; ++v) row[v] = (up[v] + other[v]) * 0.5;
    for (int v = first_[Index(small)]; v <= small; ++v) row[v] = (up[v] + At(v, large)) * 0.5;
  }
}

// Copies what is below the diagonal to the other side, in squares that the cache holds.
void BalancedNeighbourhood::Mirror() {
  constexpr int kSide = 32;
  const int rows = topology_.Nodes();
  for (int u = 0; u < rows; u += kSide) {
    for (int v = 0; v <= u; v += kSide) {
      const int below = std::min(u + kSide, rows);
      for (int j = v; j < std::min(v + kSide, below); ++j) {
        double* row = Row(j);
        for (int i = std::max(u, j + 1); i < below; ++i) row[i] = At(i, j);
      }
    }
  }
}

void BalancedNeighbourhood::TakeAcross() {
  for (int u = 0; u < topology_.Nodes(); ++u) {
    for (std::size_t k = 0; k < (IsLeaf(u) ? 1 : 3); ++k) {
      across_[Index(u)][k] = At(u, near_[Index(u)][k]);
    }
  }
}

void BalancedNeighbourhood::SumLength() {
  double sum = 0;
  for (int leaf = 0; leaf < topology_.taxa; ++leaf) sum += across_[Index(RowOf(leaf))][0];
  length_ = sum * 0.5;
}

std::unique_ptr<Neighbourhood> BalancedNeighbourhood::Contracted(
    const Topology& topology, const std::vector<int>& roots) const {
  DistanceMatrix between(topology.taxa);
  for (int i = 0; i < topology.taxa; ++i) {
    for (int j = 0; j < i; ++j) between.Set(i, j, Average(roots[Index(i)], roots[Index(j)]));
  }
  return std::unique_ptr<Neighbourhood>(new BalancedNeighbourhood(
      topology, std::make_shared<const DistanceMatrix>(std::move(between))));
}

double BalancedNeighbourhood::EdgeLength(int u, int v) const {
  if (topology_.IsLeaf(u)) std::swap(u, v);
  const int at = RowOf(u), end = RowOf(v);
  const auto [a, b] = Others(at, end);
  if (IsLeaf(end)) return (At(end, a) + At(end, b) - At(a, b)) * 0.5 * unit_;
  const auto [c, e] = Others(end, at);
  return ((At(a, c) + At(a, e) + At(b, c) + At(b, e)) * 0.25 - (At(a, b) + At(c, e)) * 0.5) * unit_;
}

// Trading the places of B and C around (A,B | C,E) changes the length by
// (D(A,C) + D(B,E) - D(A,B) - D(C,E)) / 4  [Desper2002, equation 9].
bool BalancedNeighbourhood::BestNni(int u, int v, SprMove& best) {
  const int at = RowOf(u), end = RowOf(v);
  const auto [a, b] = Others(at, end);
  const auto [c, e] = Others(end, at);
  const double now = At(a, b) + At(c, e);
  const double with_c = (now - At(a, c) - At(b, e)) * 0.25;
  const double with_e = (now - At(a, e) - At(b, c)) * 0.25;
  const double gain = std::max(with_c, with_e);
  if (!(gain > margin_)) return false;
  const int to = gain == with_c ? e : c;  // B goes beside it
  best = {u, node_[Index(b)], v, node_[Index(to)], gain * unit_};
  return true;
}

bool BalancedNeighbourhood::BestSpr(int holder, int subtree, SprMove& best) {
  const int x = RowOf(subtree), p = RowOf(holder);
  const auto [a, b] = Others(p, x);
  const double here = At(x, a) + At(x, b) - At(a, b);
  Target target{-1, -1};
  double least = here - 2 * margin_;
  least = Walk(x, a, b, p, least, target);
  least = Walk(x, b, a, p, least, target);
  if (target.first < 0) return false;
  best = {holder, subtree, node_[Index(target.first)], node_[Index(target.second)],
          (here - least) * 0.5 * unit_};
  return true;
}

// Finds the edge on the side of `start` where putting X = `subtree` in costs least, if that is below
// `least` (twice the cost each), and returns that.
// Formula: 2 f(cur,next) = D(X, all behind) + D(X,next) - D(cur,next) - w (D(B,next) - D(X,next)), where
// D(X, all behind) without X is halved with D(X,side) at each node, and D(cur,next), in which X has the
// weight w, is corrected for what B, the subtree beside X, has instead.
double BalancedNeighbourhood::Walk(int subtree, int start, int other, int holder, double least,
                                   Target& target) {
  if (IsLeaf(start)) return least;
  const double* x = Row(subtree);
  const double* b = Row(other);
  stack_.clear();
  stack_.push_back({start, holder, x[other], 0.25});
  while (!stack_.empty()) {
    const Step step = stack_.back();
    stack_.pop_back();
    const std::array<int, 3>& near = near_[Index(step.node)];
    const std::array<double, 3>& across = across_[Index(step.node)];
    const std::size_t f = near[0] == step.behind ? 1 : 0;
    const std::size_t g = near[2] == step.behind ? 1 : 2;
    const double xf = x[near[f]], xg = x[near[g]];
    const auto look = [&](std::size_t next, double x_next, double x_side) {
      const int node = near[next];
      const double near_x = (step.near + x_side) * 0.5;
      const double cost = near_x + x_next - across[next] - step.weight * (b[node] - x_next);
      if (cost < least) {
        least = cost;
        target = {step.node, node};
      }
      if (!IsLeaf(node)) stack_.push_back({node, step.node, near_x, step.weight * 0.5});
    };
    look(f, xf, xg);
    look(g, xg, xf);
  }
  return least;
}

void BalancedNeighbourhood::Write(int u, int v, double average) {
  Row(u)[v] = average;
  Row(v)[u] = average;
}

void BalancedNeighbourhood::WriteAcross(int u, int v, double average) {
  Write(u, v, average);
  for (const auto& [at, end] : {std::pair(u, v), std::pair(v, u)}) {
    const std::array<int, 3>& near = near_[Index(at)];
    across_[Index(at)][near[0] == end ? 0 : near[1] == end ? 1 : 2] = average;
  }
}

// Takes the links of the nodes around a move that was made.
void BalancedNeighbourhood::Link(const SprMove& move) {
  const int p = RowOf(move.holder);
  const auto [a, b] = Others(p, RowOf(move.subtree));
  const auto replace = [this](int row, int before, int now) {
    std::array<int, 3>& near = near_[Index(row)];
    near[near[0] == before ? 0 : near[1] == before ? 1 : 2] = now;
  };
  const int from = RowOf(move.from), to = RowOf(move.to);
  replace(a, p, b);
  replace(b, p, a);
  replace(from, to, p);
  replace(to, from, p);
  replace(p, a, from);
  replace(p, b, to);
  FindPath(p, from, to, a, b);
}

// The node a or b, whichever comes first on the way from the holder over `from`; -1 if none does.
int BalancedNeighbourhood::FindEnd(int holder, int from, int a, int b) {
  stack_.assign(1, {from, holder, 0, 0});
  while (!stack_.empty()) {
    const Step step = stack_.back();
    stack_.pop_back();
    behind_[Index(step.node)] = step.behind;
    if (step.node == a || step.node == b) return step.node;
    if (IsLeaf(step.node)) continue;
    const auto [f, g] = Others(step.node, step.behind);
    stack_.push_back({f, step.node, 0, 0});
    stack_.push_back({g, step.node, 0, 0});
  }
  return -1;
}

// Fills path_, from the end of the edge (a,b) that is nearer to its new place, to the holder.
void BalancedNeighbourhood::FindPath(int holder, int from, int to, int a, int b) {
  int end = FindEnd(holder, from, a, b);
  if (end < 0) {
    std::swap(from, to);
    end = FindEnd(holder, from, a, b);
  }
  path_.clear();
  int left = end == a ? b : a;
  for (int node = end; node != holder; node = behind_[Index(node)]) {
    const int right = behind_[Index(node)];
    const auto [f, g] = Others(node, left);
    path_.push_back({node, left, right, f == right ? g : f});
    left = node;
  }
  const auto [f, g] = Others(holder, left);
  path_.push_back({holder, left, to, f == to ? g : f});
}

void BalancedNeighbourhood::Apply(const SprMove& move) {
  topology_.Apply(move);
  Link(move);
  const int last = static_cast<int>(path_.size());
  RefreshHanging(path_.front().left, -1);
  for (int place = 0; place < last; ++place) RefreshHanging(path_[Index(place)].beside, place);
  RefreshHanging(path_.back().right, last);
  RefreshPath();
  SumLength();
}

// Remakes what changes of the subtree at `root`, which hangs beside the path at `place`, or off its ends.
void BalancedNeighbourhood::RefreshHanging(int root, int place) {
  const int last = static_cast<int>(path_.size()) - 1;
  const int at = path_[Index(std::clamp(place, 0, last))].node;
  open_.assign(1, {root, at, -1, 0});
  while (!open_.empty()) {
    const Hanging here = open_.back();
    open_.pop_back();
    ancestors_.resize(std::max(ancestors_.size(), here.depth + 1));
    beside_.resize(ancestors_.size());
    if (here.depth > 0) {
      ancestors_[here.depth - 1] = here.parent;
      beside_[here.depth - 1] = here.sibling;
    }
    RefreshFrom(place, here);
    if (IsLeaf(here.node)) continue;
    const auto [f, g] = Others(here.node, here.parent);
    open_.push_back({f, here.node, g, here.depth + 1});
    open_.push_back({g, here.node, f, here.depth + 1});
  }
}

// Remakes D between one node of a hanging subtree and the path, then the nodes above it there.
void BalancedNeighbourhood::RefreshFrom(int place, const Hanging& here) {
  const int v = here.node;
  const int last = static_cast<int>(path_.size()) - 1;
  double* row = Row(v);
  double from_right = At(path_.back().right, v);
  for (int j = last; j > place; --j) {
    const PathNode& at = path_[Index(j)];
    from_right = (from_right + At(at.beside, v)) * 0.5;
    Row(at.node)[v] = row[at.node] = from_right;
  }
  double from_left = At(path_.front().left, v);
  for (int j = 0; j < place && j <= last; ++j) {
    const PathNode& at = path_[Index(j)];
    from_left = (from_left + At(at.beside, v)) * 0.5;
    Row(at.node)[v] = row[at.node] = from_left;
  }
  double outside = place < 0 ? from_right : from_left;
  if (place >= 0 && place <= last) {
    const int node = path_[Index(place)].node;
    outside = (from_left + from_right) * 0.5;
    Row(node)[v] = row[node] = outside;
  }
  if (here.depth == 0) return WriteAcross(v, here.parent, outside);
  for (std::size_t k = 0; k < here.depth; ++k) {
    const int u = ancestors_[k];
    outside = (outside + At(beside_[k], v)) * 0.5;
    if (row[u] == outside) return;
    row[u] = Row(u)[v] = outside;
  }
  WriteAcross(v, here.parent, outside);
}

// Remakes D between the nodes of the path.
void BalancedNeighbourhood::RefreshPath() {
  for (std::size_t j = 1; j < path_.size(); ++j) {
    const int v = path_[j].node;
    double average = At(path_.front().left, v);
    for (std::size_t i = 0; i < j; ++i) {
      average = (average + At(path_[i].beside, v)) * 0.5;
      Write(path_[i].node, v, average);
    }
    WriteAcross(path_[j - 1].node, v, average);
  }
}

}  // namespace zorvek::wide
