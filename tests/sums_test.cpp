// The exact sums and what stands on them: lengths, gains, fast local search, and the search as a
// whole against the slow reference.
#include <gtest/gtest.h>

#include "core/ordered_sum.h"
#include "driver/run.h"
#include "driver/run_state.h"
#include "search/random_perturbation.h"
#include "search/shift.h"
#include "tests/reference.h"
#include "tree/fast_local_search.h"
#include "tree/starting_tree.h"
#include "tree/tree_follower.h"
#include "tree/tree_length.h"

namespace zorvek {
namespace {

using test::Lengths;
using test::Workspace;

TEST(TreeLength, OfAKnownTree) {
  const double list[] = {3, 7, 8, 6, 7, 5};
  const Workspace four(4, [next = list](int, int) mutable { return *next++; });
  EXPECT_EQ(test::Ids(OPT), (std::vector<double>{5, 4, 0, 1, 4, 5, 2, 3, -1, 6, 4, 5}));
  EXPECT_EQ(Evaluate(OPT), 11);
  EXPECT_EQ(Lengths(OPT), (std::vector<double>{2, 1, 2, 3, 3, 0}));
  EXPECT_EQ(Lengths(T1), std::vector<double>(6));  // copied before the evaluation
  EXPECT_EQ(opt_val + t1_val, 22);
  EXPECT_FALSE(FastLocalSearch(T1));
}

// Every length and gain of a table against the definition in long double.
void ExpectAsDefined(TreeTable tree) {
  const double total = Evaluate(tree);
  const std::vector<double> lengths = Lengths(tree);
  const double tolerance = 1e-12;
  ASSERT_NEAR(total, static_cast<double>(reference::Evaluate<long double>(tree)),
              tolerance * total);
  const std::vector<double> defined = Lengths(tree);
  for (std::size_t i = 0; i < lengths.size(); ++i) ASSERT_NEAR(lengths[i], defined[i], tolerance);
  for (int row = 0; row < n - 2; ++row) {
    for (const Field side : {kLeft, kRight}) {
      const int child = Id(tree[row], side), node = n + row;
      const double length = lengths[Index(2 * row + side - kLeft)];
      if (child < n) {
        ASSERT_EQ(ComputeExternalLength(child, node, tree), length);
        continue;
      }
      ASSERT_EQ(ComputeInternalLength(node, child, tree), length);
      const double gain = static_cast<double>(reference::Delta<long double>(child, node, tree));
      ASSERT_NEAR(Delta(child, node, tree), gain, tolerance);
      ASSERT_EQ(Delta(child, node, tree), Delta(node, child, tree));
    }
  }
}

// Whatever happened before, a table gives the same bits as to an instance that sees it first.
void ExpectAsRebuilt(TreeTable tree) {
  const FollowerScope scope;
  const double kept = Evaluate(tree);
  const std::vector<double> lengths = Lengths(tree);
  TreeFollower fresh(n, DM1);
  fresh.Follow(tree);
  ASSERT_EQ(fresh.Length(), kept);
  fresh.WriteLengths(tree);
  ASSERT_EQ(Lengths(tree), lengths);
  const TreeFollower::Candidate best = scope.Follow(tree).Best();
  ASSERT_EQ(fresh.Best().gain, best.gain);
  ASSERT_EQ(fresh.Best().child, best.child);
}

// What a call returns, with leaves left in temp1 beforehand that it has to take away.
template <typename Call>
auto Emptied(const Call& call) {
  temp1 = {1, 2, 3};
  const auto result = call();
  EXPECT_TRUE(temp1.empty());
  return result;
}

// Neither other distances before nor a table that is no tree leaves a trace.
TEST(TreeLength, AnswersForTheDistancesAsTheyStand) {
  const Workspace workspace(8, test::DyadicDistances(1));
  std::mt19937 generator(2);
  for (std::uint32_t change = 0; change < 40; ++change) {
    test::Shuffle(T1, generator);
    const test::Tree plain(T1);
    const test::Tree broken(T1);
    broken.data()[generator() % 6][kLeft] = 0;
    Evaluate(broken);
    auto distance = test::DyadicDistances(change);
    for (const auto& [i, j] : test::Pairs(n)) DM1[i][j] = DM1[j][i] = distance(i, j);
    ASSERT_EQ(Emptied([] { return Evaluate(T1); }), reference::Evaluate<double>(plain));
    ASSERT_EQ(Lengths(T1), Lengths(plain));
    DM1[0][1] = DM1[1][0] += 0.5;
    reference::Evaluate<double>(plain);
    for (int row = 0; row < n - 2; ++row) {
      const int child = Id(plain.data()[row], kLeft);
      const int node = n + row;
      ASSERT_EQ(Emptied([&] {
                  return child < n ? ComputeExternalLength(child, node, T1)
                                   : ComputeInternalLength(node, child, T1);
                }),
                plain.data()[row][kLeftLength]);
      if (child < n) continue;
      ASSERT_EQ(Emptied([&] { return Delta(child, node, T1); }),
                reference::Delta<double>(child, node, plain));
    }
    DM1[2][3] = DM1[3][2] += 0.5;
    ASSERT_EQ(Emptied([] { return FastLocalSearch(T1); }), reference::FastLocalSearch(plain));
    ASSERT_EQ(test::Ids(T1), test::Ids(plain));
    ASSERT_EQ(Emptied([] { return DJT(), opt_val; }), reference::Evaluate<double>(OPT));
  }
}

class ManyChanges : public testing::TestWithParam<int> {};

TEST_P(ManyChanges, FastIsAsDefinedAndAsRebuilt) {
  const int taxa_count = GetParam();
  const Workspace workspace(taxa_count, test::RandomDistances(7));
  const FollowerScope scope;
  std::mt19937 generator(11);
  test::Shuffle(T1, generator);
  CopyTree(T1, T2);
  const std::vector<std::function<void()>> changes{[] { Shift(T1, 0.0); },
                                                   [] { CopyTree(T2, T1); },
                                                   [] { CopyTree(T1, T2); },
                                                   [] { RandomPerturbation(T1); },
                                                   [] { FastLocalSearch(T1); },
                                                   [] { Evaluate(T2); },
                                                   [&] { test::RandomInterchange(T1, generator); }};
  for (int change = 0; change < 300; ++change) {
    changes[generator() % changes.size()]();
    ASSERT_EQ(test::CheckTree(T1), "");
    ExpectAsRebuilt(T1);
    if (change % (taxa_count > 30 ? 60 : 10) == 0) ExpectAsDefined(T1);
    if (HasFatalFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Taxa, ManyChanges, testing::Values(4, 5, 6, 7, 16, 33, 70));

// Distances that are multiples of 2^-20 have exact plain sums, so the whole search must take the
// same course as the plain loops in double arithmetic, draw by draw and bit by bit. Small whole numbers
// make many gains equal, or 0.
class Trace : public testing::TestWithParam<int> {};

TEST_P(Trace, IsThatOfThePlainLoops) {
  const int taxa_count = GetParam();
  for (std::uint32_t seed = 1; seed <= 6; ++seed) {
    const auto whole = [generator = std::mt19937(seed)](int, int) mutable {
      return static_cast<double>(generator() % 3 + 1);
    };
    const Workspace workspace(
        taxa_count, seed > 3 ? std::function<double(int, int)>(whole) : test::DyadicDistances(seed),
        seed);
    reference::Search slow(seed);
    ASSERT_EQ(opt_val, slow.best_length);
    Search fast;
    for (int step = 0; step < (taxa_count > 20 ? 40 : 400); ++step) {
      slow.Step();
      fast.Step();
      ASSERT_EQ(t1_val, slow.current_length) << "step " << step;
      ASSERT_EQ(opt_val, slow.best_length);
      ASSERT_EQ(test::Ids(T1), test::Ids(slow.current));
      ASSERT_EQ(Lengths(T1), Lengths(slow.current));
      ASSERT_EQ(Lengths(OPT), Lengths(slow.best));
    }
    ASSERT_EQ(r->nextWord(), slow.random.nextWord());
  }
}

INSTANTIATE_TEST_SUITE_P(Taxa, Trace, testing::Values(4, 5, 7, 12, 20, 45));

TEST(OrderedSum, IsThatOfThePlainLoopBitByBit) {
  std::mt19937 generator(5);
  for (const int terms : {1, 31, 32, 33, 400}) {
    OrderedSum sum(terms);
    std::vector<double> plain(Index(terms));
    for (int change = 0; change < 4000; ++change) {
      const std::size_t term = generator() % plain.size();
      // Few significant bits over many magnitudes: halfway cases and changes of binade.
      plain[term] =
          std::ldexp(static_cast<double>(generator() % 8), static_cast<int>(generator() % 60));
      if (generator() % 3 == 0) plain[term] = 0;
      sum.Set(static_cast<int>(term), plain[term]);
      if (change % 3 == 0) continue;
      double expected = 0;
      for (const double value : plain) expected += value;
      ASSERT_EQ(sum.Total(), expected);
    }
  }
}

}  // namespace
}  // namespace zorvek
