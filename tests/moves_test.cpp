// The moves that trade leaves, against the list of trials each is to make: a trial is a relabelled
// copy of the tree, evaluated by itself, so that undoing plays no part here.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "driver/run_state.h"
#include "search/iterated_local_search.h"
#include "search/permute.h"
#include "search/shift.h"
#include "search/three_opt.h"
#include "search/two_opt.h"
#include "tests/data.h"
#include "tree/fast_local_search.h"
#include "tree/tree_length.h"

namespace zorvek {
namespace {

// A tree table of its own, that can be copied.
class Tree {
 public:
  explicit Tree(TreeTable tree) : cells_(static_cast<std::size_t>((n - 1) * kFields)) {
    for (std::size_t cell = 0; cell < cells_.size(); cell += kFields)
      rows_.push_back(&cells_[cell]);
    CopyTree(tree, rows_.data());
  }
  Tree(const Tree& other) : Tree(TreeTable(other)) {}
  Tree& operator=(const Tree& other) {
    cells_ = other.cells_;
    return *this;
  }
  operator TreeTable() const { return rows_.data(); }
  bool operator==(const Tree& other) const { return cells_ == other.cells_; }

 private:
  std::vector<double> cells_;
  mutable std::vector<double*> rows_;
};

// The table's leaf fields in the order of the rows.
std::vector<double*> Slots(TreeTable tree) {
  std::vector<double*> slots;
  for (int row = 0; row < n - 2; ++row) {
    for (const int field : {2, 3}) {
      if (tree[row][field] < n) slots.push_back(&tree[row][field]);
    }
  }
  return slots;
}

struct Trial {
  Tree tree;
  double length;
};

// The tree after each taxon `from[i]` has become `to[i]`.
Trial Relabelled(Tree tree, const std::vector<int>& from, const std::vector<int>& to) {
  for (double* slot : Slots(tree)) {
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
  std::vector<double> bounds{0, 1e8, std::numeric_limits<double>::quiet_NaN()};
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
      ExpectFirstBelowEveryBound(
          TWOoptLocalSearch, start,
          [depth](Tree tree) {
            const int leaf = DrawLeaf(tree);
            std::vector<Trial> trials;
            for (int k = 0; k < std::clamp(depth, 0, n - 1); ++k) {
              const int other = CL[leaf][k];
              trials.push_back(Relabelled(tree, {leaf, other}, {other, leaf}));
            }
            return trials;
          },
          seed);
    }
  });
}

TEST(Moves, ThreeOptTriesTheFivePlacementsOfEachTripleInOrder) {
  OnRandomTrees([](const Tree& start, std::uint32_t seed) {
    ExpectFirstBelowEveryBound(
        THREEoptLocalSearch, start,
        [](Tree tree) {
          const int a = DrawLeaf(tree);
          int b = a;
          while (b == a) b = DrawLeaf(tree);
          std::vector<Trial> trials;
          for (const double* slot : Slots(tree)) {
            const int c = static_cast<int>(*slot);
            if (c == a || c == b) continue;
            for (const std::vector<int>& placed : std::vector<std::vector<int>>{
                     {a, c, b}, {c, a, b}, {c, b, a}, {b, c, a}, {b, a, c}}) {
              trials.push_back(Relabelled(tree, {a, b, c}, placed));
            }
          }
          return trials;
        },
        seed);
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
    for (const double* slot : Slots(tree)) from.push_back(static_cast<int>(*slot));
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

// The step with an inner limit: repairs until nothing changes, 25 calls of the 2-opt search, a
// shift.
TEST(Moves, StepWithinTheInnerLimitRepeatsItsSearches) {
  bool two_opt_improved = false;
  OnRandomTrees([&](const Tree& start, std::uint32_t seed) {
    MAX_TIME = 1000;
    horizon = n - 1;
    r->seedWithValue(seed);
    Tree tree = start;
    while (FastLocalSearch(tree)) {
    }
    const double repaired = Evaluate(tree);
    double traded = repaired;
    for (int call = 0; call < 25; ++call) traded = TWOoptLocalSearch(tree, traded);
    const double shifted = Shift(tree, traded);
    two_opt_improved |= traded < repaired;

    CopyTree(start, T1);
    opt_val = 1e8;
    r->seedWithValue(seed);
    EXPECT_EQ(ILS(0), (traded == repaired) + (shifted == traded));
    EXPECT_TRUE(Tree(T1) == tree);
    EXPECT_EQ(opt_val, shifted);
  });
  EXPECT_TRUE(two_opt_improved) << "a test that shows nothing";
}

}  // namespace
}  // namespace zorvek
