// The tree the search starts from.
#ifndef ZORVEK_TREE_STARTING_TREE_H
#define ZORVEK_TREE_STARTING_TREE_H

namespace zorvek {

// Joins the taxa in pairs in id order, and the new nodes again in the order they were made, as in a
// heap: node n+i has the children 2i and 2i+1. Leaves the tree in OPT with its lengths and in T1
// without, and its length in opt_val and t1_val.
// Reads: n, DM1.  Writes: OPT, T1, opt_val, t1_val.  Requires: Init, n >= 4.  Cost: one Evaluate.
void DJT();

}  // namespace zorvek

#endif
