// Neighbour joining with a bound on every row of the table of distances, so that few rows are searched.
//
//   place   0   1   2   3   4       Active nodes have places, in the order in which the plain double loop
//       0   .   d   x   d   d       meets them. A new node takes the place of the earlier of the two that
//       1   d   .   x   d   d       it joins; the other place is vacant (x) from then on. When an eighth
//       2   x   x   x   x   x       of the places is vacant they are closed up, in the same order.
//       3   d   d   x   .   d
//       4   d   d   x   d   .       share[i] = r(i) / (m - 2), so Q(i,j) = d(i,j) - (share[i] + share[j]).
//                                   It is -infinity at a vacant place, where Q then is never the least.
//
// A search of row i finds its partner, the place j of the least Q in it, and q, the least Q of its other
// places. From then on d(i,j) stays as it is while both nodes live, so what Q the two have is known in
// every later join, and no other Q of the row falls by more than the shares grow. With growth the sum,
// over the joins so far, of the largest growth of any share in each,
//
//   Q(i,j) now >= q + (share[i] + growth) then - (share[i] + growth) now = level[i] - share[i] - growth.
//
// A join takes the best pair of partners for a start and searches the rows whose bound is not above it,
// the least bound first. A new node's row is searched before the next join, so each pair stands under the
// level of the younger of its nodes, if they are not partners.
#include "wide/search/neighbour_joining.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <tuple>
#include <utility>
#include <vector>

#include "core/index.h"
#include "core/large_table.h"
#include "core/parallel.h"

namespace zorvek::wide {

namespace {

constexpr int kJoinsPerPoll = 16;

// What a search of a row finds: its least Q, the first place where that stands, and the least Q of the
// other places.
template <typename Number>
struct Found {
  Number least, second;
  std::size_t place;
};

// Searches a row for Q(j) = row[j] - (own + share[j]), in strands that do not wait for each other.
template <typename Number>
__attribute__((always_inline)) inline Found<Number> SearchLoop(const Number* row,
                                                               const Number* share, Number own,
                                                               std::size_t count) {
  constexpr std::size_t kStrands = 128 / sizeof(Number);
  const auto q = [=](std::size_t j) { return row[j] - (own + share[j]); };
  Number least[kStrands], second[kStrands];
  for (std::size_t s = 0; s < kStrands; ++s) {
    least[s] = second[s] = std::numeric_limits<Number>::infinity();
  }
  const std::size_t whole = count - count % kStrands;
  for (std::size_t j = 0; j < whole; j += kStrands) {
    for (std::size_t s = 0; s < kStrands; ++s) {
      const Number value = q(j + s);
      const Number above = value < least[s] ? least[s] : value;
      least[s] = value < least[s] ? value : least[s];
      second[s] = above < second[s] ? above : second[s];
    }
  }
  Found<Number> found{least[0], second[0], 0};
  const auto add = [&found](Number value) {
    if (value < found.least) {
      found.second = found.least;
      found.least = value;
    } else if (value < found.second) {
      found.second = value;
    }
  };
  for (std::size_t s = 1; s < kStrands; ++s) {
    add(least[s]);
    add(second[s]);
  }
  for (std::size_t j = whole; j < count; ++j) add(q(j));
  for (; found.place < whole; found.place += kStrands) {
    int met = 0;
    for (std::size_t s = 0; s < kStrands; ++s) met |= q(found.place + s) == found.least;
    if (met != 0) break;
  }
  while (found.place < count && !(q(found.place) == found.least)) ++found.place;
  return found;
}

template <typename Number>
Found<Number> SearchPlain(const Number* row, const Number* share, Number own, std::size_t count) {
  return SearchLoop(row, share, own, count);
}

#if defined(__x86_64__)
template <typename Number>
__attribute__((target("avx2"))) Found<Number> SearchAvx2(const Number* row, const Number* share,
                                                         Number own, std::size_t count) {
  return SearchLoop(row, share, own, count);
}
#endif

// The widest search of a row that this processor has.
template <typename Number>
auto ChooseSearch() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2")) return SearchAvx2<Number>;
#endif
  return SearchPlain<Number>;
}

// What rounding may add to a bound, as a share of its largest term.
template <typename Number>
constexpr double kSlack = 1e-12;
template <>
constexpr double kSlack<float> = 1e-6;

// Sum of a row, in strands.
template <typename Number>
double Sum(const Number* row, std::size_t count) {
  double sums[4] = {};
  const std::size_t whole = count - count % 4;
  for (std::size_t j = 0; j < whole; j += 4) {
    for (std::size_t s = 0; s < 4; ++s) sums[s] += double{row[j + s]};
  }
  for (std::size_t j = whole; j < count; ++j) sums[0] += double{row[j]};
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

// Brings the largest of the distances into 0.5..1 if sums of them could overflow or vanish. Returns the
// exponent of 2 by which they have been divided.
template <typename Number>
int ScaleIfExtreme(int n, Number* const* rows) {
  Number largest = 0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) largest = std::max(largest, std::fabs(rows[i][j]));
  }
  int exponent;
  std::frexp(largest, &exponent);
  if (2 * std::abs(exponent) < std::numeric_limits<Number>::max_exponent) return 0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) rows[i][j] = std::ldexp(rows[i][j], -exponent);
  }
  return exponent;
}

