// The slots of a tree table that hold leaves: where the moves that trade leaves find them.
#ifndef ZORVEK_SEARCH_LEAF_SLOTS_H
#define ZORVEK_SEARCH_LEAF_SLOTS_H

#include <vector>

#include "tree/tree_table.h"

namespace zorvek {

// A uniformly random slot among those that hold a leaf: draws a node row, then 0 for its `left` or
// 1 for its `right`, and both again until the slot holds a leaf. Half of all slots do, about.
// Reads: n, r.  Cost: four draws on average.
double& DrawLeafSlot(TreeTable tree);

// All n leaf slots, rows in increasing order, `left` before `right`.
// Reads: n.  Cost: n.
std::vector<double*> LeafSlots(TreeTable tree);

}  // namespace zorvek

#endif
