// An unrooted binary tree as zorvek-wide hands it around: rooted on one internal edge, like the
// tree table of the run, but in whole numbers and with any pair of internal nodes at that edge.
#ifndef ZORVEK_WIDE_TREE_H
#define ZORVEK_WIDE_TREE_H

#include <array>
#include <vector>

namespace zorvek::wide {

struct Tree {
  int taxa = 0;

  // Row k holds the children of node taxa+k; leaves are the ids 0..taxa-1. The last of the taxa-1
  // rows is the root (id 2 taxa - 2), no node of the unrooted tree: its children 2 taxa - 4 and 2
  // taxa - 3 are the ends of one internal edge.
  std::vector<std::array<int, 2>> children;

  // Least-squares length of the edge above each node 0..2 taxa - 3, negative ones as they are. The
  // edge between the root's children stands at both of them.
  std::vector<double> length;

  double positive = 0;  // sum of the positive lengths, each edge once: the objective
  double raw = 0;       // sum of all lengths
};

}  // namespace zorvek::wide

#endif