// Calls work(i) for i from 0 to count-1, each once, on so many threads.
template <typename Work>
void ForEachBlock(std::size_t count, int threads, const Work& work) {
  constexpr std::size_t kBlock = 64;
  ForEach(static_cast<int>((count + kBlock - 1) / kBlock), threads, [&](int block, int) {
    const std::size_t begin = Index(block) * kBlock;
    for (std::size_t i = begin; i < std::min(begin + kBlock, count); ++i) work(i);
  });
}

// Two places, and the Q of the nodes there.
struct Pair {
  std::size_t first, second;  // first < second
  double q;
};

template <typename Number>
class Agglomeration {
 public:
  // Takes the rows over.
  Agglomeration(int n, Number* const* distances, int threads)
      : rows_(distances, distances + n),
        node_(Index(n)),
        sum_(Index(n)),
        share_(Index(n), kInfinity),
        level_(Index(n), -kInfinity),
        near_(Index(n), kInfinity),
        partner_(Index(n)),
        twin_(Index(n)),
        active_(n),
        threads_(threads),
        search_(ChooseSearch<Number>()) {
    exponent_ = ScaleIfExtreme(n, distances);
    std::iota(node_.begin(), node_.end(), 0);
    std::iota(twin_.begin(), twin_.end(), 0);
    ForEachRow([this](std::size_t i) { SumRow(i); });
    FindTwins();
    RemakeShares();
    ForEachRow([this](std::size_t i) {
      if (level_[i] < kInfinity) LookAlong(i);
    });
    searched_ = n;
  }

  int Node(std::size_t place) const { return node_[place]; }
  long Searched() const { return searched_; }

  Pair BestPair() {
    Pair best = AnyPair();
    for (std::size_t i = 0; i < Places(); ++i) {
      Offer(i, partner_[i], near_[i] - (share_[i] + share_[partner_[i]]), best);
    }
    bounds_.clear();
    const double limit = Limit(best);
    for (std::size_t i = 0; i < Places(); ++i) {
      const double bound = level_[i] - share_[i];
      if (bound <= limit) bounds_.emplace_back(bound, i);
    }
    std::sort(bounds_.begin(), bounds_.end());
    for (const auto& [bound, i] : bounds_) {
      if (bound > Limit(best)) break;
      Search(i, best);
    }
    return best;
  }

  // The first two nodes, as long as no pair is known.
  Pair AnyPair() const {
    std::size_t second = 1;  // the first place is never vacant
    while (!Active(second)) ++second;
    return {0, second, std::numeric_limits<double>::max()};
  }

