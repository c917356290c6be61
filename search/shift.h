// The shift move: re-deals the leaves of a subtree at the central edge and repairs the tree.
#ifndef ZORVEK_SEARCH_SHIFT_H
#define ZORVEK_SEARCH_SHIFT_H

#include "tree/tree_table.h"

namespace zorvek {

// Picks one of the four subtrees at the central edge (two fair bits: left or right child, then node
// 2n-4 or 2n-3) and gives each of its leaf slots, in row order, the leaf that follows in the
// depth-first order of the subtree's leaves, rotated by one. Then, for as many passes as the subtree has
// leaves: evaluates the tree and returns its length if that is strictly below `bound`; otherwise
// repairs the tree with the fast local search. Returns `bound` when no pass went below it; the tree
// is not restored.
// Reads: n, DM1, MAX_TIME, t.  Writes: temp1 (left empty), r's state.
// Requires: a well-formed table; temp1 empty.
// Cost: n for each node of the subtree, then n a pass; passes after a repair that changed nothing
// are not computed, because they cannot change anything either.
double Shift(TreeTable tree, double bound);

}  // namespace zorvek

#endif
