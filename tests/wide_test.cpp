// The search of zorvek-wide and the parts around it, against slow definitions and the optimum.

#include <limits>

#include "tests/trees.h"
#include "wide/criterion/fitted_tree.h"
#include "wide/criterion/ols_neighbourhood.h"
#include "wide/distance/vertex_cover.h"
#include "wide/search/descent.h"
#include "wide/search/identical.h"
#include "wide/search/neighbour_joining.h"
#include "zorvek/tree.h"

namespace zorvek::wide {
namespace {

constexpr Criterion kBoth[] = {Criterion::kBalanced, Criterion::kOls};

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
    const DistanceMatrix between =
        test::RandomMatrix(distinct, static_cast<std::uint32_t>(generator()));
    const DistanceMatrix distances =
        test::Matrix(n, [&](int i, int j) { return between(kind[Index(i)], kind[Index(j)]); });
    const Criterion criterion = kBoth[trial % 2];
    SearchSettings settings = test::Settings(criterion, trial % 5 == 0 ? 0 : 50);
    if (settings.iterations == 0) settings.moves = Moves::kNone;
    const Tree start = test::RandomTree(n, generator);
    if (trial % 3 == 0) settings.start = &start;
    const auto [view, length] = test::Find(distances, settings);
    EXPECT_NEAR(length, FitTree(view, distances.Rows(), criterion).length, 1e-13 * n);
    for (const std::vector<int>& group : IdenticalTaxa(n, distances.Rows())) {
      const auto members = test::WithoutFirst({group.begin(), group.end()}, n);
      EXPECT_EQ(test::Edges(view).count(members), 1u);
      for (const int taxon : group) EXPECT_EQ(view.At(taxon).length, 0);
    }
  }
  // At distance 0, and yet not the same; and almost the same.
  const DistanceMatrix near = test::Matrix(4, [](int i, int j) { return i + j - 1.0; });
  EXPECT_TRUE(IdenticalTaxa(4, near.Rows()).empty());
  const DistanceMatrix close = test::Matrix(4, [](int, int j) { return j == 1 ? 1e-9 : 1.0; });
  EXPECT_TRUE(IdenticalTaxa(4, close.Rows()).empty());
}

TEST(WideIdentical, TaxaComeTogetherWhereTheTreeIsShortest) {
  std::mt19937_64 generator(1);
  for (std::uint32_t trial = 0; trial < 30; ++trial) {
    const DistanceMatrix one = test::RandomMatrix(10, trial);
    const std::vector<int> group{0, 1, 2};
    const DistanceMatrix distances =
        test::Matrix(10, [&](int i, int j) { return j < 3 ? 0 : one(i < 3 ? 0 : i, j); });
    OlsNeighbourhood tree(test::RandomTopology(distances, generator), distances.Rows());
    double least = HUGE_VAL;
    for (const int anchor : group) {
      Topology there = tree.Current();
      for (const int taxon : group) {
        const int holder = there.leaf_adjacent[Index(taxon)];
        const int beside = there.leaf_adjacent[Index(anchor)];
        if (holder != beside) there.Apply({holder, taxon, anchor, beside});
      }
      least = std::min(least, OlsNeighbourhood(there, distances.Rows()).Length());
    }
    KeepTogether({group}, tree);
    EXPECT_NEAR(tree.Length(), least, 1e-12);
  }
}

