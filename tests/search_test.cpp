// The moves that trade leaves, against the list of trials each is to make, and trees by neighbour joining
// and by random pairs.

#include <sstream>

#include "driver/run_state.h"
#include "search/iterated_local_search.h"
#include "search/leaf_slots.h"
#include "search/permute.h"
#include "search/random_nj.h"
#include "search/shift.h"
#include "search/three_opt.h"
#include "search/two_opt.h"
#include "tests/data.h"
#include "tests/files.h"
#include "tests/plain_joining.h"
#include "tests/reference_input.h"
#include "tree/fast_local_search.h"
#include "tree/tree_length.h"

namespace zorvek {
namespace {

using test::Tree;

struct Trial {
  Tree tree;
  double length;
};

// The tree after each taxon `from[i]` has become `to[i]`.
Trial Relabelled(Tree tree, const std::vector<int>& from, const std::vector<int>& to) {
  for (double* slot : LeafSlots(tree)) {
    const auto at = std::find(from.begin(), from.end(), static_cast<int>(*slot));
    if (at != from.end()) *slot = to[static_cast<std::size_t>(at - from.begin())];
  }
  const double length = Evaluate(tree);
  return {tree, length};
}

int DrawLeaf(TreeTable tree) {
  for (;;) {
    const std::uint32_t row = r->nextAtMost(static_cast<std::uint32_t>(n - 3));
    const std::uint32_t side = r->nextAtMost(1);
    if (tree[row][2 + side] < n) return static_cast<int>(tree[row][2 + side]);
  }
}

using Move = std::function<double(TreeTable, double)>;
using Trials = std::function<std::vector<Trial>(Tree)>;  // makes the draws, and lists what is tried

// Holds a first-improvement search to its list under every bound that tells two trials apart.
void ExpectFirstBelowEveryBound(const Move& move, const Tree& start, const Trials& list,
                                std::uint32_t seed) {
  r->seedWithValue(seed);
  const std::vector<Trial> trials = list(start);
  const std::uint32_t next_word = r->nextWord();
  std::vector<double> bounds{0, 1e8, std::nan("")};
  for (const Trial& trial : trials) bounds.push_back(trial.length);
  for (const double bound : bounds) {
    const auto kept = std::find_if(trials.begin(), trials.end(),
                                   [bound](const Trial& trial) { return trial.length < bound; });
    Tree tree = start;
    r->seedWithValue(seed);
    const double result = move(tree, bound);
    EXPECT_EQ(r->nextWord(), next_word);
    if (kept != trials.end()) {
      EXPECT_EQ(result, kept->length);
      EXPECT_TRUE(tree == kept->tree);
      continue;
    }
    EXPECT_TRUE(result == bound || std::isnan(bound));
    EXPECT_EQ(test::Ids(tree), test::Ids(start));
    // The lengths tell that the last trial of the list was the last one made.
    EXPECT_EQ(test::Lengths(tree), test::Lengths(trials.empty() ? start : trials.back().tree));
  }
}

// Calls `check` with the state of a run set up and a random tree of it.
void OnRandomTrees(const std::function<void(const Tree&, std::uint32_t)>& check) {
  std::mt19937 generator(5);
  for (const int taxa_count : {4, 5, 9, 14}) {
    const test::Workspace workspace(taxa_count, test::RandomDistances(2));
    for (std::uint32_t seed = 0; seed < 4; ++seed) {
      test::Shuffle(T1, generator);
      check(Tree(T1), seed);
    }
  }
}

TEST(Moves, TwoOptTriesTheNearestTaxaInOrderWithinTheHorizon) {
  OnRandomTrees([](const Tree& start, std::uint32_t seed) {
    for (const int depth : {-1, 0, 1, 3, n - 1, n + 5}) {
      horizon = depth;
      const auto list = [depth](Tree tree) {
        const int leaf = DrawLeaf(tree);
        std::vector<Trial> trials;
        for (int k = 0; k < std::clamp(depth, 0, n - 1); ++k) {
          const int other = CL[leaf][k];
          trials.push_back(Relabelled(tree, {leaf, other}, {other, leaf}));
        }
        return trials;
      };
      ExpectFirstBelowEveryBound(TWOoptLocalSearch, start, list, seed);
    }
    horizon = 0;
    int** const lists = std::exchange(CL, nullptr);  // which it needs no more
    EXPECT_EQ(TWOoptLocalSearch(T1, 0.125), 0.125);
    CL = lists;
  });
}

TEST(Moves, ThreeOptTriesTheFivePlacementsOfEachTripleInOrder) {
  const auto list = [](Tree tree) {
    const int a = DrawLeaf(tree);
    int b = a;
    while (b == a) b = DrawLeaf(tree);
    std::vector<Trial> trials;
    for (const double* slot : LeafSlots(tree)) {
      const int c = static_cast<int>(*slot);
      if (c == a || c == b) continue;
      for (const auto& placed :
           {std::vector{a, c, b}, {c, a, b}, {c, b, a}, {b, c, a}, {b, a, c}}) {
        trials.push_back(Relabelled(tree, {a, b, c}, placed));
      }
    }
    return trials;
  };
  OnRandomTrees([&](const Tree& start, std::uint32_t seed) {
    ExpectFirstBelowEveryBound(THREEoptLocalSearch, start, list, seed);
  });
}

// Appends the leaves below a node, left before right.
void LeavesBelow(int node, TreeTable tree, std::vector<int>& leaves) {
  if (node < n) {
    leaves.push_back(node);
    return;
  }
  LeavesBelow(Id(tree[node - n], kLeft), tree, leaves);
  LeavesBelow(Id(tree[node - n], kRight), tree, leaves);
}

TEST(Moves, PermuteDealsInDepthFirstOrderAndRepairsWhatIsNotShorter) {
  OnRandomTrees([](const Tree& start, std::uint32_t) {
    Tree tree = start;
    std::vector<int> from;
    std::vector<int> to;
    for (const double* slot : LeafSlots(tree)) from.push_back(static_cast<int>(*slot));
    for (const int central : {2 * n - 4, 2 * n - 3}) LeavesBelow(central, tree, to);
    const Trial dealt = Relabelled(start, from, to);
    EXPECT_EQ(Permute(tree, dealt.length + 1), dealt.length);
    EXPECT_TRUE(tree == dealt.tree);

    for (const int limit : {0, 1000}) {
      MAX_TIME = limit;
      tree = start;
      EXPECT_EQ(Permute(tree, dealt.length), dealt.length);
      EXPECT_TRUE(temp1.empty());
      EXPECT_EQ(test::CheckTree(tree), "");
      Tree repaired = dealt.tree;
      while (FastLocalSearch(repaired) && limit > 0) {
      }
      EXPECT_EQ(test::Ids(tree), test::Ids(repaired));
    }
    MAX_TIME = 0;
  });
}

// The step with an inner limit: repairs until nothing changes, 25 calls of the 2-opt search, a shift.
TEST(Moves, StepWithinTheInnerLimitRepeatsItsSearches) {
  OnRandomTrees([](const Tree& start, std::uint32_t seed) {
    MAX_TIME = 1000;
    horizon = n - 1;
    r->seedWithValue(seed);
    Tree tree = start;
    double best = 1e8;
    int failures = 3;
    std::ostringstream log;
    const auto note = [&](const char* tag, double length) {
      failures -= length < best ? 1 : 0;
      if (length < best) log << tag << " improved primal bound:" << length << "\n";
      best = std::min(best, length);
    };
    while (FastLocalSearch(tree)) {
    }
    double length = Evaluate(tree);
    note("FLS", length);
    for (int call = 0; call < 25; ++call) length = TWOoptLocalSearch(tree, length);
    note("2LS", length);
    length = Shift(tree, length);
    note("SFT", length);

    CopyTree(start, T1);
    r->seedWithValue(seed);
    opt_val = 1e8;
    const reference::TemporaryFile file("");
    outML.open(file.Path());
    EXPECT_EQ(ILS(0), failures);
    outML.close();
    EXPECT_TRUE(Tree(T1) == tree);
    EXPECT_EQ(t1_val, length);
    EXPECT_EQ(std::regex_replace(test::Contents(file.Path()), std::regex(" at:[^\n]*"), ""),
              log.str());
  });
}

TEST(TreeTable, ResetOfNothingTouchesNothing) {
  double cells[] = {1, 2};
  double* rows[] = {cells, nullptr};
  Reset(nullptr, 3, 0);
  Reset(nullptr, 0, 3);
  Reset(rows + 1, 2, -1);
  Reset(rows, 1, 1);
  EXPECT_EQ(cells[0], 0);
  EXPECT_EQ(cells[1], 2);
}

using Joins = std::vector<std::pair<int, int>>;  // children of the node rows of T2

Joins JoinsOfT2() {
  Joins joins;
  for (int row = 0; row < n - 2; ++row) joins.emplace_back(Id(T2[row], kLeft), Id(T2[row], kRight));
  return joins;
}

// Distances of few values, which tie often, and multiples of their divisors, so that sums are exact.
TEST(RandomNJ, NeighbourJoiningTakesTheFirstOfEqualPairs) {
  std::mt19937 generator(4);
  for (int taxa_count = 4; taxa_count <= 14; ++taxa_count) {
    const test::Workspace workspace(taxa_count, [&generator](int, int) {
      return std::ldexp(27720.0 * static_cast<double>(generator() % 4 + 1), 12);
    });
    const wide::Topology plain = test::JoinPlainly<double>(n, DM1, true);
    Joins expected;
    for (const auto& node : plain.adjacent) expected.emplace_back(node[0], node[1]);
    alpha = n_ants = 1;
    RandomNJ();
    EXPECT_EQ(JoinsOfT2(), expected) << n << " taxa";
  }
}

TEST(RandomNJ, RandomPairsAreDrawnFromAllButTheLastNode) {
  const test::Workspace workspace(7, test::RandomDistances(1), 9);
  alpha = 0.999;
  n_ants = 1;
  MTRand replay;
  replay.seedWithValue(9);
  for (int tree = 0; tree < 1000; ++tree) {
    std::vector<int> active{0, 1, 2, 3, 4, 5, 6};
    Joins joins;
    for (int node = n; active.size() > 3; ++node) {
      const auto bound = static_cast<std::uint32_t>(active.size() - 2);
      std::uint32_t first = 0, second = 0;
      while (first >= second) {
        first = replay.nextAtMost(bound);
        second = replay.nextAtMost(bound);
      }
      joins.emplace_back(active[first], active[second]);
      active.erase(active.begin() + second);
      active.erase(active.begin() + first);
      active.push_back(node);
    }
    joins.emplace_back(active[0], active[1]);
    RandomNJ();
    ASSERT_EQ(JoinsOfT2(), joins);
  }
}

TEST(RandomNJ, KeepsTheLastTreeAndTheBestAndLeavesTheNodeMatrixAsInitDid) {
  const test::Workspace workspace(9, test::RandomDistances(2));
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
  EM[0][0] = EM[n][0] = EM[0][n] = EM[n + 1][n] = 3;
  RandomNJ();
  EXPECT_EQ(t1_val, last) << "six constructions in one call are those of six calls";
  for (int i = 0; i < 2 * n - 2; ++i) {
    for (int j = 0; j < 2 * n - 2; ++j) EXPECT_EQ(EM[i][j], i < n && j < n ? DM1[i][j] : 0);
  }
}

}  // namespace
}  // namespace zorvek
