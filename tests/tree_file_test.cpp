// Trees read from files: what is written comes back, and what others write is understood or refused.
#include "wide/formats/tree_file.h"

#include <gtest/gtest.h>

#include "tests/trees.h"
#include "zorvek/error.h"
#include "zorvek/io.h"

namespace zorvek::wide {
namespace {

using test::Edges;
using Labels = std::vector<std::string>;

const Labels kFive = {"A", "b c", "it's", "d", "5"};

std::vector<Tree> Read(const std::string& text, const Labels& labels) {
  TreeReader reader("f", text, labels);
  std::vector<Tree> trees;
  for (Tree tree; reader.Next(tree);) trees.push_back(tree);
  return trees;
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
    for (const std::string& text : {Newick(tree, labels) + "\n" + Newick(rooted, labels),
                                    NexusTrees({tree, rooted}, labels)}) {
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
           "((A:1,((B_C:2,'it''s':3):4)):0,(D:5,(5:2):4)87:7)99:1;",
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
  };
  for (const auto& [text, told] : faults) {
    try {
      Read(text, kFive);
      ADD_FAILURE() << text;
    } catch (const Error& fault) {
      EXPECT_EQ(std::string(fault.what()).substr(0, told.size()), told) << text;
    }
  }
  EXPECT_THROW(Read("(a,b,c);", {}), Error);
  EXPECT_THROW(Read("(a,b,c,d);(a,b,c,e);", {}), Error);
}

}  // namespace
}  // namespace zorvek::wide
