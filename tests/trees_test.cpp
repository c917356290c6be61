// Trees of zorvek-wide: how they hang, their roots, how they are written, and what is read from files.
#include "tests/trees.h"

#include <pthread.h>

#include "tests/files.h"
#include "wide/data/labels.h"
#include "wide/distance/vertex_cover.h"
#include "wide/drawing/svg.h"
#include "wide/formats/tree_file.h"
#include "zorvek/error.h"
#include "zorvek/io.h"
#include "zorvek/support.h"

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

TEST(WideTree, KeepsItsEdgesWhereverItsRootIs) {
  std::mt19937 generator(5);
  for (int trial = 0; trial < 60; ++trial) {
    const Tree tree = Unrooted(TreeWithSupports(4 + trial % 9, generator));
    const auto edges = Edges(tree);
    const int nodes = static_cast<int>(tree.nodes.size());
    const auto resolved = Edges(MakeTree(TopologyOf(tree), [](int, int) { return 1; }));
    EXPECT_EQ(resolved.size(), Index(2 * tree.taxa - 3));
    for (const auto& [split, edge] : edges) EXPECT_EQ(resolved.count(split), 1u);
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

TEST(WideNewick, QuotesOnlyWhatAReaderWouldTakeApart) {
  EXPECT_EQ(QuotedForNewick("Homo s.|2_b"), "Homo_s.|2_b");
  EXPECT_EQ(QuotedForNewick("a-b/c+d<f>g*h`i&j%k_12"), "a-b/c+d<f>g*h`i&j%k_12");
  EXPECT_EQ(QuotedForNewick("it's"), "'it''s'");
  for (const char special : std::string("()[]:;,{}=\\\"")) {
    const std::string label{'a', ' ', special};
    EXPECT_EQ(QuotedForNewick(label), "'" + label + "'");
    EXPECT_EQ(QuotedForNexus(label), "'" + label + "'");
  }
  EXPECT_EQ(QuotedForNexus("a-b"), "'a-b'");
  EXPECT_EQ(QuotedForNexus("a b_c"), "a_b_c");
}

using Labels = std::vector<std::string>;

const Labels kFive = {"A", "b c", "it's", "d", "5"};

std::vector<Tree> Read(const std::string& text, const Labels& labels) {
  TreeReader reader("f", text, labels);
  std::vector<Tree> trees;
  for (Tree tree; reader.Next(tree);) trees.push_back(tree);
  return trees;
}

TEST(WideTreeFile, IsHungUpAtTheFirstTaxonAndLadderised) {
  const Labels labels{"a", "b", "c", "d", "e", "f"};
  EXPECT_EQ(Newick(Read("(((d,c),(f,b),e),a);", labels)[0], labels), "(a,e,(b,f),(c,d));");
}

TEST(WideTreeFile, WhatIsWrittenComesBack) {
  std::mt19937 generator(1);
  for (int trial = 0; trial < 60; ++trial) {
    const int n = 4 + trial % 12;
    Tree tree = test::RandomTree(n, generator);
    Labels labels(Index(n));
    for (int node = 0; node < static_cast<int>(tree.nodes.size()); ++node) {
      tree.nodes[Index(node)].length = tree.ShownLength(node);
      if (node < n) {
        for (int k = 0; k < 12; ++k)
          labels[Index(node)] += "ab 1_'(),:;[]=-{}\"|/."[generator() % 21];
        labels[Index(node)] += std::to_string(node);
      } else if (node != tree.root) {
        tree.nodes[Index(node)].support = static_cast<double>(generator() % 11) / 10;
      }
    }
    tree = Unrooted(test::Contracted(tree, [&](int) { return generator() % 4 == 0; }));
    const Tree rooted = RootedAbove(tree, trial % n, 0.25);
    const std::string nexus = NexusTrees({tree, rooted}, labels);
    EXPECT_TRUE(Contains(nexus, "TREE zorvek_wide_1 = [&U] ("));
    EXPECT_TRUE(Contains(nexus, "TREE zorvek_wide_2 = [&R] ("));
    for (const auto& text : {Newick(tree, labels) + "\n" + Newick(rooted, labels), nexus}) {
      const std::vector<Tree> back = Read(text, labels);
      ASSERT_EQ(back.size(), 2u);
      for (const auto& [split, edge] : Edges(tree)) {
        EXPECT_EQ(Edges(back[0]).at(split), edge) << text;
        EXPECT_NEAR(Edges(back[1]).at(split).first, edge.first, 1e-15);
        EXPECT_EQ(Edges(back[1]).at(split).second, edge.second);
      }
    }
  }
}

TEST(WideTreeFile, ReadsWhatOthersWrite) {
  const std::set<int> split = {3, 4};
  for (const std::string text : {
           "(A:1,(B_C:2,'it''s':3):4,(D:5,5:6)0.87:7);",
           "[&R] ( ( a :1[x[y]z] , ('b c':2,'IT''S':3):4)87:3 ,(d:5\t,\r\n'5':6)87:4 ) ;",
           "((A:1,(((B_C:2,'it''s':3)):4)):0,(D:5,(5:2):4)87:7)99:1;",
           "\xEF\xBB\xBF#NEXUS begin DATA; matrix a 'x;y' [;] c; tree = (A,d,5); end;\nBegin "
           "Trees; translate 5 A; end; begin trees; Title x;\ntranslate 1 A, 2 b_c, 3 'it''s', 4 "
           "D;\nUTREE * 'my tree'=[&U](1:1,(2:2,3:3):4,(4:5,5:6)87:7);END;",
       }) {
    const std::vector<Tree> trees = Read(text, kFive);
    ASSERT_EQ(trees.size(), 1u) << text;
    const auto edges = Edges(trees[0]);
    EXPECT_EQ(edges.size(), 7u) << text;
    EXPECT_EQ(edges.at(split), std::make_pair(7.0, 0.87)) << text;
    EXPECT_EQ(edges.at({1, 2}).first, 4) << text;
    EXPECT_EQ(edges.at({4}), std::make_pair(6.0, Tree::kNoSupport)) << text;
  }
  const std::vector<Tree> star = Read("(A,B_C,'it''s',d,5);(A,(B_C,'it''s')101,d,5);", kFive);
  ASSERT_EQ(star.size(), 2u);
  EXPECT_EQ(star[0].nodes.size(), 6u);
  EXPECT_TRUE(std::isnan(star[0].At(0).length));
  EXPECT_EQ(Edges(star[1]).at({1, 2}).second, Tree::kNoSupport);
  EXPECT_EQ(Edges(Read("(A,B_C,('it''s',d)3,5);", kFive)[0]).at({2, 3}).second, 0.03);
  EXPECT_EQ(Read("((d,c),(b,a)); (a,b,c,d);", {}).size(), 2u);
  EXPECT_EQ(Read("(caf\xE9,b,c,d);", {"caf\xC3\xA9", "b", "c", "d"}).size(), 1u);
  EXPECT_EQ(Read("#NEXUS begin trees; title ''; tree x=(a,b,c,d);", {}).size(), 1u);
}

TEST(WideTreeFile, SaysWhereAndWhatIsWrong) {
  const std::vector<std::pair<std::string, std::string>> faults = {
      {"((A,B_C),\r\n ('it''s',d),5", "f:2:15: no , or ) after"},
      {"(A,B_C,'it''s',d,5)", "f:1:20: no ; at"},
      {"(A,,B_C);", "f:1:4: no label"},
      {"(A,B C,d,5,'it''s');", "f:1:6: no , or ) after"},
      {"(A:x,B_C);", "f:1:4: \"x\" where the length"},
      {"(A:1e999,B_C);", "f:1:4: \"1e999\""},
      {"(A,'b c,d);", "f:1:4: a quote without its end"},
      {"(A[,B", "f:1:3: a comment without its end"},
      {"(A,a,d,5);", "f:1:4: taxon a twice"},
      {"(A,b_c,x,y,5);",
       "f:1:1: tree 1 has other taxa; not in it: it's, d; only in it: x, y; give"},
      {"(A,(b_c,('it''s',d)),5));", "f:1:24: no ; at"},
      {"\n\n>A\nACGT", "f:3:1: no tree begins here"},
      {"#NEXUS begin trees; tree x (A,b);", "f:1:28: no = after the name"},
      {"#NEXUS begin trees; translate 1;", "f:1:31: a TRANSLATE entry"},
      {"#NEXUS begin trees; tree x", "f:1:27: no = after"},
      {"#NEXUS begin notes; text ''", "f:1:28: the file ends within a command"},
  };
  for (const auto& [text, told] : faults) {
    const std::string fault = test::FaultOf([&text = text] { Read(text, kFive); });
    EXPECT_EQ(fault.substr(0, told.size()), told) << text;
  }
  EXPECT_THROW(Read("(a,b,c);", {}), Error);
  EXPECT_THROW(Read("(a,b,c,d);(a,b,c,d,e);", {}), Error);
}

// Trees as deep as they have taxa, on a small stack: nothing may recurse along them.
constexpr int kTaxa = 20000;
constexpr std::size_t kStack = 256 * 1024;

// (t0:1,(t1:1,... or, with a step of 7, taxa in another order.
std::string Caterpillar(int step) {
  std::string text, end;
  for (int k = 0; k + 1 < kTaxa; ++k) {
    text += "(t" + std::to_string(k * step % kTaxa) + ":1,";
    if (k > 0) end += "):1";
  }
  return text + "t" + std::to_string((kTaxa - 1) * step % kTaxa) + ":1" + end + ");";
}

void* ReadWriteSupportAndDraw(void*) {
  const std::string text = Caterpillar(1) + Caterpillar(7);
  TreeReader reader("f", text, {});
  std::vector<Tree> trees(2);
  EXPECT_TRUE(reader.Next(trees[0]) && reader.Next(trees[1]));
  EXPECT_EQ(MakeTree(TopologyOf(trees[0]), [](int, int) { return 1; }).nodes.size(),
            trees[0].nodes.size());
  for (const auto measure : {SupportMeasure::kFrequency, SupportMeasure::kTransfer}) {
    SetSupports(trees, measure, trees[0]);
  }
  EXPECT_EQ(MajorityConsensus({trees[0], trees[0], trees[1]}).nodes.size(), trees[0].nodes.size());
  const Tree rooted = RootedAtMidpoint(trees[0]);
  std::string written = Newick(rooted, reader.Labels());
  TreeReader again("f", written, reader.Labels());
  EXPECT_TRUE(again.Next(trees[1]));
  EXPECT_EQ(Newick(trees[1], reader.Labels()), Newick(trees[0], reader.Labels()));
  for (const Layout layout : {Layout::kPhylogram, Layout::kUnrooted}) {
    EXPECT_GT(DrawSvg(trees[0], reader.Labels(), {layout, ""}).size(), Index(kTaxa));
  }
  std::vector<std::pair<int, int>> chain;  // of pairs without a distance
  for (int k = 1; k < 4000; ++k) chain.emplace_back(k - 1, k);
  EXPECT_EQ(FindVertexCover(4000, chain).vertices.size(), 2000u);
  return nullptr;
}

TEST(Depth, CaterpillarsNeedNoStack) {
  pthread_attr_t small;
  pthread_attr_init(&small);
  ASSERT_EQ(pthread_attr_setstacksize(&small, kStack), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &small, ReadWriteSupportAndDraw, nullptr), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&small);
}

}  // namespace
}  // namespace zorvek::wide
