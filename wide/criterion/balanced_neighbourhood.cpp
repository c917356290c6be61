// The averages are in rows by Numbering. A pair of nodes neither of which is below the other is got from
// the children of the later one; a pair of a node and one below it from the parent of the upper one and
// its child on the other side.
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
#include <numeric>
#include <utility>

#include "core/index.h"
#include "core/parallel.h"

namespace zorvek::wide {

namespace {

constexpr double kShorter = 1e-12;   // share of the largest distance
constexpr int kMostExponent = 1000;  // of the unit, so that it and its inverse are ordinary numbers
constexpr int kBlock = 256;          // columns of D that are filled together
constexpr std::size_t kRefreshed = 1024;  // nodes whose averages a thread remakes at a time

double Largest(const std::vector<int>& taxa, const double* const* distances) {
  double largest = 0;
  for (const int i : taxa) {
    const double* row = distances[i];
    for (int j = 0; j < i; ++j) largest = std::max(largest, std::fabs(row[j]));
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
                                             const double* const* distances, int threads,
                                             std::vector<int> taxa)
    : distances_(distances),
      taxa_(std::move(taxa)),
      row_(Index(topology.Nodes())),
      node_(row_.size()),
      near_(row_.size()),
      across_(row_.size()),
      first_(row_.size()),
      averages_(MakeLargeTable<double>(row_.size() * row_.size())),
      place_(row_.size()),
      reached_(Index(std::max(1, threads))),
      behind_(row_.size()),
      ways_(reached_.size(), {std::vector<int>(row_.size()), std::vector<int>(row_.size())}) {
  if (taxa_.empty()) {
    taxa_.resize(Index(topology.taxa));
    std::iota(taxa_.begin(), taxa_.end(), 0);
  }
  const double largest = Largest(taxa_, distances);
  unit_ = UnitOf(largest);
  margin_ = kShorter * (largest / unit_);
  Set(topology);
}

// Columns do not depend on each other but within the rows of leaves.
void BalancedNeighbourhood::Set(const Topology& topology) {
  topology_ = topology;
  TakeNumbers();
  const int rows = topology_.Nodes();
  const auto share = [&](auto&& fill) {
    ForEach((rows + kBlock - 1) / kBlock, Threads(),
            [&](int block, int) { fill(block * kBlock, std::min((block + 1) * kBlock, rows)); });
  };
  share([&](int from, int to) {
    for (int u = from; u < to; ++u) {
      if (IsLeaf(u)) FillLeaf(u);
    }
  });
  share([&](int from, int to) { FillUnrelated(from, to); });
  share([&](int from, int to) { FillAncestors(from, to); });
  share([&](int from, int to) { Mirror(from, to); });
  TakeAcross();
  ordered_ = false;
  SumLength();
}

std::pair<int, int> BalancedNeighbourhood::Others(int row, int skipped) const {
  const std::array<int, 3>& near = near_[Index(row)];
  if (near[0] == skipped) return {near[1], near[2]};
  return {near[0], near[1] == skipped ? near[2] : near[1]};
}

void BalancedNeighbourhood::TakeNumbers() {
  Numbering numbering = NumberNodes(topology_);
  row_ = std::move(numbering.row);
  node_ = std::move(numbering.node);
  first_ = std::move(numbering.first);
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

// D between a leaf and the nodes before it, and between taxon 0 and all.
void BalancedNeighbourhood::FillLeaf(int u) {
  const double scale = 1 / unit_;
  const double* own = distances_[TaxonOf(u)];
  double* row = Row(u);
  for (int v = u == 0 ? 1 : 0; v < (u == 0 ? topology_.Nodes() : u); ++v) {
    row[v] =
        IsLeaf(v) ? own[TaxonOf(v)] * scale : (row[v - 1] + row[first_[Index(v - 1)] - 1]) * 0.5;
  }
}

// D of the pairs neither of which is below the other, in the row of the later one, which is no leaf.
void BalancedNeighbourhood::FillUnrelated(int from, int to) {
  for (int u = from; u < topology_.Nodes(); ++u) {
    double* row = Row(u);
    if (u < to) row[u] = 0;
    if (IsLeaf(u)) continue;
    const double* small = Row(u - 1);
    const double* large = Row(first_[Index(u - 1)] - 1);
    const int end = std::min(to, first_[Index(u)]);
    for (int v = from; v < end; ++v) row[v] = (large[v] + small[v]) * 0.5;
  }
}

// D of the pairs of a node and one below it, in the row of the upper one. The columns that are read are
// those of the smaller subtrees.
void BalancedNeighbourhood::FillAncestors(int from, int to) {
  for (int u = topology_.Nodes() - 1; u > from; --u) {
    if (IsLeaf(u) || first_[Index(u)] >= to) continue;
    const int small = u - 1;
    const int large = first_[Index(small)] - 1;
    const std::array<int, 3>& near = near_[Index(u)];
    const int parent = near[0] + near[1] + near[2] - small - large;
    const double* up = Row(parent);
    const double* other = Row(small);
    double* row = Row(u);
    for (int v = std::max(from, first_[Index(u)]); v <= std::min(large, to - 1); ++v) {
      row[v] = (up[v] + other[v]) * 0.5;
    }
    for (int v = std::max(from, first_[Index(small)]); v <= std::min(small, to - 1); ++v) {
      row[v] = (up[v] + At(v, large)) * 0.5;
    }
  }
}

// Copies what is below the diagonal in these columns to the other side, in squares that the cache holds.
void BalancedNeighbourhood::Mirror(int from, int to) {
  constexpr int kSide = 32;
  const int rows = topology_.Nodes();
  for (int v = from; v < to; v += kSide) {
    for (int u = v; u < rows; u += kSide) {
      const int below = std::min(u + kSide, rows);
      for (int j = v; j < std::min(v + kSide, to); ++j) {
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

// The order of the scans: taxon 0, then each node before those below it, of two the one of the later row
// first, so that rows are met in the order of memory as long as no move was made.
void BalancedNeighbourhood::OrderVisits() {
  visits_.clear();
  open_.assign(1, {0, -1, 0, 0});
  while (!open_.empty()) {
    const Hanging here = open_.back();
    open_.pop_back();
    const int place = static_cast<int>(visits_.size());
    const int parent = here.parent < 0 ? 0 : place_[Index(here.parent)];
    place_[Index(here.node)] = place;
    const std::array<int, 3>& near = near_[Index(here.node)];
    const std::size_t back = near[0] == here.parent ? 0 : near[1] == here.parent ? 1 : 2;
    visits_.push_back(
        {here.node, parent, here.sibling, place + 1, across_[Index(here.node)][back]});
    if (here.parent < 0) {
      open_.push_back({near[0], here.node, 0, 0});
    } else if (!IsLeaf(here.node)) {
      const auto [early, late] = std::minmax(near[back == 0 ? 1 : 0], near[back == 2 ? 1 : 2]);
      open_.push_back({early, here.node, late, 0});
      open_.push_back({late, here.node, early, 0});
    }
  }
  for (std::size_t k = visits_.size(); k-- > 1;) {
    int& end = visits_[Index(visits_[k].parent)].end;
    end = std::max(end, visits_[k].end);
  }
  ordered_ = true;
}

void BalancedNeighbourhood::SumLength() {
  double sum = 0;
  for (int leaf = 0; leaf < topology_.taxa; ++leaf) sum += across_[Index(RowOf(leaf))][0];
  length_ = sum * 0.5;
}

std::unique_ptr<Neighbourhood> BalancedNeighbourhood::Contracted(
    const Topology& topology, const std::vector<HangingSubtree>& subtrees) const {
  DistanceMatrix between(topology.taxa);
  for (int i = 0; i < topology.taxa; ++i) {
    for (int j = 0; j < i; ++j) {
      between.Set(i, j, Average(subtrees[Index(i)].root, subtrees[Index(j)].root));
    }
  }
  return std::unique_ptr<Neighbourhood>(new BalancedNeighbourhood(
      topology, std::make_shared<const DistanceMatrix>(std::move(between))));
}

// Equation 3 or 4.
double BalancedNeighbourhood::EdgeLength(int u, int v) const {
  if (topology_.IsLeaf(u)) std::swap(u, v);
  const int at = RowOf(u), end = RowOf(v);
  const auto [a, b] = Others(at, end);
  if (IsLeaf(end)) return (At(end, a) + At(end, b) - At(a, b)) * 0.5 * unit_;
  const auto [c, e] = Others(end, at);
  return ((At(a, c) + At(a, e) + At(b, c) + At(b, e)) * 0.25 - (At(a, b) + At(c, e)) * 0.5) * unit_;
}

// Equation 5, of both NNIs.
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

void BalancedNeighbourhood::Scan() {
  if (!ordered_) OrderVisits();
}

bool BalancedNeighbourhood::BestSpr(int holder, int subtree, SprMove& best, int thread) {
  const double here = Here(holder, subtree);
  SprScan scan = ScanOf(subtree, thread);
  scan.least = here - 2 * margin_;
  if (!ScanPlaces<false>(holder, subtree, scan, best)) return false;
  best.gain = (here - scan.least) * 0.5 * unit_;
  return true;
}

// Of the places with costs c, the one with the least c - heat G is chosen, which is each of them with a
// probability in proportion to exp(-c / heat) [Gumbel1954].
bool BalancedNeighbourhood::Resettle(int holder, int subtree, double heat, const double* noise,
                                     SprMove& move) {
  Scan();
  SprScan scan = ScanOf(subtree, 0);
  scan.heat = 2 * heat / unit_;
  scan.noise = noise + 1;
  scan.least = Here(holder, subtree) - scan.heat * noise[0];
  return ScanPlaces<true>(holder, subtree, scan, move);
}

// Twice what the subtree costs where it is, by equation 6.
double BalancedNeighbourhood::Here(int holder, int subtree) const {
  const int x = RowOf(subtree);
  const auto [a, b] = Others(RowOf(holder), x);
  return At(x, a) + At(x, b) - At(a, b);
}

BalancedNeighbourhood::SprScan BalancedNeighbourhood::ScanOf(int subtree, int thread) {
  std::vector<Reached>& reached = reached_[Index(thread)];
  reached.resize(row_.size());
  return {Row(RowOf(subtree)), nullptr, reached.data(), 0, {-1, -1}, 0, nullptr};
}

// Both sides of the holder are scanned: below it, or below and above. Returns whether any place costs less
// than the scan has.
template <bool kHot>
bool BalancedNeighbourhood::ScanPlaces(int holder, int subtree, SprScan& scan,
                                       SprMove& best) const {
  const int p = RowOf(holder);
  const auto [a, b] = Others(p, RowOf(subtree));
  const int above = visits_[Index(visits_[Index(place_[Index(p)])].parent)].row;
  for (const auto& [start, other] : {std::pair(a, b), std::pair(b, a)}) {
    scan.b = Row(other);
    if (start == above) {
      ScanAbove<kHot>(p, other, scan);
    } else {
      scan.reached[place_[Index(start)]] = {scan.x[other], 0.25};
      ScanBelow<kHot>(place_[Index(start)], scan);
    }
  }
  if (scan.target.first < 0) return false;
  best = {holder, subtree, node_[Index(scan.target.first)], node_[Index(scan.target.second)]};
  return true;
}

// Where a scan has come to a node, finds what it costs to put X into the edge to the next one, twice,
// by equation 6, and gives what is reached there.
// Formula: 2 f(cur,next) = D(X, all behind) + D(X,next) - D(cur,next) - w (D(B,next) - D(X,next)), where
// D(X, all behind) without X is halved with D(X,side) at each node, and D(cur,next), in which X has the
// weight w, is corrected for what B, the subtree beside X, has instead.
inline BalancedNeighbourhood::Reached BalancedNeighbourhood::Cost(const SprScan& scan,
                                                                  const Reached& behind, int next,
                                                                  int side, double across,
                                                                  double& cost) {
  const double x_next = scan.x[next];
  const double near = (behind.near + scan.x[side]) * 0.5;
  cost = near + x_next - across - behind.weight * (scan.b[next] - x_next);
  return {near, behind.weight * 0.5};
}

// Scans the edges below the node at a place, which has been reached.
template <bool kHot>
void BalancedNeighbourhood::ScanBelow(int start, SprScan& scan) const {
  double least = scan.least;
  int found = -1;
  for (int k = start + 1; k < visits_[Index(start)].end; ++k) {
    const Visit& at = visits_[Index(k)];
    double cost;
    scan.reached[k] = Cost(scan, scan.reached[at.parent], at.row, at.beside, at.across, cost);
    if (kHot) cost -= scan.heat * scan.noise[k];
    if (cost < least) {
      least = cost;
      found = k;
    }
  }
  if (found < 0) return;
  const Visit& at = visits_[Index(found)];
  scan.least = least;
  scan.target = {visits_[Index(at.parent)].row, at.row};
}

// Scans the edges outside the subtree of the holder, whose other one besides X is B = `other`.
template <bool kHot>
void BalancedNeighbourhood::ScanAbove(int holder, int other, SprScan& scan) const {
  int from = place_[Index(holder)];
  Reached reached{scan.x[other], 0.25};
  for (int at = visits_[Index(from)].parent; at != 0; at = visits_[Index(at)].parent) {
    const Visit& here = visits_[Index(at)];
    const int up = visits_[Index(here.parent)].row;
    const int down = visits_[Index(from)].beside;
    const int below = place_[Index(down)];
    double cost;
    scan.reached[below] = Cost(scan, reached, down, up, visits_[Index(below)].across, cost);
    if (kHot) cost -= scan.heat * scan.noise[below];
    if (cost < scan.least) {
      scan.least = cost;
      scan.target = {here.row, down};
    }
    ScanBelow<kHot>(below, scan);
    reached = Cost(scan, reached, up, down, here.across, cost);
    if (kHot) cost -= scan.heat * scan.noise[at];
    if (cost < scan.least) {
      scan.least = cost;
      scan.target = {here.row, up};
    }
    from = at;
  }
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
  open_.assign(1, {from, holder, 0, 0});
  while (!open_.empty()) {
    const Hanging here = open_.back();
    open_.pop_back();
    behind_[Index(here.node)] = here.parent;
    if (here.node == a || here.node == b) return here.node;
    if (IsLeaf(here.node)) continue;
    const auto [f, g] = Others(here.node, here.parent);
    open_.push_back({f, here.node, g, 0});
    open_.push_back({g, here.node, f, 0});
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
  hanging_.clear();
  ListHanging(path_.front().left, -1);
  for (int place = 0; place < last; ++place) ListHanging(path_[Index(place)].beside, place);
  ListHanging(path_.back().right, last);
  const std::size_t parts = (hanging_.size() + kRefreshed - 1) / kRefreshed;
  ForEach(static_cast<int>(parts), Threads(), [this](int part, int thread) {
    const std::size_t from = Index(part) * kRefreshed;
    RefreshHanging(from, std::min(from + kRefreshed, hanging_.size()), ways_[Index(thread)]);
  });
  RefreshPath();
  ordered_ = false;
  SumLength();
}

// Lists the nodes of the subtree at `root`, which hangs beside the path at `place`, or off its ends.
void BalancedNeighbourhood::ListHanging(int root, int place) {
  const int last = static_cast<int>(path_.size()) - 1;
  const int at = path_[Index(std::clamp(place, 0, last))].node;
  open_.assign(1, {root, at, -1, 0, place});
  while (!open_.empty()) {
    const Hanging here = open_.back();
    open_.pop_back();
    hanging_.push_back(here);
    if (IsLeaf(here.node)) continue;
    const auto [f, g] = Others(here.node, here.parent);
    open_.push_back({f, here.node, g, here.depth + 1, place});
    open_.push_back({g, here.node, f, here.depth + 1, place});
  }
}

// Remakes what changes of a part of the listed nodes. No two of them change the same averages, nor does any
// read what another changes.
void BalancedNeighbourhood::RefreshHanging(std::size_t from, std::size_t to, Way& way) {
  const auto enter = [&way](const Hanging& here) {
    way.parents[Index(here.depth)] = here.parent;
    way.siblings[Index(here.depth)] = here.sibling;
  };
  int depth = hanging_[from].depth;
  for (std::size_t k = from; depth > 0; --k) {
    if (hanging_[k].depth != depth) continue;
    enter(hanging_[k]);
    --depth;
  }
  for (std::size_t k = from; k < to; ++k) {
    enter(hanging_[k]);
    RefreshFrom(hanging_[k], way);
  }
}

// Remakes D between one node of a hanging subtree and the path, then the nodes above it there.
void BalancedNeighbourhood::RefreshFrom(const Hanging& here, const Way& way) {
  const int v = here.node, place = here.place;
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
  for (std::size_t depth = 1; depth <= Index(here.depth); ++depth) {
    const int u = way.parents[depth];
    outside = (outside + At(way.siblings[depth], v)) * 0.5;
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
