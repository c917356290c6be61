// Nearest-neighbour interchanges ranked by their closed-form gain [Desper2002].
#ifndef ZORVEK_TREE_FAST_LOCAL_SEARCH_H
#define ZORVEK_TREE_FAST_LOCAL_SEARCH_H

#include "tree/tree_table.h"

namespace zorvek {

// The decrease of the least-squares length (negative edges included) by the interchange across the
// internal edge (u, v) that turns AB|CD into AC|BD; A and B are the other subtrees at u in the order
// parent, left, right, and C and D those at v.
// Formula: InterchangeGain in subtree_sums.h.
// Requires and cost: as Evaluate.
double Delta(int u, int v, TreeTable tree);

// Applies the interchange of largest gain over all internal edges but the central one, if that gain
// is positive: the child's `left` subtree and the child's sibling trade places. Ties go to the
// lower row, left before right. Returns whether the tree was changed. Only id fields change: the
// lengths are stale until the next Evaluate. Requires and cost: as Evaluate.
bool FastLocalSearch(TreeTable tree);

}  // namespace zorvek

#endif
