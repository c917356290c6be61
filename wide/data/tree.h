// A tree with edge lengths and supports, as it is written, drawn and compared: hung up at a root, every
// node's children in a fixed order, so that nothing depends on how a search held it.
//
//   topology               tree, at the neighbour of taxon 0
//   0         2                      5
//    \       /                     / | \          An unrooted tree has a root of three children, a
//     5--6--7                     0  1  6         rooted one of two. Children stand by their smallest
//    /   |   \                         / \        taxon.
//   1    4    3                       7   4
//                                    / \          Five taxa have 8 nodes, of which 0..4 are taxa.
//                                   2   3
#ifndef ZORVEK_WIDE_DATA_TREE_H
#define ZORVEK_WIDE_DATA_TREE_H

#include <algorithm>
#include <functional>
#include <vector>

#include "core/index.h"
#include "wide/data/topology.h"

namespace zorvek::wide {

struct Tree {
  static constexpr double kNoSupport = -1;

  struct Node {
    int parent = -1;
    std::vector<int> children;    // none for a taxon
    double length = 0;            // of the edge above, as estimated: it may be negative
    double support = kNoSupport;  // of that edge, 0..1
  };

  int taxa = 0;
  int root = 0;
  std::vector<Node> nodes;    // a taxon's node has its number
  std::vector<int> preorder;  // every node before its children, which come in order

  const Node& At(int node) const { return nodes[Index(node)]; }
  bool IsTaxon(int node) const { return node < taxa; }

  // As it is written and drawn: other programs stop at a minus sign.
  double ShownLength(int node) const { return std::max(At(node).length, 0.0); }
};

// The unrooted tree of a topology, length(u, v) being that of the edge between two of its nodes.
// Cost: n log n.
Tree MakeTree(const Topology& topology, const std::function<double(int, int)>& length);

// Fills in the parents and the order of children and nodes, from `taxa`, `root` and the children, in
// any order.  Cost: n log n.
void PutInOrder(Tree& tree);

// Sums of the edge lengths: of all of them, and of the positive ones.
double TotalLength(const Tree& tree);
double PositiveLength(const Tree& tree);

// Edges whose length is negative.
int NegativeEdges(const Tree& tree);

}  // namespace zorvek::wide

#endif
