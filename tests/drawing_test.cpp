// Pictures of trees: what stands where, told by value.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "core/index.h"
#include "tests/data.h"
#include "tests/files.h"
#include "wide/drawing/layout.h"

namespace zorvek::wide {
namespace {

// Grown by taxa put into random edges, or always into the newest; every fifth edge has length 0.
Tree GrownTree(int taxa, bool comb, unsigned seed) {
  std::mt19937 generator(seed);
  Tree tree;
  tree.taxa = taxa;
  tree.root = taxa;
  tree.nodes.resize(Index(2 * taxa - 2));
  tree.nodes[Index(taxa)].children = {0, 1, 2};
  for (int node = 0; node < 3; ++node) tree.nodes[Index(node)].parent = taxa;
  for (int taxon = 3; taxon < taxa; ++taxon) {
    int below = comb ? taxon - 1 : static_cast<int>(generator() % (2 * Index(taxon) - 3));
    if (below >= taxon) below += taxa - taxon + 1;
    const int above = tree.At(below).parent;
    const int node = taxa + taxon - 2;
    for (int& child : tree.nodes[Index(above)].children) child = child == below ? node : child;
    tree.nodes[Index(node)].parent = above;
    tree.nodes[Index(node)].children = {below, taxon};
    tree.nodes[Index(below)].parent = tree.nodes[Index(taxon)].parent = node;
  }
  for (Tree::Node& node : tree.nodes) {
    const double length = std::ldexp(static_cast<double>(generator()), -32);
    node.length = generator() % 5 == 0 ? 0 : length * length;
  }
  tree.nodes[Index(tree.root)].length = 0;
  Ladderise(tree);
  return tree;
}

double Distance(Point a, Point b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

// Positive where a, b, c turn to the left.
double Side(Point a, Point b, Point c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Pairs of edges that cross or touch, other than at a node that both have.
int Crossings(const Tree& tree, const std::vector<Point>& places) {
  std::vector<std::pair<Point, Point>> edges;
  for (const int node : tree.preorder) {
    if (node == tree.root) continue;
    const std::pair<Point, Point> edge{places[Index(tree.At(node).parent)], places[Index(node)]};
    if (Distance(edge.first, edge.second) > 0) edges.push_back(edge);
  }
  int crossings = 0;
  for (std::size_t i = 0; i < edges.size(); ++i) {
    const auto& [a, b] = edges[i];
    for (std::size_t k = 0; k < i; ++k) {
      const auto& [c, d] = edges[k];
      const double ends =
          std::min({Distance(a, c), Distance(a, d), Distance(b, c), Distance(b, d)});
      if (ends < 1e-12) continue;
      crossings += Side(a, b, c) * Side(a, b, d) <= 0 && Side(c, d, a) * Side(c, d, b) <= 0;
    }
  }
  return crossings;
}

TEST(UnrootedLayout, KeepsLengthsAndLetsNoEdgesCross) {
  for (const auto& [taxa, comb] : {std::pair{4, false},
                                   {12, false},
                                   {60, false},
                                   {60, true},
                                   {289, false},
                                   {700, false},
                                   {300, true}}) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
      const Tree tree = GrownTree(taxa, comb, seed);
      const std::vector<Point> places = UnrootedLayout(tree);
      for (const int node : tree.preorder) {
        if (node == tree.root) continue;
        const Point above = places[Index(tree.At(node).parent)];
        ASSERT_NEAR(Distance(above, places[Index(node)]), tree.At(node).length, 1e-9);
      }
      EXPECT_EQ(Crossings(tree, places), 0) << taxa << " taxa, seed " << seed;
    }
  }
}

}  // namespace
}  // namespace zorvek::wide
