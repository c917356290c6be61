// Local search by rearranging three leaves.
#ifndef ZORVEK_SEARCH_THREE_OPT_H
#define ZORVEK_SEARCH_THREE_OPT_H

#include "tree/tree_table.h"

namespace zorvek {

// Draws two leaves, takes every other leaf in the order of the rows as the third, and tries the
// five other ways to place the three in their slots, until the tree is strictly shorter than
// `bound`: that placement stays, every other is undone. Returns the length of the tree with the
// placement that stayed, else `bound`; then the lengths in the table are those of the last trial.
// Reads: n, DM1, r.  Requires: n >= 4.  Cost: at most 5 (n-2) Evaluates.
double THREEoptLocalSearch(TreeTable tree, double bound);

}  // namespace zorvek

#endif
