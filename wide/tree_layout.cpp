#include "wide/tree_layout.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace zorvek::wide {

namespace {

constexpr double kTurn = 2 * 3.14159265358979323846;
constexpr int kPasses = 5;  // over all nodes, for equal daylight

std::size_t Index(int node) { return static_cast<std::size_t>(node); }

std::vector<int> TaxaBelow(const TreeView& tree) {
  std::vector<int> below(tree.nodes.size());
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    if (tree.IsTaxon(*node)) below[Index(*node)] = 1;
    for (const int child : tree.At(*node).children) below[Index(*node)] += below[Index(child)];
  }
  return below;
}

std::vector<Point> EqualAngle(const TreeView& tree) {
  const std::vector<int> below = TaxaBelow(tree);
  std::vector<double> wedge(tree.nodes.size());  // where that of each node begins
  std::vector<Point> places(tree.nodes.size());
  for (const int node : tree.preorder) {
    double begin = wedge[Index(node)];
    for (const int child : tree.At(node).children) {
      const double width = kTurn * below[Index(child)] / tree.taxa;
      const double angle = begin + width / 2;
      const double length = tree.At(child).length;
      const Point from = places[Index(node)];
      places[Index(child)] = {from.x + length * std::cos(angle), from.y + length * std::sin(angle)};
      wedge[Index(child)] = begin;
      begin += width;
    }
  }
  return places;
}

}  // namespace

std::vector<Point> UnrootedLayout(const TreeView& tree) { return EqualAngle(tree); }

std::vector<Point> PhylogramLayout(const TreeView& tree) {
  std::vector<Point> places(tree.nodes.size());
  double row = 0;
  for (const int node : tree.preorder) {
    if (tree.IsTaxon(node)) places[Index(node)].y = row++;
    for (const int child : tree.At(node).children) {
      places[Index(child)].x = places[Index(node)].x + tree.At(child).length;
    }
  }
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    const std::vector<int>& children = tree.At(*node).children;
    if (children.empty()) continue;
    places[Index(*node)].y =
        (places[Index(children.front())].y + places[Index(children.back())].y) / 2;
  }
  return places;
}

}  // namespace zorvek::wide