  // A random node and its best partner.
  Pair RandomPair(std::mt19937_64& generator) {
    std::size_t place = 0;
    for (auto left = generator() % static_cast<unsigned>(active_); left > 0 || !Active(place);
         ++place) {
      if (Active(place)) --left;
    }
    Pair best = AnyPair();
    Search(place, best);
    return best;
  }

  // The lengths of the edges that the join of a pair makes.
  std::pair<double, double> Lengths(const Pair& pair) const {
    const double apart = double{rows_[pair.first][pair.second]};
    const double first = (apart + (sum_[pair.first] - sum_[pair.second]) / (active_ - 2)) / 2;
    return {std::ldexp(first, exponent_), std::ldexp(apart - first, exponent_)};
  }

  // The length of the edge of a place when three are left.
  double LastLength(std::size_t place) const {
    const std::size_t next = (place + 1) % 3, other = (place + 2) % 3;
    const double path = double{rows_[place][next]} + double{rows_[place][other]};
    return std::ldexp((path - double{rows_[next][other]}) / 2, exponent_);
  }

  // Replaces the nodes of a pair by their new neighbour.
  void Join(const Pair& pair, int id) {
    const std::size_t i = pair.first, j = pair.second;
    const double sum = (sum_[i] + sum_[j] - active_ * double{rows_[i][j]}) * 0.5;
    MergeRows(i, j);
    PartTwin(i);
    PartTwin(j);
    node_[i] = id;
    sum_[i] = sum;
    share_[i] = kInfinity;  // was not there, and so does not grow
    level_[i] = -kInfinity;
    node_[j] = kVacant;
    sum_[j] = -kInfinity;
    level_[j] = kInfinity;
    near_[i] = near_[j] = kInfinity;
    --active_;
    if (8 * Index(active_) < 7 * Places()) CloseUp();
    RemakeShares();
  }

 private:
  static constexpr int kVacant = -1;
  static constexpr Number kInfinity = std::numeric_limits<Number>::infinity();

  std::size_t Places() const { return rows_.size(); }
  bool Active(std::size_t place) const { return node_[place] != kVacant; }

  static void Offer(std::size_t i, std::size_t j, Number q, Pair& best) {
    if (!(q <= best.q)) return;
    if (i > j) std::swap(i, j);
    if (q == best.q && std::make_pair(i, j) > std::make_pair(best.first, best.second)) return;
    best = {i, j, q};
  }

  // The bound above which a row cannot have a better pair, nor an equal one.
  double Limit(const Pair& best) const {
    const double slack = kSlack<Number> * (std::fabs(best.q) + growth_ + 2 * largest_share_);
    return best.q + growth_ + slack;
  }

  void Search(std::size_t i, Pair& best) {
    ++searched_;
    const Found<Number> found = LookAlong(i);
    if (found.place < Places()) Offer(i, found.place, found.least, best);
  }

  // Finds the partner of a row and sets its level.
  Found<Number> LookAlong(std::size_t i) {
    const Found<Number> found = search_(rows_[i], share_.data(), share_[i], Places());
    if (found.place == Places()) return found;
    partner_[i] = static_cast<std::uint32_t>(found.place);
    near_[i] = rows_[i][found.place];
    level_[i] = double{found.second} + double{share_[i]} + growth_;
    return found;
  }

  // Calls work(i) for all places, on all threads.
  template <typename Work>
  void ForEachRow(const Work& work) const {
    ForEachBlock(Places(), threads_, work);
  }

  void SumRow(std::size_t i) {
    rows_[i][i] = 0;
    sum_[i] = Sum(rows_[i], Places());
    rows_[i][i] = kInfinity;  // no node is its own partner
  }

