// Re-dealing of all leaves over the slots of the tree.
#ifndef ZORVEK_SEARCH_PERMUTE_H
#define ZORVEK_SEARCH_PERMUTE_H

#include "tree/tree_table.h"

namespace zorvek {

// Gives the leaf slots, taken in the order of the rows, the taxa in the order in which a
// depth-first walk from the central edge meets them. If the tree is then not strictly shorter than
// `bound`, repairs it by one FastLocalSearch, and by more while they change the tree and the inner
// limit allows. Returns the new length when it is below `bound`, else `bound`: the re-dealt and
// repaired tree stays in either case.
// Reads: n, DM1, MAX_TIME, t.  Writes: temp1, left empty.  Requires: n >= 4.
// Cost: an Evaluate from scratch, then n per repair.
double Permute(TreeTable tree, double bound);

}  // namespace zorvek

#endif
