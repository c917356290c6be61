// What a bootstrap draws, told by supports whose expectations are known.
#include <gtest/gtest.h>

#include <atomic>

#include "tests/trees.h"
#include "wide/data/topology.h"
#include "zorvek/io.h"
#include "zorvek/support.h"

namespace zorvek::wide {
namespace {

constexpr int kSites = 60;

// Taxa 0..4, all the same but for one site, which has the group {3, 4}.
Alignment OneGroup(int site) {
  std::string row;
  while (row.size() < kSites) row += "ACGT";
  std::string other = row;
  other[Index(site)] = row[Index(site)] == 'A' ? 'C' : 'G';
  return MakeAlignment("", {"a", "b", "c", "d", "e"}, {row, row, row, other, other});
}

Tree WithTheGroup() {
  return ReadTrees(Source("", "(a:1,b:1,(c:1,(d:1,e:1):1):1);"), {"a", "b", "c", "d", "e"})
      .trees[0];
}

// A group that rests on one site of 60 is found in as many replicates as draw that site, and in no
// other, for its edge is 0 there.
TEST(Bootstrap, DrawsAsManySitesAsThereAreFromAllOfThem) {
  const double share = 1 - std::pow(1 - 1.0 / kSites, kSites);
  for (const int site : {0, kSites - 1}) {
    Tree tree = WithTheGroup();
    BootstrapSettings settings;
    settings.replicates = 1000;
    EXPECT_EQ(Bootstrap(OneGroup(site), ModelSettings(), settings, tree).done, 1000);
    EXPECT_NEAR(test::Edges(tree).at({3, 4}).second, share,
                4 * std::sqrt(share * (1 - share) / 1000));
  }
}

TEST(Bootstrap, StandsOnTheReplicatesThatAreDone) {
  Tree tree = WithTheGroup();
  std::atomic<bool> stop{false};
  BootstrapSettings settings;
  settings.replicates = 1000;
  settings.keep_trees = true;
  settings.search.stop = &stop;
  settings.on_done = [&](int done) { stop = done == 10; };
  const BootstrapResult result = Bootstrap(OneGroup(kSites - 1), {Model::kP, 0}, settings, tree);
  EXPECT_EQ(result.done, 10);
  EXPECT_EQ(result.trees.size(), 10u);
  int had = 0;
  for (const Tree& replicate : result.trees) {
    const auto edges = test::Edges(replicate);
    const double length = edges.count({3, 4}) > 0 ? edges.at({3, 4}).first : 0;
    EXPECT_NEAR(length * kSites, std::round(length * kSites), 1e-9) << "of other than 60 sites";
    had += length > 0 ? 1 : 0;
  }
  EXPECT_GT(had, 1);
  EXPECT_EQ(test::Edges(tree).at({3, 4}).second, had / 10.0);
}

// Two taxa share one site alone, without which they have no distance.
TEST(Bootstrap, DrawsAgainWhereADistanceIsMissing) {
  Alignment alignment = OneGroup(kSites - 1);
  for (int site = 0; site < kSites; ++site) {
    if (site < 30) alignment.cells[0][Index(site)] = kNoState;
    if (site > 30) alignment.cells[2][Index(site)] = kNoState;
  }
  Tree tree = WithTheGroup();
  BootstrapSettings settings;
  settings.replicates = 400;
  settings.search.threads = 3;
  const BootstrapResult result = Bootstrap(alignment, ModelSettings(), settings, tree);
  EXPECT_EQ(result.done, 400);
  EXPECT_EQ(result.given_up, 0);
  const double missing = std::pow(1 - 1.0 / kSites, kSites);
  const double bound = 4 * std::sqrt(400 * missing) / (1 - missing);
  EXPECT_NEAR(static_cast<double>(result.redrawn), 400 * missing / (1 - missing), bound);

  for (const int taxon : {0, 2}) alignment.cells[Index(taxon)][30] = kNoState;
  settings.replicates = 2;
  const BootstrapResult none = Bootstrap(alignment, ModelSettings(), settings, tree);
  EXPECT_EQ(none.given_up, 2);
  EXPECT_EQ(none.done, 0);
  EXPECT_EQ(test::Edges(tree).at({3, 4}).second, Tree::kNoSupport);
}

}  // namespace
}  // namespace zorvek::wide
