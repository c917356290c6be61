// The balanced criterion against its definition, and the search under it against all trees.

#include <tuple>

#include "tests/trees.h"
#include "wide/criterion/balanced_neighbourhood.h"
#include "wide/criterion/criterion.h"
#include "wide/criterion/fitted_tree.h"
#include "wide/search/neighbour_joining.h"
#include "wide/search/sectors.h"
#include "zorvek/error.h"

namespace zorvek::wide {
namespace {

// The sum over the pairs of taxa of 2^(1-p) d(i,j), p the edges between them.
double DirectLength(const Topology& tree, const DistanceMatrix& distances) {
  long double sum = 0;
  for (int i = 0; i < tree.taxa; ++i) {
    std::vector<std::tuple<int, int, long double>> open{{tree.leaf_adjacent[Index(i)], i, 1}};
    while (!open.empty()) {
      const auto [node, behind, weight] = open.back();
      open.pop_back();
      if (tree.IsLeaf(node)) {
        sum += weight * distances(i, node) / 2;
        continue;
      }
      const auto [a, b] = tree.Others(node, behind);
      for (const int next : {a, b}) open.emplace_back(next, node, weight / 2);
    }
  }
  return static_cast<double>(sum);
}

// All SPR moves of a subtree.
std::vector<SprMove> Places(const Topology& tree, int holder, int subtree) {
  std::vector<SprMove> places;
  const auto [a, b] = tree.Others(holder, subtree);
  std::vector<std::pair<int, int>> open{{a, holder}, {b, holder}};
  while (!open.empty()) {
    const auto [node, behind] = open.back();
    open.pop_back();
    if (tree.IsLeaf(node)) continue;
    const auto [f, g] = tree.Others(node, behind);
    for (const int next : {f, g}) {
      places.push_back({holder, subtree, node, next});
      open.push_back({next, node});
    }
  }
  return places;
}

SprMove RandomMove(const Topology& tree, std::mt19937_64& generator) {
  for (;;) {
    const int holder = tree.taxa + static_cast<int>(generator() % Index(tree.taxa - 2));
    const std::vector<SprMove> places = Places(tree, holder, tree.At(holder)[generator() % 3]);
    if (!places.empty()) return places[generator() % places.size()];
  }
}

// Distances of which some are 0 and some negative.
DistanceMatrix Noise(int n, std::uint32_t seed) {
  const DistanceMatrix random = test::RandomMatrix(n, seed);
  return test::Matrix(
      n, [&](int i, int j) { return std::max(random(i, j), 0.1) - 0.1 - (i == 1 ? 0.2 : 0); });
}

SearchResult Find(const DistanceMatrix& distances, long iterations = 0) {
  return test::Find(distances, test::Settings(Criterion::kBalanced, iterations));
}

TEST(Balanced, KeepsItsAveragesThroughLongWalks) {
  for (const int n : {4, 5, 9, 40, 700}) {  // of which the last is work for several threads
    std::mt19937_64 generator(static_cast<std::uint64_t>(n));
    const DistanceMatrix distances = Noise(n, 1);
    BalancedNeighbourhood tree(test::RandomTopology(distances, generator), distances.Rows(), 3);
    for (int step = 0; step < (n < 100 ? 2000 : 300); ++step) {
      SprMove move = RandomMove(tree.Current(), generator);
      if (step % 2 == 0) {  // an NNI
        const auto [a, b] = tree.Current().Others(move.holder, move.subtree);
        const int end = tree.Current().IsLeaf(a) ? b : a;
        move = {move.holder, move.subtree, end, tree.Current().Others(end, move.holder).first};
      }
      tree.Apply(move);
    }
    const BalancedNeighbourhood anew(tree.Current(), distances.Rows());
    double edges = 0;
    for (int u = 0; u < tree.Current().Nodes(); ++u) {
      for (int v = 0; v < u; ++v) ASSERT_NEAR(tree.Average(u, v), anew.Average(u, v), 1e-14);
      if (u < n) continue;
      for (const int v : tree.Current().At(u)) edges += v < u ? tree.EdgeLength(u, v) : 0;
    }
    EXPECT_NEAR(tree.Length(), DirectLength(tree.Current(), distances), 1e-13 * n);
    EXPECT_NEAR(tree.Length(), edges, 1e-13 * n);
    const Tree held = test::Result(tree);
    const FittedTree fitted = Fit(Criterion::kBalanced, tree.Current(), distances.Rows());
    for (int node = 0; node < tree.Current().Nodes(); ++node) {
      ASSERT_NEAR(fitted.tree.At(node).length, held.At(node).length, 1e-13);
    }
    EXPECT_NEAR(fitted.length, tree.Length(), 1e-13 * n);
  }
}

TEST(Balanced, FindsTheBestPlaceOfEverySubtree) {
  for (const int n : {4, 5, 6, 9, 16}) {
    std::mt19937_64 generator(static_cast<std::uint64_t>(n));
    const DistanceMatrix distances = Noise(n, 2);
    BalancedNeighbourhood tree(test::RandomTopology(distances, generator), distances.Rows());
    const auto expect_best = [&](const std::vector<SprMove>& places, bool found, SprMove best) {
      double least = tree.Length() - tree.Margin();
      for (const SprMove& place : places) {
        Topology after = tree.Current();
        after.Apply(place);
        least = std::min(least, DirectLength(after, distances));
      }
      ASSERT_EQ(found, least < tree.Length() - tree.Margin());
      if (!found) return;
      ASSERT_NEAR(tree.Length() - best.gain, least, 1e-13);
      Topology after = tree.Current();
      after.Apply(best);
      ASSERT_NEAR(DirectLength(after, distances), least, 1e-13);
    };
    for (int change = 0; change < 10; ++change) {
      for (int u = n; u < 2 * n - 2; ++u) {
        for (const int v : tree.Current().At(u)) {
          SprMove best;
          bool found = tree.BestSpr(u, v, best);
          expect_best(Places(tree.Current(), u, v), found, best);
          if (tree.Current().IsLeaf(v)) continue;
          const int b = tree.Current().Others(u, v).second;
          const auto [c, e] = tree.Current().Others(v, u);
          found = tree.BestNni(u, v, best);
          expect_best({{u, b, v, c}, {u, b, v, e}}, found, best);
        }
      }
      tree.Apply(RandomMove(tree.Current(), generator));
    }
  }
}

TEST(HeatBath, TreesComeUpAsOftenAsTheirLengthsSay) {
  constexpr int kSettled = 100000;
  const DistanceMatrix matrix = test::RandomMatrix(5, 3);
  std::mt19937_64 generator(1);
  std::extreme_value_distribution<double> gumbel(0, 1);
  for (const Criterion criterion : {Criterion::kBalanced, Criterion::kOls}) {
    const auto tree =
        MakeNeighbourhood(criterion, test::RandomTopology(matrix, generator), matrix.Rows());
    const double heat = 0.3;
    std::map<long, int> came;  // by the length in units of 1e-9
    std::vector<double> noise(Index(tree->Current().Nodes() + 2));
    for (int k = 0; k < kSettled; ++k) {
      for (double& number : noise) number = gumbel(generator);
      const int holder = 5 + static_cast<int>(generator() % 3);
      SprMove move;
      if (tree->Resettle(holder, tree->Current().At(holder)[generator() % 3], heat, noise.data(),
                         move)) {
        tree->Apply(move);
      }
      ++came[std::lround(tree->Length() * 1e9)];
    }
    ASSERT_EQ(came.size(), 15u);
    double all = 0;
    for (const auto& [length, count] : came)
      all += std::exp(-1e-9 * static_cast<double>(length) / heat);
    for (const auto& [length, count] : came) {
      EXPECT_NEAR(static_cast<double>(count) / kSettled,
                  std::exp(-1e-9 * static_cast<double>(length) / heat) / all, 0.008);
    }
  }
}

// What a sector gains, the whole gains, by moves that are random or promise something; and sectors that
// meet can be put back together.
TEST(Sectors, StandForTheWholeUnderEitherCriterion) {
  for (const Criterion criterion : {Criterion::kBalanced, Criterion::kOls}) {
    std::mt19937_64 generator(1);
    const DistanceMatrix distances = Noise(200, 3);
    const auto tree =
        MakeNeighbourhood(criterion, test::RandomTopology(distances, generator), distances.Rows());
    const Topology whole = tree->Current();
    const double length = tree->Length();
    const std::vector<Sector> sectors = CutIntoSectors(whole, 20, generator);
    EXPECT_GT(sectors.size(), 6u);
    Topology all = whole;
    for (const Sector& sector : sectors) {
      const auto part = tree->Contracted(sector.topology, sector.subtrees);
      const double before = part->Length();
      for (int k = 0; k < 5; ++k) part->Apply(RandomMove(part->Current(), generator));
      for (const int subtree : part->Current().At(part->Current().taxa)) {
        SprMove best;
        const double now = part->Length();
        if (!part->BestSpr(part->Current().taxa, subtree, best)) continue;
        part->Apply(best);
        EXPECT_NEAR(part->Length(), now - best.gain, 1e-12);
        break;
      }
      Topology after = whole;
      PutBack(sector, part->Current(), after);
      PutBack(sector, part->Current(), all);
      tree->Set(after);
      EXPECT_NEAR(tree->Length() - length, part->Length() - before, 1e-10);
      tree->Set(whole);
      part->Set(sector.topology);
      EXPECT_NEAR(part->Length(), before, 1e-12);
    }
    tree->Set(all);
    EXPECT_NEAR(tree->Length(), MakeNeighbourhood(criterion, all, distances.Rows())->Length(),
                1e-12);
  }
}

// One sector has become shorter, and one that says so longer by more.
TEST(Sectors, ArePutTogetherWhereThatMakesTheTreeShorter) {
  std::mt19937_64 generator(1);
  const DistanceMatrix distances = Noise(200, 3);
  BalancedNeighbourhood tree(test::RandomTopology(distances, generator), distances.Rows());
  const std::vector<Sector> sectors = CutIntoSectors(tree.Current(), 20, generator);
  const double before = tree.Length();
  const auto changed = [&](int number, const auto& enough) {
    const Sector& sector = sectors[Index(number)];
    const auto part = tree.Contracted(sector.topology, sector.subtrees);
    const double length = part->Length();
    while (!enough(part->Length() - length)) {
      const Topology kept = part->Current();
      const double last = part->Length();
      part->Apply(RandomMove(kept, generator));
      if ((part->Length() > last) != enough(HUGE_VAL)) part->Set(kept);
    }
    return SectorGain{number, length - part->Length(), part->Current()};
  };
  const SectorGain shorter = changed(0, [](double rise) { return rise < 0; });
  SectorGain longer = changed(1, [&](double rise) { return rise > 2 * shorter.gain; });
  longer.gain = shorter.gain / 2;
  PutTogether(sectors, {longer, shorter}, tree);
  EXPECT_NEAR(tree.Length(), before - shorter.gain, 1e-10);
  PutTogether(sectors, {longer}, tree);
  EXPECT_NEAR(tree.Length(), before - shorter.gain, 1e-10);
}

TEST(Balanced, FindsTheOptimumOfSmallData) {
  for (std::uint32_t seed = 1; seed <= 1000; ++seed) {
    const int n = static_cast<int>(seed % 40 == 0 ? 8 : 4 + seed % 4);
    const DistanceMatrix distances =
        seed % 3 == 0 ? test::TreeLikeMatrix(n, 0.5, seed) : Noise(n, seed);
    const auto direct = [&](const Topology& tree) { return DirectLength(tree, distances); };
    EXPECT_NEAR(Find(distances, 20).length, test::LeastOfAll(n, direct), 1e-13) << n << " " << seed;
  }
}

TEST(Balanced, TheUnitOfTheDistancesDoesNotMatter) {
  const int n = 60;
  const DistanceMatrix distances = test::TreeLikeMatrix(n, 0.3, 1);
  const double length = Find(distances).length;
  for (const double factor : {1e-200, 0.37, 1e200}) {
    const DistanceMatrix scaled =
        test::Matrix(n, [&](int i, int j) { return distances(i, j) * factor; });
    EXPECT_NEAR(Find(scaled).length / factor, length, 1e-12);
  }
}

TEST(Balanced, TiesEndAndWhatIsNoNumberIsRefused) {
  std::mt19937_64 generator(1);
  for (const double all : {0.0, 0.1, -1.0}) {
    const DistanceMatrix equal = test::Matrix(30, [&](int, int) { return all; });
    EXPECT_NEAR(Find(equal, 5).length, 15 * all, 1e-14);
    BalancedNeighbourhood tree(test::RandomTopology(equal, generator), equal.Rows());
    for (int u = 30; u < 58; ++u) {
      for (const int v : tree.Current().At(u)) {
        SprMove best;
        EXPECT_FALSE(tree.BestSpr(u, v, best));
        EXPECT_FALSE(!tree.Current().IsLeaf(v) && tree.BestNni(u, v, best));
      }
    }
  }
  const DistanceMatrix tied =
      test::Matrix(50, [&](int, int) { return static_cast<double>(generator() % 3); });
  const SearchResult found = Find(tied, 20);
  EXPECT_NEAR(found.length, TotalLength(found.tree), 1e-12);
  for (const double bad : {std::nan(""), HUGE_VAL}) {
    EXPECT_THROW(Find(test::Matrix(5, [&](int i, int j) { return i + j == 5 ? bad : 1.0; })),
                 Error);
  }
}

}  // namespace
}  // namespace zorvek::wide