// Edges of distances along a tree are those of the tree, however they are found.
TEST(WideFit, GivesTheLengthsOfAnAdditiveTree) {
  for (const auto& [n, unit] : {std::pair{4, 1.0}, {5, 1.0}, {30, 1.0}, {30, 1e200}}) {
    const DistanceMatrix along = test::TreeLikeMatrix(n, 0, 1);
    const auto scaled = [&, unit = unit](int i, int j) { return unit * along(i, j); };
    const DistanceMatrix given = test::Matrix(n, scaled);
    DistanceMatrix used = test::Matrix(n, scaled);
    std::vector<double*> rows;
    for (int i = 0; i < n; ++i) rows.push_back(used.Row(i));
    std::vector<SearchResult> found{JoinedTree(n, rows.data())};
    for (const Criterion criterion : kBoth) {
      found.push_back(FitTree(found[0].tree, given.Rows(), criterion));
    }
    for (const auto& [tree, length] : found) {
      EXPECT_NEAR(length / unit, TotalLength(tree) / unit, 1e-12);
      for (const auto& [i, j] : test::Pairs(n)) {
        EXPECT_NEAR(test::PathLength(tree, i, j) / unit, along(i, j), 1e-12);
      }
    }
  }
}

// Rounding makes no group, but a short edge is one.
TEST(WideFit, ClearsEdgesThatAreRoundingAlone) {
  for (std::uint32_t seed = 0; seed < 20; ++seed) {
    const double inner = seed % 2 == 0 ? 0 : 1e-9;
    auto edge = test::RandomDistances(seed);
    const std::vector<double> outer{edge(0, 0), edge(0, 0), edge(0, 0), edge(0, 0)};
    const DistanceMatrix star = test::Matrix(4, [&](int i, int j) {
      return outer[Index(i)] + outer[Index(j)] + (i / 2 == j / 2 ? 0 : inner);
    });
    for (const Criterion criterion : kBoth) {
      const Tree tree = test::Find(star, test::Settings(criterion)).tree;
      EXPECT_EQ(tree.IsGroup(tree.root == 4 ? 5 : 4), inner > 0);
    }
  }
}

// There the sum of the positive lengths is all rounding.
TEST(WideSearch, EndsWhereLengthsAreNegative) {
  const DistanceMatrix distances = test::Matrix(10, [](int i, int j) {
    if (i > 7 || i + j == 13) return -1e300;
    if (j == 0) return i == 1 ? 13.0 : i == 2 ? 10.0 : 0.0;
    return i == 7 && j < 3 ? 7.0 : 0.0;
  });
  SearchSettings settings = test::Settings(Criterion::kOls);
  settings.starts = 3;
  EXPECT_TRUE(std::isfinite(test::Find(distances, settings).length));
}

int SmallestCover(int n, const std::vector<std::pair<int, int>>& edges) {
  int best = n;
  for (unsigned chosen = 0; chosen < 1u << n; ++chosen) {
    bool covers = true;
    for (const auto& [a, b] : edges) covers = covers && ((chosen >> a | chosen >> b) & 1u) != 0;
    if (covers) best = std::min(best, __builtin_popcount(chosen));
  }
  return best;
}

TEST(WideVertexCover, IsSmallestOnSmallGraphsAndCoversLargeOnes) {
  std::mt19937 generator(4);
  for (int trial = 0; trial < 300; ++trial) {
    const int n = 2 + trial % 10;
    std::vector<std::pair<int, int>> edges;
    for (const auto& pair : test::Pairs(n)) {
      if (generator() % 10 < 1 + static_cast<unsigned>(trial) % 9) edges.push_back(pair);
    }
    const VertexCover cover = FindVertexCover(n, edges);
    EXPECT_TRUE(cover.smallest);
    EXPECT_EQ(static_cast<int>(cover.vertices.size()), SmallestCover(n, edges));
    const std::set<int> chosen(cover.vertices.begin(), cover.vertices.end());
    for (const auto& [a, b] : edges) EXPECT_GT(chosen.count(a) + chosen.count(b), 0u);
  }
  // Three taxa without data among 400.
  const std::set<int> centres{5, 70, 300};
  std::vector<std::pair<int, int>> stars;
  for (const auto& [a, b] : test::Pairs(400)) {
    if (centres.count(a) + centres.count(b) > 0) stars.emplace_back(a, b);
  }
  EXPECT_EQ(FindVertexCover(400, stars).vertices, std::vector(centres.begin(), centres.end()));
}

