// The parts of zorvek-wide around its search, against slow definitions on random trees and graphs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/data.h"
#include "tests/files.h"
#include "wide/identical.h"
#include "wide/labels.h"
#include "wide/newick.h"
#include "wide/search.h"
#include "wide/support.h"
#include "wide/tree_layout.h"
#include "wide/tree_view.h"
#include "wide/vertex_cover.h"

namespace zorvek::wide {
namespace {

constexpr double kTurn = 2 * 3.14159265358979323846;

DistanceMatrix RandomMatrix(int n, std::mt19937& generator) {
  return test::Matrix(n, test::RandomDistances(static_cast<std::uint32_t>(generator())));
}

Tree RandomTree(int n, std::mt19937& generator) {
  return NeighbourJoining(n, RandomMatrix(n, generator).Rows());
}

std::vector<std::string> Numbered(int n) {
  std::vector<std::string> labels;
  for (int i = 0; i < n; ++i) labels.push_back("t" + std::to_string(i));
  return labels;
}

// The side of a split without taxon 0.
std::set<int> WithoutFirst(const std::set<int>& side, int n) {
  if (side.count(0) == 0) return side;
  std::set<int> others;
  for (int taxon = 0; taxon < n; ++taxon) {
    if (side.count(taxon) == 0) others.insert(taxon);
  }
  return others;
}

// The taxa on the far side of each inner edge, from taxon 0; nothing for the other nodes.
std::vector<std::set<int>> Splits(const TreeView& view) {
  std::vector<std::set<int>> below(view.nodes.size());
  for (auto node = view.preorder.rbegin(); node != view.preorder.rend(); ++node) {
    std::set<int>& taxa = below[static_cast<std::size_t>(*node)];
    if (view.IsTaxon(*node)) taxa.insert(*node);
    for (const int child : view.At(*node).children) {
      const std::set<int>& more = below[static_cast<std::size_t>(child)];
      taxa.insert(more.begin(), more.end());
    }
  }
  for (int node = 0; node < static_cast<int>(below.size()); ++node) {
    std::set<int>& taxa = below[static_cast<std::size_t>(node)];
    taxa = view.IsTaxon(node) || node == view.top ? std::set<int>() : WithoutFirst(taxa, view.taxa);
  }
  return below;
}

TEST(WideTreeView, HangsTheSameTreeAtTheFirstTaxon) {
  std::mt19937 generator(1);
  for (const int n : {4, 5, 23}) {
    const Tree tree = RandomTree(n, generator);
    const TreeView view = View(tree);
    ASSERT_EQ(view.preorder.size(), static_cast<std::size_t>(2 * n - 2));
    EXPECT_EQ(view.At(view.top).children.size(), 3u);
    EXPECT_EQ(view.At(view.top).children[0], 0);
    double sum = 0;
    for (const TreeView::Node& node : view.nodes) sum += node.length;
    EXPECT_NEAR(sum, tree.positive, 1e-12 * n);
    // The tree as it is held, whose nodes come after their children.
    TreeView held{n, 2 * n - 2, std::vector<TreeView::Node>(view.nodes.size()), {}};
    for (int node = 2 * n - 3; node >= 0; --node) {
      held.preorder.push_back(node);
      if (node < n) continue;
      const auto& children = tree.children[static_cast<std::size_t>(node - n)];
      held.nodes[static_cast<std::size_t>(node)].children.assign(children.begin(), children.end());
    }
    const std::vector<std::set<int>> splits = Splits(view);
    const std::vector<std::set<int>> expected = Splits(held);
    EXPECT_EQ(std::set(splits.begin(), splits.end()), std::set(expected.begin(), expected.end()));
  }
}

TEST(WideNewick, QuotesLabelsAndReadsBackTheSameLengths) {
  EXPECT_EQ(Quoted("Homo sapiens"), "Homo_sapiens");
  EXPECT_EQ(Quoted("a.b_2|x"), "a.b_2|x");
  EXPECT_EQ(Quoted("it's"), "'it''s'");
  for (const std::string label : {"a b-c", "a:b", "(a", "a,b", "a[1]", "a;", "a=b", "a_b/c"}) {
    EXPECT_EQ(Quoted(label), "'" + label + "'");
  }
  std::mt19937 generator(2);
  const Tree tree = RandomTree(40, generator);
  TreeView view = View(tree);
  view.nodes[view.top == 40 ? 41 : 40].support = 0.125;
  std::vector<std::string> labels = Numbered(40);
  labels[7] = "it's (7)";
  const std::string text = Newick(view, labels);
  std::multiset<double> lengths;
  for (const std::string& length : test::FindAll(text, ":([-+.e0-9]+)")) {
    lengths.insert(std::stod(length));
  }
  std::multiset<double> expected;
  for (const int node : view.preorder) {
    if (node != view.top) expected.insert(view.At(node).length);
  }
  EXPECT_EQ(lengths, expected);
  EXPECT_TRUE(test::Contains(text, "'it''s (7)':"));
  EXPECT_TRUE(test::Contains(text, ")12.5:"));
  EXPECT_TRUE(test::Contains(NexusTrees(view, labels), "\n    8 'it''s (7)',\n"));
}

TEST(WideSupport, FindsTheSplitsThatTwoTreesShare) {
  std::mt19937 generator(3);
  long found = 0;
  for (int trial = 0; trial < 200; ++trial) {
    const int n = 4 + trial % 12;
    const TreeView one = View(RandomTree(n, generator));
    const TreeView two = View(RandomTree(n, generator));
    const std::vector<std::set<int>> splits = Splits(one);
    const std::vector<std::set<int>> others = Splits(two);
    std::set<int> expected;
    for (int node = n; node < 2 * n - 2; ++node) {
      const std::set<int>& split = splits[static_cast<std::size_t>(node)];
      const bool both = std::count(others.begin(), others.end(), split) > 0;
      if (both && !split.empty()) expected.insert(node);
    }
    const std::vector<int> shared = SplitCounter(one).Shared(two);
    EXPECT_EQ(std::set<int>(shared.begin(), shared.end()), expected);
    EXPECT_EQ(SplitCounter(one).Shared(one).size(), static_cast<std::size_t>(n - 3));
    found += static_cast<long>(expected.size());
  }
  EXPECT_GT(found, 50);
}

// Distances far from a tree's, on which the search itself sets equal taxa apart now and then.
TEST(WideIdentical, TaxaThatAreTheSameStayTogether) {
  std::mt19937 generator(7);
  int apart = 0;
  for (int trial = 0; trial < 400; ++trial) {
    const int distinct = 2 + trial % 7;
    std::vector<int> kind;
    for (int i = 0; i < distinct; ++i) kind.insert(kind.end(), 1 + generator() % 3, i);
    while (kind.size() < 4) kind.push_back(0);
    std::shuffle(kind.begin(), kind.end(), generator);
    const int n = static_cast<int>(kind.size());
    const DistanceMatrix between = RandomMatrix(distinct, generator);
    const DistanceMatrix distances = test::Matrix(n, [&](int i, int j) {
      return between(kind[static_cast<std::size_t>(i)], kind[static_cast<std::size_t>(j)]);
    });
    SearchSettings settings;
    settings.rounds = 50;
    Tree tree = FindShortestTree(n, distances.Rows(), settings);
    const double before = tree.positive;
    const Groups groups = IdenticalTaxa(distances);
    KeepTogether(groups, distances, tree);
    apart += tree.positive != before;
    EXPECT_GE(tree.positive, before);
    TreeView view = View(tree);
    ASSERT_EQ(view.preorder.size(), static_cast<std::size_t>(2 * n - 2));
    ClearWithin(groups, view);
    const std::vector<std::set<int>> splits = Splits(view);
    for (const std::vector<int>& group : groups) {
      const std::set<int> members = WithoutFirst({group.begin(), group.end()}, n);
      const bool trivial = members.size() < 2 || members.size() + 1 >= kind.size();
      EXPECT_TRUE(trivial || std::count(splits.begin(), splits.end(), members) == 1);
      for (const int taxon : group) EXPECT_EQ(view.At(taxon).length, 0);
    }
  }
  EXPECT_GT(apart, 0);
}

int SmallestCover(int n, const std::vector<std::pair<int, int>>& edges) {
  int best = n;
  for (unsigned chosen = 0; chosen < 1u << n; ++chosen) {
    const bool covers = std::all_of(edges.begin(), edges.end(), [&](const auto& edge) {
      return ((chosen >> edge.first | chosen >> edge.second) & 1u) != 0;
    });
    if (covers) best = std::min(best, __builtin_popcount(chosen));
  }
  return best;
}

TEST(WideVertexCover, IsSmallestOnSmallGraphsAndCoversLargeOnes) {
  std::mt19937 generator(4);
  for (int trial = 0; trial < 300; ++trial) {
    const int n = 2 + trial % 10;
    std::vector<std::pair<int, int>> edges;
    for (int i = 0; i < n; ++i) {
      for (int j = i + 1; j < n; ++j) {
        if (generator() % 10 < 1 + static_cast<unsigned>(trial) % 9) edges.emplace_back(i, j);
      }
    }
    const VertexCover cover = FindVertexCover(n, edges);
    EXPECT_TRUE(cover.smallest);
    EXPECT_EQ(static_cast<int>(cover.vertices.size()), SmallestCover(n, edges));
    for (const auto& [a, b] : edges) {
      EXPECT_TRUE(std::count(cover.vertices.begin(), cover.vertices.end(), a) > 0 ||
                  std::count(cover.vertices.begin(), cover.vertices.end(), b) > 0);
    }
  }
  // Three taxa without data among 400.
  std::vector<std::pair<int, int>> stars;
  for (int centre : {5, 70, 300}) {
    for (int other = 0; other < 400; ++other) {
      if (other != centre) stars.push_back(std::minmax({centre, other}));
    }
  }
  EXPECT_EQ(FindVertexCover(400, stars).vertices, (std::vector<int>{5, 70, 300}));
}

TEST(WideLayout, KeepsEdgeLengthsAndLabelsApart) {
  std::mt19937 generator(6);
  for (int trial = 0; trial < 60; ++trial) {
    const int n = 4 + trial * trial / 20;
    TreeView view = View(RandomTree(n, generator));
    if (trial % 3 == 0) {  // some of no length, which have no direction
      for (std::size_t node = 0; node < view.nodes.size(); node += 2) view.nodes[node].length = 0;
    }
    const std::vector<Point> places = UnrootedLayout(view);
    for (const int node : view.preorder) {
      for (const int child : view.At(node).children) {
        const Point a = places[static_cast<std::size_t>(node)];
        const Point b = places[static_cast<std::size_t>(child)];
        EXPECT_NEAR(std::hypot(a.x - b.x, a.y - b.y), view.At(child).length, 1e-9);
      }
    }
    const double apart = kTurn / n / (trial % 2 == 0 ? 1.4 : 1.001);
    std::vector<double> angles = LabelAngles(view, places, apart);
    for (double& angle : angles) angle = std::fmod(std::fmod(angle, kTurn) + kTurn, kTurn);
    std::sort(angles.begin(), angles.end());
    angles.push_back(angles[0] + kTurn);
    for (std::size_t k = 1; k < angles.size(); ++k) {
      EXPECT_GE(angles[k] - angles[k - 1], apart - 1e-9) << n;
    }
  }
}

}  // namespace
}  // namespace zorvek::wide
