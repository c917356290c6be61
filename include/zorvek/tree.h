// A tree with edge lengths and supports, as it is written, drawn and compared: hung up at a root, every
// node's children in a fixed order, so that nothing depends on how a search held it.
//
//   topology               tree, at the neighbour of taxon 0      the same, rooted above node 7
//    0         2                      5                                   8
//     \       /                     / | \                               /   \           .
//      5--6--7                     0  1  6                             6     7
//     /   |   \                         / \                          / |    / \         .
//    1    4    3                       4   7                        4  5   2   3
//                                         / \                         / \               .
//                                        2   3                       0   1
//
// Ladderised: of a node's children the one with the fewest taxa comes first, of equal ones that with
// the smallest taxon. An unrooted tree has a root of three children or more, the first of which is
// taxon 0; a rooted tree has a root of two. The edge of an unrooted tree on which a root stands is
// written as two, which share its length and both have its support.
#ifndef ZORVEK_TREE_H
#define ZORVEK_TREE_H

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace zorvek::wide {

struct Tree {
  static constexpr double kNoSupport = -1;
  static constexpr double kNoLength = std::numeric_limits<double>::quiet_NaN();

  struct Node {
    int parent = -1;
    std::vector<int> children;  // none for a taxon
    double length = 0;          // of the edge above, as estimated: negative, or kNoLength, at times
    double support = kNoSupport;  // of that edge, 0..1
  };

  int taxa = 0;
  int root = 0;
  std::vector<Node> nodes;    // a taxon's node has its number
  std::vector<int> preorder;  // every node before its children, which come in order

  const Node& At(int node) const { return nodes[static_cast<std::size_t>(node)]; }
  bool IsTaxon(int node) const { return node < taxa; }
  bool IsRooted() const { return At(root).children.size() == 2; }

  // As it is written and drawn: other programs stop at a minus sign.
  double ShownLength(int node) const { return std::max(At(node).length, 0.0); }

  // Whether the edge above the node of an unrooted tree tells a group from the other taxa: an inner
  // edge does, unless it is written as 0, for then nothing says that the group is there.
  bool IsGroup(int node) const { return !IsTaxon(node) && node != root && !(At(node).length <= 0); }
};

// Fills in the parents, the order of children and the order of nodes, from `taxa`, `root` and the
// children in any order.  Cost: n log n.
void Ladderise(Tree& tree);

// The tree without a root, hung up at the neighbour of taxon 0. Nodes keep their numbers, but the last
// takes that of a root that goes.  Requires: at least 3 taxa.  Cost: n log n, as of those below.
Tree Unrooted(const Tree& tree);

// The unrooted tree with taxon number[k] in the place of taxon k, hung up anew.
Tree Renumbered(const Tree& tree, const std::vector<int>& number);

// The unrooted tree rooted on the edge above `node`, of whose length the node's side gets `share`
// (0..1). The root is the last node; the others keep their numbers. Supports stay with their edges.
Tree RootedAbove(const Tree& tree, int node, double share);

// The unrooted tree rooted midway between the two taxa that are farthest apart, the edges taken as
// they are written, one without a length as 0 [Farris1972].
Tree RootedAtMidpoint(const Tree& tree);

// The node above which a root parts the smallest group with all the given taxa from the rest, and
// whether that group has no other taxon.  Requires: an unrooted tree, one taxon or more, not all.
struct Outgroup {
  int node;
  bool exact;
};
Outgroup FindOutgroup(const Tree& tree, const std::vector<int>& taxa);

// Makes lengths 0 that are no farther from it than `threshold`: what rounding left of 0.
void ClearRounding(double threshold, Tree& tree);

// Sums of the edge lengths: of all of them, and of the positive ones.
double TotalLength(const Tree& tree);
double PositiveLength(const Tree& tree);

// Edges whose length is negative.
int NegativeEdges(const Tree& tree);

}  // namespace zorvek::wide

#endif
