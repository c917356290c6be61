// Neighbour joining with bounds against the plain double loop: the same topology.
#include "wide/search/neighbour_joining.h"

#include "tests/plain_joining.h"
#include "tests/trees.h"
#include "wide/criterion/criterion.h"
#include "wide/criterion/fitted_tree.h"
#include "wide/data/folded_matrix.h"
#include "wide/support/splits.h"
#include "zorvek/tree.h"

namespace zorvek::wide {
namespace {

using Distances = std::function<double(int, int)>;

// Whole numbers 0..largest, whose sums are exact, so that ties are ties in any order of addition.
Distances WholeNumbers(int largest, unsigned seed) {
  return [generator = std::mt19937(seed), largest](int, int) mutable {
    return static_cast<double>(std::uniform_int_distribution(0, largest)(generator));
  };
}

// Points in a cube, or a `grid`: near ones are joined after far ones, so that bounds grow old.
Distances Points(int n, int dimensions, bool grid, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> unit(0, 1);
  std::vector<std::vector<double>> points(Index(n), std::vector<double>(Index(dimensions)));
  for (auto& point : points) {
    for (double& x : point) x = grid ? std::floor(8 * unit(generator)) : unit(generator);
  }
  return [points](int i, int j) {
    double sum = 0;
    for (std::size_t k = 0; k < points[0].size(); ++k) {
      sum += std::fabs(points[Index(i)][k] - points[Index(j)][k]);
    }
    return sum;
  };
}

// Half of the taxa are the same as taxon 0.
Distances Twins(Distances distance) {
  return [distance](int i, int j) {
    const auto one = [](int taxon) { return taxon % 2 == 0 ? 0 : taxon; };
    return one(i) == one(j) ? 0.0 : distance(std::max(one(i), one(j)), std::min(one(i), one(j)));
  };
}

// Without regard to the numbers of the inner nodes: of the last four nodes the two pairs of a tree have
// the same Q, and rounding says which of them is joined.
bool Same(const Topology& topology, const Topology& other) {
  const auto tree = [](const Topology& of) { return MakeTree(of, [](int, int) { return 1.0; }); };
  return SplitIndex(tree(topology)).Shared(tree(other)).size() == Index(topology.taxa - 3);
}

template <typename Number>
void ExpectThePlainTree(const DistanceMatrix& distances) {
  const int n = distances.Size();
  const Topology expected = test::JoinPlainly<Number>(n, distances.Rows());
  Joining shared;
  shared.threads = 3;
  constexpr int kMost = std::numeric_limits<Number>::max_exponent;
  for (const int power : {0, -3 * kMost / 4, kMost - 8}) {
    const auto scaled = [&](int i, int j) { return std::ldexp(distances(i, j), power); };
    const DistanceMatrix matrix = test::Matrix(n, scaled);
    EXPECT_TRUE(Same(JoinNeighbours<Number>(n, matrix.Rows(), shared), expected));
  }
}

TEST(NeighbourJoining, JoinsThePairsThatThePlainDoubleLoopFindsFirst) {
  for (const int n : {4, 5, 6, 7, 8, 9, 12, 17, 40, 121}) {
    const auto seed = static_cast<std::uint32_t>(n);
    const std::vector<std::pair<const char*, Distances>> kinds = {
        {"random", test::RandomDistances(seed)},
        {"additive", test::TreeLikeDistances(n, 0, seed)},
        {"nearly additive", test::TreeLikeDistances(n, 0.2, seed)},
        {"two values", WholeNumbers(1, seed)},
        {"whole numbers", WholeNumbers(9, seed)},
        {"zeros", [](int, int) { return 0.0; }},
        {"all equal", [](int, int) { return 3.0; }},
        {"negative", [](int i, int j) { return static_cast<double>((i * j) % 7 - 3); }},
        {"in the plane", Points(n, 2, false, seed)},
        {"in space", Points(n, 10, false, seed)},
        {"on a grid", Points(n, 2, true, seed)},
        {"twins", Twins(Points(n, 2, true, seed))}};
    for (const auto& [kind, distance] : kinds) {
      SCOPED_TRACE(kind + (" " + std::to_string(n)));
      const DistanceMatrix matrix = test::Matrix(n, distance);
      ExpectThePlainTree<double>(matrix);
      ExpectThePlainTree<float>(matrix);
    }
  }
}

TEST(NeighbourJoining, SearchesFewRows) {
  constexpr int kTaxa = 300;
  for (const Distances& distance :
       {test::TreeLikeDistances(kTaxa, 0.05, 1), Twins(Points(kTaxa, 2, true, 1)),
        Distances([](int, int) { return 3.0; }),
        Distances([](int i, int j) { return i % 5 == j % 5 ? 1.0 : 2.0; })}) {
    const DistanceMatrix matrix = test::Matrix(kTaxa, distance);
    long searched = 0;
    Joining joining;
    joining.searched = &searched;
    JoinNeighbours(kTaxa, matrix.Rows(), joining);
    EXPECT_GT(searched, kTaxa);
    EXPECT_LE(searched, 10 * kTaxa);
  }
}

// Single precision finds trees as good, and an end that comes early leaves a whole tree.
TEST(NeighbourJoining, IsAsGoodInSinglePrecision) {
  constexpr int kTaxa = 300;
  for (const Distances& distance :
       {test::TreeLikeDistances(kTaxa, 0.2, 1), test::RandomDistances(1)}) {
    const DistanceMatrix matrix = test::Matrix(kTaxa, distance);
    const auto length = [&](const Topology& tree) {
      return Fit(Criterion::kBalanced, tree, matrix.Rows()).length;
    };
    const double joined = length(JoinNeighbours(kTaxa, matrix.Rows()));
    EXPECT_LT(length(JoinNeighbours<float>(kTaxa, matrix.Rows())), joined * (1 + 1e-9));
    Joining joining;
    double told = 0;  // so far
    joining.poll = [&](double share) {
      EXPECT_TRUE(share >= told && share < told + 0.2) << share;
      return (told = share) > 0.5;
    };
    EXPECT_GT(length(JoinNeighbours(kTaxa, matrix.Rows(), joining)), joined);
  }
}

// A matrix that was folded, or joined within itself, holds what it held.
TEST(NeighbourJoining, InTheMatrixItselfIsThatOfACopy) {
  SearchSettings joined = test::Settings(Criterion::kBalanced);
  joined.moves = Moves::kNone;
  for (const int n : {4, 5, 40, kSinglePrecision + 1}) {
    DistanceMatrix matrix = test::Matrix(n, Points(n, 2, false, 1));
    const DistanceMatrix before = test::Matrix(n, Points(n, 2, false, 1));
    const auto expect_as_before = [&] {
      for (int i = 0; i < n; ++i) {
        ASSERT_TRUE(std::equal(matrix.Rows()[i], matrix.Rows()[i] + n, before.Rows()[i])) << i;
      }
    };
    {
      FoldedMatrix folded(matrix, 2);
      for (int i = 0; i < n; ++i) {
        float* const row = folded.Rows()[i];
        ASSERT_TRUE(std::equal(row, row + n, before.Rows()[i],
                               [](float single, double whole) { return single == float(whole); }));
        std::fill_n(row, n, -1.0F);
      }
    }
    expect_as_before();
    const SearchResult found = FindShortestTree(matrix, joined);
    EXPECT_EQ(found.length, test::Find(before, joined).length);
    expect_as_before();
    for (int i = 0; i < n; ++i) {  // too large for single precision
      std::transform(before.Rows()[i], before.Rows()[i] + n, matrix.Row(i),
                     [](double distance) { return distance * 0x1p200; });
    }
    EXPECT_NEAR(FindShortestTree(matrix, joined).length * 0x1p-200, found.length,
                1e-6 * found.length);
  }
}

TEST(NeighbourJoining, MixesBestAndRandomPairs) {
  constexpr int kTaxa = 50;
  const DistanceMatrix matrix = test::Matrix(kTaxa, test::TreeLikeDistances(kTaxa, 0.2, 3));
  std::mt19937_64 generator(1);
  const auto join = [&](double greedy) {
    return JoinNeighbours<double>(kTaxa, matrix.Rows(), {greedy, &generator});
  };
  EXPECT_TRUE(Same(join(1), test::JoinPlainly<double>(kTaxa, matrix.Rows())));
  EXPECT_FALSE(Same(join(0.5), join(0.5)));
  // Of four taxa the random one is joined to its best partner: always one of the two pairs of the tree.
  const DistanceMatrix four =
      test::Matrix(4, [](int i, int j) { return i / 2 == j / 2 ? 1.0 : 3.0; });
  for (int repeat = 0; repeat < 20; ++repeat) {
    const Topology tree = JoinNeighbours<double>(4, four.Rows(), {0, &generator});
    EXPECT_EQ(tree.leaf_adjacent[0], tree.leaf_adjacent[1]);
    EXPECT_NE(tree.leaf_adjacent[0], tree.leaf_adjacent[2]);
  }
}

}  // namespace
}  // namespace zorvek::wide
