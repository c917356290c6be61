// zorvek-wide's search: regrafts against what they promise, and the optimum of small data by dynamic
// programming.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "tests/data.h"
#include "wide/neighbour_joining.h"
#include "wide/regrafter.h"
#include "wide/search.h"

namespace zorvek::wide {
namespace {

TEST(Regrafter, FindsEveryPlaceWithItsGainAndLength) {
  for (const int taxa_count : {4, 5, 6, 9, 16}) {
    std::mt19937_64 generator(static_cast<std::uint64_t>(taxa_count));
    const DistanceMatrix matrix = test::Matrix(taxa_count, test::RandomDistances(3));
    Regrafter tree(JoinNeighbours(taxa_count, matrix.Rows(), 0, &generator), matrix.Rows());
    std::vector<Regraft> found;
    for (int change = 0; change < 8; ++change) {
      int places = 0;
      for (int node = taxa_count; node < 2 * taxa_count - 2; ++node) {
        for (const int subtree : tree.Tree().At(node)) {
          found.clear();
          tree.Regrafts(node, subtree, -1e9, found);
          places += static_cast<int>(found.size());
          std::vector<double> promised;
          for (const Regraft& regraft : found) promised.push_back(tree.LengthAfter(regraft));
          const Links kept = tree.Tree();
          const double raw = tree.Result().raw;
          for (std::size_t i = 0; i < found.size(); ++i) {
            tree.Apply(found[i]);
            ASSERT_NEAR(raw - tree.Result().raw, found[i].gain, 1e-12);
            ASSERT_NEAR(tree.Length(), promised[i], 1e-12);
            ASSERT_EQ(Regrafter(tree.Tree(), matrix.Rows()).Length(), tree.Length());
            tree.Set(kept);
          }
        }
      }
      // Every subtree can go into every edge but those at its node: 2 (n-2) - |its own nodes| of them,
      // which over both ends of all edges comes to 4 (n-2) (n-3).
      ASSERT_EQ(places, 4 * (taxa_count - 2) * (taxa_count - 3));
      if (!found.empty()) tree.Apply(found[generator() % found.size()]);
    }
  }
}

// The shortest tree of all, by dynamic programming over the sets of leaves. Rooted on the last leaf, every
// edge has a set S below it; what the edges below S add at the least depends on S and on how S is split,
// because the length of the edge above A depends on the split of A, on its sibling and on all the rest.
class Optimum {
 public:
  explicit Optimum(const DistanceMatrix& matrix)
      : all_((1u << matrix.Size()) - 1), within_(all_ + 1), splits_(all_ + 1) {
    for (unsigned set = 1; set <= all_; ++set) {
      const int first = Lowest(set);
      within_[set] = within_[set & (set - 1)];
      for (int j = first + 1; j < matrix.Size(); ++j) {
        if ((set >> j & 1) != 0) within_[set] += matrix(first, j);
      }
    }
    const unsigned root = 1u << (matrix.Size() - 1);
    for (unsigned set = 3; set < root; ++set) Split(set);
    for (const auto& [a, below] : splits_[root - 1]) {
      length_ = std::min(length_, below + External(root, a, (root - 1) ^ a));
    }
  }
  double Length() const { return length_; }

 private:
  struct Below {
    unsigned part;  // one of the two sets, the one with the lowest leaf
    double length;  // of all edges below, the two at the top included
  };

  static int Lowest(unsigned set) { return __builtin_ctz(set); }
  static double Size(unsigned set) { return __builtin_popcount(set); }
  double Average(unsigned x, unsigned y) const {
    return (within_[x | y] - within_[x] - within_[y]) / (Size(x) * Size(y));
  }
  double External(unsigned leaf, unsigned x, unsigned y) const {
    return std::max(0.0, (Average(leaf, x) + Average(leaf, y) - Average(x, y)) / 2);
  }
  double Internal(unsigned a, unsigned b, unsigned c, unsigned d) const {
    const double w = (Size(a) * Size(d) + Size(b) * Size(c)) / (Size(a | b) * Size(c | d));
    return std::max(0.0, ((1 - w) * (Average(a, d) + Average(b, c)) +
                          w * (Average(a, c) + Average(b, d)) - Average(a, b) - Average(c, d)) /
                             2);
  }

  // The least of the edge above `set` and all below it, beside `sibling`.
  double Hanging(unsigned set, unsigned sibling) const {
    const unsigned rest = all_ ^ set ^ sibling;
    if (Size(set) == 1) return External(set, sibling, rest);
    double least = 1e9;
    for (const auto& [a, below] : splits_[set]) {
      least = std::min(least, below + Internal(a, set ^ a, sibling, rest));
    }
    return least;
  }

  void Split(unsigned set) {
    for (unsigned a = (set - 1) & set; a != 0; a = (a - 1) & set) {
      const unsigned b = set ^ a;
      if ((a >> Lowest(set) & 1) != 0) splits_[set].push_back({a, Hanging(a, b) + Hanging(b, a)});
    }
  }

  unsigned all_;
  std::vector<double> within_;              // per set: sum over its pairs
  std::vector<std::vector<Below>> splits_;  // per set: its splits
  double length_ = 1e9;
};

TEST(WideSearch, FindsTheOptimumOfSmallData) {
  for (int taxa_count = 4; taxa_count <= 10; ++taxa_count) {
    for (std::uint32_t seed = 1; seed <= 6; ++seed) {
      const DistanceMatrix matrix =
          test::Matrix(taxa_count, seed % 2 == 0 ? test::RandomDistances(seed)
                                                 : test::TreeLikeDistances(taxa_count, 0.5, seed));
      SearchSettings settings;
      settings.seed = seed;
      settings.rounds = 1000;
      const double found = FindShortestTree(taxa_count, matrix.Rows(), settings).positive;
      EXPECT_NEAR(found, Optimum(matrix).Length(), 1e-12);
    }
  }
}

TEST(WideSearch, DependsOnItsSeedAndNotOnTheThreads) {
  const DistanceMatrix matrix = test::Matrix(40, test::TreeLikeDistances(40, 0.5, 5));
  SearchSettings settings;
  settings.starts = 3;
  settings.rounds = 100;
  const Tree alone = FindShortestTree(40, matrix.Rows(), settings);
  settings.threads = 3;
  const Tree shared = FindShortestTree(40, matrix.Rows(), settings);
  EXPECT_EQ(alone.children, shared.children);
  EXPECT_EQ(alone.length, shared.length);
  EXPECT_EQ(alone.positive, shared.positive);
}

}  // namespace
}  // namespace zorvek::wide
