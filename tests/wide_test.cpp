// zorvek-wide, its search and the parts around it, against slow definitions on random trees and
// graphs and the optimum of small data by trying all trees.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/data.h"
#include "tests/trees.h"
#include "wide/criterion/ols_neighbourhood.h"
#include "wide/distance/vertex_cover.h"
#include "wide/search/identical.h"
#include "wide/search/neighbour_joining.h"
#include "zorvek/search.h"
#include "zorvek/tree.h"

namespace zorvek::wide {
namespace {

using test::RandomMatrix;
using test::Result;
using test::Splits;
using test::WithoutFirst;

// Distances far from a tree's, on which the search itself sets equal taxa apart now and then.
TEST(WideIdentical, TaxaThatAreTheSameStayTogether) {
  std::mt19937 generator(7);
  for (int trial = 0; trial < 400; ++trial) {
    const int distinct = 2 + trial % 7;
    std::vector<int> kind;
    for (int i = 0; i < distinct; ++i) kind.insert(kind.end(), 1 + generator() % 3, i);
    while (kind.size() < 4) kind.push_back(0);
    std::shuffle(kind.begin(), kind.end(), generator);
    const int n = static_cast<int>(kind.size());
    const DistanceMatrix between = RandomMatrix(distinct, generator);
    const DistanceMatrix distances = zorvek::test::Matrix(n, [&](int i, int j) {
      return between(kind[static_cast<std::size_t>(i)], kind[static_cast<std::size_t>(j)]);
    });
    SearchSettings settings;
    settings.criterion = Criterion::kOls;
    settings.iterations = 50;
    const Tree view = FindShortestTree(n, distances.Rows(), settings).tree;
    const Groups groups = IdenticalTaxa(n, distances.Rows());
    const std::vector<std::set<int>> splits = Splits(view);
    for (const std::vector<int>& group : groups) {
      const std::set<int> members = WithoutFirst({group.begin(), group.end()}, n);
      const bool trivial = members.size() < 2 || members.size() + 1 >= kind.size();
      EXPECT_TRUE(trivial || std::count(splits.begin(), splits.end(), members) == 1);
      for (const int taxon : group) EXPECT_EQ(view.At(taxon).length, 0);
    }
  }
}

int SmallestCover(int n, const std::vector<std::pair<int, int>>& edges) {
  int best = n;
  for (unsigned chosen = 0; chosen < 1u << n; ++chosen) {
    const bool covers = std::all_of(edges.begin(), edges.end(), [&](const auto& edge) {
      return ((chosen >> edge.first | chosen >> edge.second) & 1u) != 0;
    });
    if (covers) best = std::min(best, __builtin_popcount(chosen));
  }
  return best;
}

TEST(WideVertexCover, IsSmallestOnSmallGraphsAndCoversLargeOnes) {
  std::mt19937 generator(4);
  for (int trial = 0; trial < 300; ++trial) {
    const int n = 2 + trial % 10;
    std::vector<std::pair<int, int>> edges;
    for (int i = 0; i < n; ++i) {
      for (int j = i + 1; j < n; ++j) {
        if (generator() % 10 < 1 + static_cast<unsigned>(trial) % 9) edges.emplace_back(i, j);
      }
    }
    const VertexCover cover = FindVertexCover(n, edges);
    EXPECT_TRUE(cover.smallest);
    EXPECT_EQ(static_cast<int>(cover.vertices.size()), SmallestCover(n, edges));
    const std::set<int> chosen(cover.vertices.begin(), cover.vertices.end());
    for (const auto& [a, b] : edges) EXPECT_GT(chosen.count(a) + chosen.count(b), 0u);
  }
  // Three taxa without data among 400.
  std::vector<std::pair<int, int>> stars;
  for (int centre : {5, 70, 300}) {
    for (int other = 0; other < 400; ++other) {
      if (other != centre) stars.push_back(std::minmax({centre, other}));
    }
  }
  EXPECT_EQ(FindVertexCover(400, stars).vertices, (std::vector<int>{5, 70, 300}));
}

TEST(OlsNeighbourhood, FindsEveryPlaceWithItsGainAndLength) {
  for (const int taxa_count : {4, 5, 6, 9, 16}) {
    std::mt19937_64 generator(static_cast<std::uint64_t>(taxa_count));
    const DistanceMatrix matrix =
        zorvek::test::Matrix(taxa_count, zorvek::test::RandomDistances(3));
    OlsNeighbourhood tree(JoinNeighbours(taxa_count, matrix.Rows(), 0, &generator), matrix.Rows());
    std::vector<SprMove> found;
    for (int change = 0; change < 8; ++change) {
      int places = 0;
      for (int node = taxa_count; node < 2 * taxa_count - 2; ++node) {
        for (const int subtree : tree.Current().At(node)) {
          found.clear();
          tree.SprMoves(node, subtree, -1e9, found);
          places += static_cast<int>(found.size());
          std::vector<double> promised;
          for (const SprMove& move : found) promised.push_back(tree.LengthAfter(move));
          const Topology kept = tree.Current();
          const double raw = TotalLength(Result(tree));
          for (std::size_t i = 0; i < found.size(); ++i) {
            tree.Apply(found[i]);
            ASSERT_NEAR(raw - TotalLength(Result(tree)), found[i].gain, 1e-12);
            ASSERT_NEAR(tree.Length(), promised[i], 1e-12);
            ASSERT_EQ(OlsNeighbourhood(tree.Current(), matrix.Rows()).Length(), tree.Length());
            tree.Set(kept);
          }
        }
      }
      // Every subtree can go into every edge but those at its node: 2 (n-2) - |its own nodes| of
      // them, which over both ends of all edges comes to 4 (n-2) (n-3).
      ASSERT_EQ(places, 4 * (taxa_count - 2) * (taxa_count - 3));
      if (!found.empty()) tree.Apply(found[generator() % found.size()]);
    }
  }
}

TEST(WideSearch, FindsTheOptimumOfSmallData) {
  for (int taxa_count = 4; taxa_count <= 7; ++taxa_count) {
    for (std::uint32_t seed = 1; seed <= 6; ++seed) {
      const DistanceMatrix matrix = zorvek::test::Matrix(
          taxa_count, seed % 2 == 0 ? zorvek::test::RandomDistances(seed)
                                    : zorvek::test::TreeLikeDistances(taxa_count, 0.5, seed));
      SearchSettings settings;
      settings.criterion = Criterion::kOls;
      settings.seed = seed;
      settings.iterations = 1000;
      const double found = FindShortestTree(taxa_count, matrix.Rows(), settings).length;
      const auto fitted = [&](const Topology& tree) {
        return OlsNeighbourhood(tree, matrix.Rows()).Length();
      };
      EXPECT_NEAR(found, test::LeastOfAll(taxa_count, fitted), 1e-12);
    }
  }
}

// Distances with little or no tree in them, on which every step another way ends elsewhere.
TEST(WideSearch, DependsOnItsSeedAndNotOnTheThreads) {
  struct Case {
    Criterion criterion;
    int taxa;
    long iterations;  // of several batches, as a whole and in sectors; and of one
  };
  for (const auto& [criterion, taxa, iterations] : {Case{Criterion::kBalanced, 60, 2700},
                                                    {Criterion::kBalanced, 150, 1800},
                                                    {Criterion::kOls, 40, 600}}) {
    const DistanceMatrix matrix =
        zorvek::test::Matrix(taxa, taxa > 100 ? zorvek::test::TreeLikeDistances(taxa, 0.5, 5)
                                              : zorvek::test::RandomDistances(5));
    SearchSettings settings;
    settings.criterion = criterion;
    settings.starts = 3;
    const auto find = [&, n = taxa] { return FindShortestTree(n, matrix.Rows(), settings); };
    const double descended = find().length;
    settings.iterations = iterations;
    const SearchResult alone = find();
    EXPECT_LT(alone.length, descended);
    settings.threads = 3;
    const SearchResult shared = find();
    EXPECT_EQ(alone.length, shared.length);
    EXPECT_EQ(alone.tree.preorder, shared.tree.preorder);
    settings.seed += 1L << 32;
    EXPECT_NE(find().length, alone.length);
  }
}

// The search as it is: where it is to become another one, so do these lengths.
TEST(WideSearch, MakesTheMovesThatItMade) {
  const int taxa_count = 60;
  const DistanceMatrix matrix = zorvek::test::Matrix(taxa_count, zorvek::test::RandomDistances(3));
  const auto length = [&](Criterion criterion, Moves moves, long iterations) {
    SearchSettings settings;
    settings.criterion = criterion;
    settings.moves = moves;
    settings.iterations = iterations;
    return FindShortestTree(taxa_count, matrix.Rows(), settings).length;
  };
  EXPECT_NEAR(length(Criterion::kBalanced, Moves::kNni, 0), 5.7205427971511185, 1e-9);
  EXPECT_NEAR(length(Criterion::kBalanced, Moves::kSpr, 0), 5.6727680406378154, 1e-9);
  EXPECT_NEAR(length(Criterion::kBalanced, Moves::kSpr, 6000), 5.3969693738973969, 1e-9);
  EXPECT_NEAR(length(Criterion::kOls, Moves::kNni, 0), 6.0821337832296303, 1e-9);
  EXPECT_NEAR(length(Criterion::kOls, Moves::kSpr, 0), 5.8835941609730069, 1e-9);
}

}  // namespace
}  // namespace zorvek::wide