TEST(OlsNeighbourhood, FindsEveryPlaceWithItsGainAndLength) {
  for (const int n : {4, 5, 6, 9, 16}) {
    std::mt19937_64 generator(static_cast<std::uint64_t>(n));
    const DistanceMatrix matrix = test::RandomMatrix(n, 3);
    OlsNeighbourhood tree(test::RandomTopology(matrix, generator), matrix.Rows());
    std::vector<SprMove> found;
    for (int change = 0; change < 8; ++change) {
      int places = 0;
      for (int node = n; node < 2 * n - 2; ++node) {
        for (const int subtree : tree.Current().At(node)) {
          found.clear();
          tree.Scan();
          tree.SprMoves(node, subtree, -1e9, found);
          places += static_cast<int>(found.size());
          const Topology kept = tree.Current();
          const double raw = TotalLength(test::Result(tree));
          for (const SprMove& move : found) {
            const double promised = tree.LengthAfter(move);
            tree.Apply(move);
            ASSERT_NEAR(raw - TotalLength(test::Result(tree)), move.gain, 1e-12);
            ASSERT_NEAR(tree.Length(), promised, 1e-12);
            ASSERT_EQ(OlsNeighbourhood(tree.Current(), matrix.Rows()).Length(), tree.Length());
            tree.Set(kept);
          }
        }
      }
      // Into every edge but its own and those at its node, over both ends of all edges.
      ASSERT_EQ(places, 4 * (n - 2) * (n - 3));
      if (!found.empty()) tree.Apply(found[generator() % found.size()]);
    }
  }
}

// Distances in units as coarse as single precision has them for 20,000 taxa lead to trees as good, and
// sums that fit into 32 bits are the same as in 64, on any number of threads.
TEST(OlsNeighbourhood, IsAsGoodInSinglePrecision) {
  constexpr int kTaxa = 150;
  for (const double noise : {0.05, 0.5}) {
    const DistanceMatrix fine = test::TreeLikeMatrix(kTaxa, noise, 1);
    const DistanceMatrix coarse = zorvek::test::Matrix(kTaxa, [&](int i, int j) {
      return std::ldexp(std::round(std::ldexp(fine(i, j), 16)), -16);
    });
    const auto found = [&](const DistanceMatrix& distances, Precision precision) {
      Descent descent(std::make_unique<OlsNeighbourhood>(JoinNeighbours(kTaxa, fine.Rows()),
                                                         distances.Rows(), precision,
                                                         precision == Precision::kSingle ? 3 : 1));
      descent.BySpr([](double) { return false; });
      const double length = descent.Around().Length();
      return std::pair(length,
                       Fit(Criterion::kOls, descent.Around().Current(), fine.Rows()).length);
    };
    const auto [length, single] = found(coarse, Precision::kSingle);
    EXPECT_EQ(found(coarse, Precision::kDouble).first, length);
    EXPECT_NEAR(single, length, 1e-4 * length);
    EXPECT_LT(single, found(fine, Precision::kDouble).second * (1 + 1e-6));
  }
}

// The shortest tree of all, by dynamic programming over the sets of leaves. Rooted on the last
// leaf, every edge has a set S below it; what the edges below S add at the least depends on S and on
// how S is split, because the length of the edge above A depends on the split of A, on its sibling
// and on all the rest.
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
  // One of the two sets, that with the lowest leaf, and the length of all edges below the whole.
  using Below = std::pair<unsigned, double>;

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
  for (int n = 4; n <= 10; ++n) {
    for (std::uint32_t seed = 1; seed <= 6; ++seed) {
      const DistanceMatrix matrix =
          seed % 2 == 0 ? test::RandomMatrix(n, seed) : test::TreeLikeMatrix(n, 0.5, seed);
      SearchSettings settings = test::Settings(Criterion::kOls, 1000);
      settings.seed = seed;
      EXPECT_NEAR(test::Find(matrix, settings).length, Optimum(matrix).Length(), 1e-12);
    }
  }
}

