// The tree as it is written and drawn: hung up at the neighbour of the first taxon, which makes the
// top a node of three branches and the order of everything independent of how the search held it.
//
//   search: rooted on an internal edge        view: rooted beside taxon 0
//            r                                         t
//          |   |                                     | | |
//          a   b                                     0 1 b
//         | | | |                                       | |
//         0 1 2 3                                       2 3
#ifndef ZORVEK_WIDE_TREE_VIEW_H
#define ZORVEK_WIDE_TREE_VIEW_H

#include <vector>

#include "wide/tree.h"

namespace zorvek::wide {

struct TreeView {
  static constexpr double kNoSupport = -1;

  struct Node {
    std::vector<int> children;    // by their smallest taxon; none for a taxon, three for the top
    double length = 0;            // of the edge above, a negative one as 0
    double support = kNoSupport;  // of that edge, 0..1
  };

  int taxa = 0;
  int top = 0;
  std::vector<Node> nodes;    // 2 taxa - 2; a taxon's node has its number
  std::vector<int> preorder;  // every node before its children, which come in order

  const Node& At(int node) const { return nodes[static_cast<std::size_t>(node)]; }
  bool IsTaxon(int node) const { return node < taxa; }
};

// Cost: n log n.
TreeView View(const Tree& tree);

}  // namespace zorvek::wide

#endif
