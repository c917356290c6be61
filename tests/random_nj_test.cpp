// Trees by neighbour joining and by random pairs.
#include "search/random_nj.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "driver/run_state.h"
#include "tests/data.h"
#include "tree/tree_length.h"

namespace zorvek {
namespace {

using Paths = std::map<std::pair<int, int>, double>;

// The path lengths between all taxa. A tree of positive edge lengths is told by them.
Paths PathLengths(TreeTable tree) {
  Paths paths;
  const auto add_edge = [&](int node, int from, double length) {
    FC(node, from, tree);
    const std::vector<int> beyond = std::exchange(temp1, {});
    for (const int i : beyond) {
      for (int j = 0; j < n; ++j) {
        if (!IsContained(j, beyond)) paths[{j, i}] = paths[{i, j}] += length;
      }
    }
  };
  for (int row = 0; row < n - 2; ++row) {
    add_edge(Id(tree[row], kLeft), n + row, tree[row][kLeftLength]);
    add_edge(Id(tree[row], kRight), n + row, tree[row][kRightLength]);
  }
  add_edge(2 * n - 4, 2 * n - 3, tree[n - 2][kLeftLength]);
  return paths;
}

TEST(RandomNJ, NeighbourJoiningFindsTheTreeOfAnAdditiveMatrix) {
  for (const int taxa_count : {4, 5, 6, 11, 30, 80}) {
    for (std::uint32_t seed = 0; seed < 5; ++seed) {
      const test::Workspace workspace(taxa_count, test::TreeLikeDistances(taxa_count, 0, seed));
      alpha = n_ants = 1;
      opt_val = 1e8;
      testing::internal::CaptureStdout();
      RandomNJ();
      const std::string output = testing::internal::GetCapturedStdout();
      EXPECT_EQ(output.rfind("RandomNJ improved primal bound:", 0), 0u);
      for (const auto& [pair, length] : PathLengths(OPT)) {
        ASSERT_NEAR(length, DM1[pair.first][pair.second], 1e-9);
      }
    }
  }
}

using Joins = std::vector<std::pair<int, int>>;  // children of the node rows of T2

Joins JoinsOfT2() {
  Joins joins;
  for (int row = 0; row < n - 2; ++row) joins.emplace_back(Id(T2[row], kLeft), Id(T2[row], kRight));
  return joins;
}

// Joins the pairs of positions that `choose` gives for an active list, down to three nodes.
template <typename Choose>
Joins Agglomerate(const Choose& choose) {
  std::vector<int> active;
  for (int leaf = 0; leaf < n; ++leaf) active.push_back(leaf);
  Joins joins;
  while (active.size() > 3) {
    const auto [i, j] = choose(active);
    joins.emplace_back(active[i], active[j]);
    active.erase(active.begin() + static_cast<std::ptrdiff_t>(j));
    active.erase(active.begin() + static_cast<std::ptrdiff_t>(i));
    active.push_back(n + static_cast<int>(joins.size()) - 1);
  }
  joins.emplace_back(active[0], active[1]);
  return joins;
}

// The documented arithmetic, on small whole distances: they tie often.
TEST(RandomNJ, NeighbourJoiningTakesTheFirstOfEqualPairs) {
  std::mt19937 generator(4);
  for (int taxa_count = 4; taxa_count <= 14; ++taxa_count) {
    const test::Workspace workspace(
        taxa_count, [&generator](int, int) { return static_cast<double>(generator() % 4 + 1); });
    Paths d;
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) d[{i, j}] = DM1[i][j];
    }
    int node = n;
    const auto choose = [&](const std::vector<int>& active) {
      std::vector<double> divergence(active.size());
      for (std::size_t a = 0; a < active.size(); ++a) {
        for (const int other : active) divergence[a] += d[{active[a], other}];
        divergence[a] /= static_cast<double>(active.size() - 2);
      }
      std::pair<std::size_t, std::size_t> pair;
      double least = 1e8;
      for (std::size_t a = 0; a < active.size(); ++a) {
        for (std::size_t b = a + 1; b < active.size(); ++b) {
          const double q = d[{active[a], active[b]}] - divergence[a] - divergence[b];
          if (q < least) pair = {a, b};
          least = std::min(least, q);
        }
      }
      const int x = active[pair.first];
      const int y = active[pair.second];
      for (const int w : active) {
        d[{node, w}] = d[{w, node}] = (d[{x, w}] + d[{y, w}] - d[{x, y}]) * 0.5;
      }
      ++node;
      return pair;
    };
    alpha = n_ants = 1;
    RandomNJ();
    EXPECT_EQ(JoinsOfT2(), Agglomerate(choose)) << n << " taxa";

    for (int i = 0; i < n; ++i) std::fill_n(EM[i], n, -1e9);
    RandomNJ();
    EXPECT_EQ(JoinsOfT2()[0], std::make_pair(0, 1)) << "where no criterion is below 1e8";
  }
}

TEST(RandomNJ, RandomPairsAreDrawnFromAllButTheLastNode) {
  const test::Workspace workspace(7, test::RandomDistances(1), 9);
  alpha = 0.999;
  n_ants = 1;
  MTRand replay;
  replay.seedWithValue(9);
  const auto choose = [&replay](const std::vector<int>& active) {
    const auto bound = static_cast<std::uint32_t>(active.size() - 2);
    for (;;) {
      const std::size_t i = replay.nextAtMost(bound);
      const std::size_t j = replay.nextAtMost(bound);
      if (i < j) return std::make_pair(i, j);
    }
  };
  for (int tree = 0; tree < 1000; ++tree) {
    RandomNJ();
    ASSERT_EQ(JoinsOfT2(), Agglomerate(choose));
  }
}

TEST(RandomNJ, KeepsTheLastTreeAndTheBestAndLeavesTheNodeMatrixAsInitDid) {
  const test::Workspace workspace(9, test::RandomDistances(2));
  RandomNJ();
  EXPECT_EQ(t2_val, 0) << "no construction was asked for";

  opt_val = 1e8;
  n_ants = 1;
  double best = 1e8;
  for (int call = 0; call < 6; ++call) {
    RandomNJ();
    EXPECT_EQ(test::CheckTree(T1), "");
    EXPECT_EQ(test::Ids(T1), test::Ids(T2));
    EXPECT_EQ(t1_val, Evaluate(T1));
    EXPECT_EQ(t2_val, t1_val);
    best = std::min(best, t1_val);
    EXPECT_EQ(opt_val, best);
    EXPECT_EQ(Evaluate(OPT), best);
  }

  const double last = std::exchange(t1_val, 1e8);
  r->seedWithValue(1);
  n_ants = 6;
  RandomNJ();
  EXPECT_EQ(t1_val, last) << "six constructions in one call are those of six calls";
  for (int i = 0; i < 2 * n - 2; ++i) {
    for (int j = 0; j < 2 * n - 2; ++j) EXPECT_EQ(EM[i][j], i < n && j < n ? DM1[i][j] : 0);
  }
}

}  // namespace
}  // namespace zorvek
