// Local search by exchanging two leaves.
#ifndef ZORVEK_SEARCH_TWO_OPT_H
#define ZORVEK_SEARCH_TWO_OPT_H

#include "tree/tree_table.h"

namespace zorvek {

// Draws a leaf and exchanges it with each of its `horizon` nearest taxa, nearest first, until the
// tree is strictly shorter than `bound`: that exchange stays, every other is undone. Returns the
// length of the tree with the exchange that stayed, else `bound`; then the lengths in the table are
// those of the last trial. `horizon` is held within 0..n-1.
// Reads: n, CL, DM1, horizon, r.  Requires: n >= 4; CL sorted, unless `horizon` is 0.
// Cost: at most `horizon` Evaluates.
double TWOoptLocalSearch(TreeTable tree, double bound);

}  // namespace zorvek

#endif