  // Of nodes at the same distances from all others, whatever they have between them, the first one's
  // search speaks for all: theirs would find the same, and later pairs. They are chained, and kept out of
  // the searches until those before them have been joined.
  void FindTwins() {
    std::vector<std::uint32_t> order(twin_), ends;  // of the chains of one sum
    std::sort(order.begin(), order.end(), [this](std::uint32_t a, std::uint32_t b) {
      return std::make_pair(sum_[a], a) < std::make_pair(sum_[b], b);
    });
    for (const std::uint32_t b : order) {
      if (!ends.empty() && sum_[ends[0]] != sum_[b]) ends.clear();
      const auto end =
          std::find_if(ends.begin(), ends.end(), [&](std::uint32_t a) { return AreTwins(a, b); });
      if (end == ends.end()) {
        ends.push_back(b);
        continue;
      }
      twin_[*end] = b;
      *end = b;
      level_[b] = kInfinity;
    }
  }

  // Requires: a < b.
  bool AreTwins(std::size_t a, std::size_t b) const {
    const Number* const row = rows_[a];
    const Number* const other = rows_[b];
    return std::equal(row, row + a, other) && std::equal(row + a + 1, row + b, other + a + 1) &&
           std::equal(row + b + 1, row + Places(), other + b + 1);
  }

  // Takes a node out of its chain; the next one is to be searched from now on.
  void PartTwin(std::size_t i) {
    const std::uint32_t next = twin_[i];
    for (std::size_t k = 0; k < Places(); ++k) {
      if (twin_[k] == i) twin_[k] = next == i ? static_cast<std::uint32_t>(k) : next;
    }
    if (next != i) level_[next] = -kInfinity;
    twin_[i] = static_cast<std::uint32_t>(i);
  }

  // Row and column i become those of the new neighbour of i and j.
  void MergeRows(std::size_t i, std::size_t j) {
    Number* const row = rows_[i];
    Number* const other = rows_[j];
    const Number apart = row[j];
    other[j] = 0;  // a vacant place keeps finite distances
    for (std::size_t k = 0; k < Places(); ++k) {
      const Number near = (row[k] + other[k] - apart) * Number{0.5};
      sum_[k] += double{near} - double{row[k]} - double{other[k]};
      row[k] = near;
    }
    row[i] = kInfinity;
    for (std::size_t k = 0; k < Places(); ++k) {
      rows_[k][i] = row[k];
      if (partner_[k] == i) near_[k] = row[k];
    }
  }

  // Makes the shares of the present sums and notes how much they have grown.
  void RemakeShares() {
    double grown = 0;
    largest_share_ = 0;
    for (std::size_t i = 0; i < Places(); ++i) {
      const Number share = static_cast<Number>(sum_[i] / (active_ - 2));
      const double growth = double{share} - double{share_[i]};  // not a number at a vacant place
      const double size = std::fabs(share) < kInfinity ? std::fabs(share) : 0;
      grown = growth > grown ? growth : grown;
      largest_share_ = size > largest_share_ ? size : largest_share_;
      share_[i] = share;
    }
    growth_ = (growth_ + grown) * (1 + 2 * std::numeric_limits<double>::epsilon());  // rounded up
  }

  // Does away with the vacant places, and with what rounding has added to the sums.
  void CloseUp() {
    std::vector<std::uint32_t> kept, now(Places());
    for (std::size_t k = 0; k < Places(); ++k) {
      now[k] = static_cast<std::uint32_t>(kept.size());
      if (Active(k)) kept.push_back(static_cast<std::uint32_t>(k));
    }
    for (std::size_t k = 0; k < Places(); ++k) {
      if (!Active(partner_[k])) near_[k] = kInfinity;
      partner_[k] = std::min(now[partner_[k]], now[kept.back()]);
      twin_[k] = std::min(now[twin_[k]], now[kept.back()]);
    }
    const auto close_up = [&kept](auto& values) {
      for (std::size_t k = 0; k < kept.size(); ++k) values[k] = values[kept[k]];
    };
    const auto shorten = [&](auto&... values) {
      (close_up(values), ...);
      (values.resize(kept.size()), ...);
    };
    shorten(rows_, node_, sum_, share_, level_, near_, partner_, twin_);
    ForEachRow([&](std::size_t i) {
      close_up(rows_[i]);
      SumRow(i);
    });
    for (std::size_t i = 0; i < Places(); ++i)
      sum_[twin_[i]] = sum_[i];  // but for rounding they are
  }

