// Trees of zorvek-wide: how they hang, their roots, and how they are written.
#include "tests/trees.h"

#include "tests/data.h"
#include "tests/files.h"
#include "wide/data/labels.h"
#include "wide/data/topology.h"
#include "wide/search/neighbour_joining.h"
#include "zorvek/io.h"

namespace zorvek::wide {
namespace {

using test::Contains;
using test::Edges;
using test::RandomTree;

// A tree of n taxa with supports, polytomies and a few edges of length 0.
Tree TreeWithSupports(int n, std::mt19937& generator) {
  Tree tree = RandomTree(n, generator);
  for (int node = n; node < static_cast<int>(tree.nodes.size()); ++node) {
    if (node == tree.root) continue;
    tree.nodes[Index(node)].support = static_cast<double>(generator() % 65) / 64;
    if (generator() % 5 == 0) tree.nodes[Index(node)].length = 0;
  }
  return test::Contracted(tree, [&](int) { return generator() % 4 == 0; });
}

TEST(WideTree, RootsCarryLengthsAndSupportsToTheRightEdges) {
  std::mt19937 generator(5);
  for (int trial = 0; trial < 60; ++trial) {
    const Tree tree = Unrooted(TreeWithSupports(4 + trial % 9, generator));
    const auto edges = Edges(tree);
    const int nodes = static_cast<int>(tree.nodes.size());
    for (int node = 0; node < nodes; ++node) {
      if (node == tree.root) continue;
      const double share = static_cast<double>(generator() % 5) / 4;
      const Tree rooted = RootedAbove(tree, node, share);
      ASSERT_TRUE(rooted.IsRooted());
      ASSERT_EQ(rooted.At(node).parent, rooted.root);
      ASSERT_EQ(rooted.At(node).length, tree.At(node).length * share);
      for (const auto& [split, edge] : Edges(rooted)) {
        ASSERT_NEAR(edge.first, edges.at(split).first, 1e-15);
        ASSERT_EQ(edge.second, edges.at(split).second);
      }
      const Tree back = Unrooted(rooted);
      ASSERT_EQ(back.nodes.size(), tree.nodes.size());
      ASSERT_EQ(back.At(back.root).children[0], 0);
      ASSERT_EQ(Edges(back).size(), edges.size());
      for (const auto& [split, edge] : Edges(back)) ASSERT_EQ(edge.second, edges.at(split).second);
    }
  }
}

// The child of the root that the taxon is below, and how far the taxon is from the root.
std::pair<int, double> SideOf(const Tree& rooted, int taxon) {
  double depth = rooted.ShownLength(taxon);
  for (; rooted.At(taxon).parent != rooted.root; depth += rooted.ShownLength(taxon)) {
    taxon = rooted.At(taxon).parent;
  }
  return {taxon, depth};
}

TEST(WideTree, TheMidpointIsHalfOfTheLongestPathFromBothItsEnds) {
  std::mt19937 generator(6);
  for (int trial = 0; trial < 40; ++trial) {
    const Tree tree = TreeWithSupports(4 + trial % 9, generator);
    const Tree rooted = RootedAtMidpoint(tree);
    double longest = 0;
    std::map<int, double> deepest;
    for (int a = 0; a < tree.taxa; ++a) {
      for (int b = 0; b < a; ++b) longest = std::max(longest, test::PathLength(tree, a, b));
      const auto [side, depth] = SideOf(rooted, a);
      deepest[side] = std::max(deepest[side], depth);
    }
    ASSERT_EQ(deepest.size(), 2u);
    for (const auto& [side, depth] : deepest) EXPECT_NEAR(depth, longest / 2, 1e-12);
  }
}

TEST(WideTree, TheOutgroupIsTheSmallestGroupThatHoldsItsTaxa) {
  std::mt19937 generator(7);
  int exact = 0;
  for (int trial = 0; trial < 200; ++trial) {
    const int n = 4 + trial % 9;
    const Tree tree = TreeWithSupports(n, generator);
    std::set<int> wanted;
    while (static_cast<int>(wanted.size()) < 1 + trial % 3) {
      wanted.insert(static_cast<int>(generator() % static_cast<unsigned>(n)));
    }
    std::size_t smallest = Index(n);
    for (const auto& [split, edge] : Edges(tree)) {
      const auto inside = std::count_if(wanted.begin(), wanted.end(),
                                        [&split = split](int taxon) { return split.count(taxon); });
      if (inside == static_cast<long>(wanted.size())) smallest = std::min(smallest, split.size());
      if (inside == 0) smallest = std::min(smallest, Index(n) - split.size());
    }
    const Outgroup found = FindOutgroup(tree, {wanted.begin(), wanted.end()});
    const Tree rooted = RootedAbove(tree, found.node, 0.5);
    std::set<int> group;
    for (int taxon = 0; taxon < n; ++taxon) {
      if (SideOf(rooted, taxon).first == SideOf(rooted, *wanted.begin()).first) group.insert(taxon);
    }
    EXPECT_TRUE(std::includes(group.begin(), group.end(), wanted.begin(), wanted.end()));
    EXPECT_EQ(group.size(), smallest);
    EXPECT_EQ(found.exact, group == wanted);
    exact += found.exact ? 1 : 0;
  }
  EXPECT_GT(exact, 50);
  EXPECT_LT(exact, 150);
}

TEST(WideTree, ATopologyKeepsTheGroupsAndResolvesPolytomies) {
  std::mt19937 generator(8);
  for (int trial = 0; trial < 100; ++trial) {
    const int n = 4 + trial % 9;
    const Tree tree = TreeWithSupports(n, generator);
    const Tree resolved = MakeTree(TopologyOf(tree), [](int, int) { return 1; });
    EXPECT_EQ(resolved.nodes.size(), Index(2 * n - 2));
    const auto edges = Edges(resolved);
    EXPECT_EQ(edges.size(), Index(2 * n - 3));
    for (const auto& [split, edge] : Edges(tree)) EXPECT_EQ(edges.count(split), 1u);
  }
}

TEST(WideTree, IsLadderised) {
  // (a,(e,(b,f),(c,d))), put together the other way round.
  Tree tree;
  tree.taxa = 6;
  tree.nodes.resize(10);
  tree.root = 9;
  tree.nodes[9].children = {8, 0};
  tree.nodes[8].children = {7, 6, 4};
  tree.nodes[7].children = {3, 2};
  tree.nodes[6].children = {5, 1};
  Ladderise(tree);
  EXPECT_EQ(tree.preorder, (std::vector<int>{9, 0, 8, 4, 6, 1, 5, 7, 2, 3}));
}

TEST(WideNewick, QuotesOnlyWhatAReaderWouldTakeApart) {
  EXPECT_EQ(QuotedForNewick("Homo s.|2_b"), "Homo_s.|2_b");
  for (const std::string label : {"a-b/c+d<f>g*h`i&j%k", "12", "a_b"}) {
    EXPECT_EQ(QuotedForNewick(label), label);
  }
  EXPECT_EQ(QuotedForNewick("it's"), "'it''s'");
  for (const std::string label :
       {"a b(c", "d)", "[e", "f]", "g:h", "i;", "j,k", "{l", "m}", "n=o", "p\\q", "r\"s"}) {
    EXPECT_EQ(QuotedForNewick(label), "'" + label + "'");
    EXPECT_EQ(QuotedForNexus(label), "'" + label + "'");
  }
  EXPECT_EQ(QuotedForNexus("a-b"), "'a-b'");
  EXPECT_EQ(QuotedForNexus("a b_c"), "a_b_c");
}

TEST(WideNewick, CarriesSupportsAndSaysWhatIsRooted) {
  std::mt19937 generator(2);
  Tree view = RandomTree(40, generator);
  view.nodes[view.root == 40 ? 41 : 40].support = 0.125;
  std::vector<std::string> labels(40, "taxon");
  labels[7] = "it's (7)";
  EXPECT_TRUE(Contains(Newick(view, labels), ")12.5:"));
  const std::string two = NexusTrees({view, RootedAtMidpoint(view)}, labels);
  EXPECT_TRUE(Contains(two, "\n    8 'it''s (7)',\n"));
  EXPECT_TRUE(Contains(two, "TREE zorvek_wide_1 = [&U] "));
  EXPECT_TRUE(Contains(two, "TREE zorvek_wide_2 = [&R] "));
}

}  // namespace
}  // namespace zorvek::wide
