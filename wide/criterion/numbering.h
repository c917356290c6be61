// The nodes of a tree in an order in which subtrees stand together.
//
// The walk sets out from taxon 0, goes into the larger of two subtrees first, and gives a node its row
// when it comes back from it; so the rows of a subtree end at its own one and begin at `first` of it.
// Five taxa:
//
//   0         2            row    0  1  2  3  4  5  6  7
//    \       /             node   0  2  3  7  4  6  1  5
//     5--6--7              first  0  1  2  1  4  1  6  1
//    /   |   \                                                    .
//   1    4    3            The children of row u are u - 1, the smaller, and first[u - 1] - 1.
#ifndef ZORVEK_WIDE_CRITERION_NUMBERING_H
#define ZORVEK_WIDE_CRITERION_NUMBERING_H

#include <vector>

#include "wide/data/topology.h"

namespace zorvek::wide {

struct Numbering {
  std::vector<int> row;          // by node
  std::vector<int> node, first;  // by row
};

// Cost: n.
Numbering NumberNodes(const Topology& topology);

}  // namespace zorvek::wide

#endif