  // By place:
  std::vector<Number*> rows_;
  std::vector<int> node_;      // or kVacant
  std::vector<double> sum_;    // r
  std::vector<Number> share_;  // r / (m - 2)
  std::vector<double> level_;
  std::vector<Number> near_;  // distance to the partner, infinite where there is none any more
  std::vector<std::uint32_t> partner_;
  std::vector<std::uint32_t> twin_;  // the next in its chain, the last one itself

  int active_;  // m
  int threads_;
  int exponent_ = 0;  // of the scale
  double growth_ = 0;
  double largest_share_ = 0;
  Found<Number> (*search_)(const Number*, const Number*, Number, std::size_t);
  std::vector<std::pair<double, std::size_t>>
      bounds_;  // of the rows to be searched, with their places
  long searched_ = 0;
};

}  // namespace

template <typename Number>
Topology JoinNeighboursInPlace(int n, Number* const* distances, const Joining& joining) {
  Agglomeration<Number> nodes(n, distances, joining.threads);
  Topology tree(n);
  const auto link = [&tree](int child, int node, std::size_t place) {
    tree.adjacent[Index(node - tree.taxa)][place] = child;
    tree.Replace(child, -1, node);
  };
  const int last = 2 * n - 3;
  std::vector<double>* const lengths = joining.lengths;
  if (lengths != nullptr) lengths->resize(Index(last));
  std::uniform_real_distribution<double> unit(0, 1);
  bool stopped = false;
  for (int id = n; id < last; ++id) {
    if (id % kJoinsPerPoll == 0 && joining.poll && !stopped) {
      const double left = static_cast<double>(2 * n - id) / n;
      stopped = joining.poll(1 - left * left);
    }
    const bool best = joining.generator == nullptr || unit(*joining.generator) < joining.greedy;
    const Pair pair = stopped ? nodes.AnyPair()
                      : best  ? nodes.BestPair()
                              : nodes.RandomPair(*joining.generator);
    link(nodes.Node(pair.first), id, 0);
    link(nodes.Node(pair.second), id, 1);
    if (lengths != nullptr) {
      std::tie((*lengths)[Index(nodes.Node(pair.first))],
               (*lengths)[Index(nodes.Node(pair.second))]) = nodes.Lengths(pair);
    }
    nodes.Join(pair, id);
  }
  // Three places are left, none of them vacant.
  for (std::size_t place = 0; place < 3; ++place) {
    link(nodes.Node(place), last, place);
    if (lengths != nullptr) (*lengths)[Index(nodes.Node(place))] = nodes.LastLength(place);
  }
  for (const int near : tree.At(last)) {
    if (!tree.IsLeaf(near)) tree.root = {last, near};
  }
  if (joining.searched != nullptr) *joining.searched = nodes.Searched();
  return tree;
}

template <typename Number>
Topology JoinNeighbours(int n, const double* const* distances, const Joining& joining) {
  const LargeTable<Number> table = MakeLargeTable<Number>(Index(n) * Index(n));
  std::vector<Number*> rows;
  for (int i = 0; i < n; ++i) rows.push_back(&table[Index(i) * Index(n)]);
  ForEachBlock(rows.size(), joining.threads, [&](std::size_t i) {
    std::transform(distances[i], distances[i] + n, rows[i],
                   [](double distance) { return static_cast<Number>(distance); });
  });
  return JoinNeighboursInPlace(n, rows.data(), joining);
}

template Topology JoinNeighbours<double>(int, const double* const*, const Joining&);
template Topology JoinNeighbours<float>(int, const double* const*, const Joining&);
template Topology JoinNeighboursInPlace(int, double* const*, const Joining&);
template Topology JoinNeighboursInPlace(int, float* const*, const Joining&);

}  // namespace zorvek::wide
