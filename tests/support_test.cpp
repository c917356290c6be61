// What trees say of the groups of another, against the definitions on random trees; and what a bootstrap
// draws, told by supports whose expectations are known.
#include "zorvek/support.h"

#include <atomic>
#include <numeric>

#include "tests/trees.h"
#include "zorvek/io.h"

namespace zorvek::wide {
namespace {

using test::Edges;
using Group = std::set<int>;

// A tree much or little like one that all have in common, with polytomies and edges that are no groups.
Tree Variant(const Tree& common, int moves, std::mt19937& generator) {
  std::vector<int> number(Index(common.taxa));
  std::iota(number.begin(), number.end(), 0);
  for (int k = 0; k < moves; ++k) {
    std::swap(number[generator() % number.size()], number[generator() % number.size()]);
  }
  Tree tree = MakeTree(TopologyOf(Renumbered(common, number)),
                       [](int u, int v) { return 1 + (u + v) % 3; });
  for (int node = tree.taxa; node < static_cast<int>(tree.nodes.size()); ++node) {
    if (generator() % 8 == 0) tree.nodes[Index(node)].length = generator() % 2 == 0 ? 0 : -1;
  }
  return test::Contracted(tree, [&](int) { return generator() % 8 == 0; });
}

// The groups of a tree, with single taxa if wanted.
std::set<Group> Groups(const Tree& tree, bool single) {
  std::set<Group> groups;
  for (const auto& [split, edge] : Edges(tree)) {
    const bool trivial = split.size() == 1 || Index(tree.taxa) - split.size() == 1;
    if (trivial ? single : edge.first > 0) groups.insert(split);
  }
  return groups;
}

std::size_t Apart(const Group& a, const Group& b, std::size_t n) {
  std::vector<int> differ;
  std::set_symmetric_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(differ));
  return std::min(differ.size(), n - differ.size());
}

TEST(WideSupport, IsTheShareOfTreesOrTheirMeanTransferDistance) {
  std::mt19937 generator(1);
  for (int trial = 0; trial < 60; ++trial) {
    const int n = 4 + trial % 21;
    const Tree common = test::RandomTree(n, generator);
    Tree tree = Variant(common, 0, generator);
    std::vector<Tree> trees;
    for (int k = 0; k < 6; ++k) trees.push_back(Variant(common, k < 3 ? k : n, generator));
    const std::set<Group> groups = Groups(tree, false);
    for (const auto measure : {SupportMeasure::kFrequency, SupportMeasure::kTransfer}) {
      SetSupports(trees, measure, tree);
      for (const auto& [split, edge] : Edges(tree)) {
        if (groups.count(split) == 0) {
          EXPECT_EQ(edge.second, Tree::kNoSupport);
          continue;
        }
        const std::size_t most = std::min(split.size(), Index(n) - split.size()) - 1;
        double sum = 0;
        for (const Tree& other : trees) {
          std::size_t nearest = most;
          for (const Group& group : Groups(other, true)) {
            nearest = std::min(nearest, Apart(split, group, Index(n)));
          }
          sum += measure == SupportMeasure::kTransfer
                     ? static_cast<double>(nearest) / static_cast<double>(most)
                     : nearest > 0;
        }
        EXPECT_NEAR(edge.second, 1 - sum / 6, 1e-12);
      }
    }
  }
}

TEST(WideSupport, TheConsensusHasTheGroupsOfMostTrees) {
  std::mt19937 generator(2);
  std::size_t inner = 0;
  for (int trial = 0; trial < 60; ++trial) {
    const int n = 4 + trial % 21;
    const Tree common = test::RandomTree(n, generator);
    std::vector<Tree> trees;
    for (int k = 0; k < 4 + trial % 2; ++k) trees.push_back(Variant(common, 1, generator));
    std::map<Group, std::pair<double, double>> expected;  // length and support
    std::map<Group, int> had;
    for (const Tree& tree : trees) {
      const auto edges = Edges(tree);
      for (const Group& group : Groups(tree, true)) {
        ++had[group];
        expected[group].first += edges.at(group).first;
      }
    }
    for (const auto& [group, count] : had) {
      if (2 * Index(count) <= trees.size()) {
        expected.erase(group);
        continue;
      }
      const bool single = group.size() == 1 || Index(n) - group.size() == 1;
      expected[group].first /= count;
      expected[group].second =
          single ? Tree::kNoSupport : count / static_cast<double>(trees.size());
      inner += single ? 0 : 1;
    }
    const Tree consensus = MajorityConsensus(trees);
    EXPECT_EQ(Edges(consensus), expected);
    EXPECT_EQ(consensus.At(consensus.root).children[0], 0);
  }
  EXPECT_GT(inner, 200u);
}

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

// A group that rests on one site of 60 is found in those replicates that draw the site, and in no other.
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
  EXPECT_EQ(none.redrawn, 198);
  EXPECT_EQ(none.done, 0);
  EXPECT_EQ(test::Edges(tree).at({3, 4}).second, Tree::kNoSupport);
}

}  // namespace
}  // namespace zorvek::wide