// All trees in which taxa 0 and 1 are together are equal.
TEST(WideSearch, TakesTheFirstOfEqualTrees) {
  auto random = test::RandomDistances(1);
  const DistanceMatrix other =
      test::Matrix(30, [&](int i, int j) { return i + j == 1 ? -9 : random(i, j); });
  const DistanceMatrix equal =
      test::Matrix(30, [](int i, int j) { return i + j == 1 ? 0.0 : 1.0; });
  const Tree start = MakeTree(JoinNeighbours(30, other.Rows()), [](int, int) { return 1; });
  for (const Moves moves : {Moves::kNone, Moves::kNni, Moves::kSpr}) {
    SearchSettings settings = test::Settings(Criterion::kBalanced);
    settings.start = &start;
    settings.starts = 3;
    settings.moves = moves;
    const auto edges = test::Edges(test::Find(equal, settings).tree);
    for (const auto& [split, edge] : test::Edges(start)) EXPECT_EQ(edges.count(split), 1u);
  }
}

// Distances with little or no tree in them, on which every step another way ends elsewhere. Where the
// search is to become another one, so do these lengths.
TEST(WideSearch, DependsOnItsSeedAndNotOnTheThreads) {
  struct Case {
    Criterion criterion;
    int taxa;
    long iterations;  // of several batches, some in vain, as a whole and in sectors; and of one
    std::uint32_t distances;
    double nni, descended, iterated;
  };
  const Case cases[] = {
      {Criterion::kBalanced, 44, 4900, 6, 4.51642812329, 4.42827783423, 4.35205476630},
      {Criterion::kBalanced, 150, 5100, 7, 31.11613300105, 30.99584725111, 30.98769127386},
      {Criterion::kOls, 40, 1200, 5, 4.33010092705, 4.24148894148, 4.21320158640}};
  for (const Case& now : cases) {
    const DistanceMatrix matrix = now.taxa > 100
                                      ? test::TreeLikeMatrix(now.taxa, 0.5, now.distances)
                                      : test::RandomMatrix(now.taxa, now.distances);
    SearchSettings settings = test::Settings(now.criterion);
    settings.moves = Moves::kNni;
    double last = HUGE_VAL;
    settings.on_progress = [&](const Progress& progress) {
      EXPECT_LE(progress.length, last + 1e-9);  // every move shortens the tree
      if (progress.phase == Progress::kDescent) last = progress.length;
    };
    EXPECT_NEAR(test::Find(matrix, settings).length, now.nni, 1e-9);
    settings.moves = Moves::kSpr;
    settings.starts = 3;
    double least = HUGE_VAL;
    std::map<Progress::Phase, double> reached;
    settings.on_progress = [&](const Progress& progress) {
      EXPECT_GE(progress.fraction, 0);
      EXPECT_LE(progress.fraction, 1);
      reached[progress.phase] = progress.fraction;
      if (!progress.improved) return;
      EXPECT_LT(progress.length, least);
      least = progress.length;
    };
    EXPECT_NEAR(test::Find(matrix, settings).length, now.descended, 1e-9);
    EXPECT_NEAR(least, now.descended, 1e-9);
    least = HUGE_VAL;
    settings.iterations = now.iterations;
    const SearchResult alone = test::Find(matrix, settings);
    EXPECT_NEAR(alone.length, now.iterated, 1e-9);
    EXPECT_NEAR(least, now.iterated, 1e-9);
    EXPECT_EQ(reached[Progress::kDescent] + reached[Progress::kIterations], 2);
    settings.on_progress = nullptr;
    settings.threads = 3;
    const SearchResult shared = test::Find(matrix, settings);
    EXPECT_EQ(alone.length, shared.length);
    EXPECT_EQ(alone.tree.preorder, shared.tree.preorder);
    if (now.taxa != 44) continue;  // elsewhere another seed may find the same tree
    settings.seed += 1L << 32;
    EXPECT_NE(test::Find(matrix, settings).length, alone.length);
  }
}

}  // namespace
}  // namespace zorvek::wide
