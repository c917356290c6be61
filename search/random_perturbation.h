// The restart move: one random nearest-neighbour interchange.
#ifndef ZORVEK_SEARCH_RANDOM_PERTURBATION_H
#define ZORVEK_SEARCH_RANDOM_PERTURBATION_H

#include "tree/tree_table.h"

namespace zorvek {

// Interchanges across a uniformly drawn internal edge that does not touch the central pair: the
// lower node's left child and its sibling trade places. Without such an edge nothing is drawn and
// the tree stays. Lengths are stale afterwards. Returns 1 in every case.
// Reads: n.  Writes: r's state.  Requires: a well-formed table.  Cost: n.
int RandomPerturbation(TreeTable tree);

}  // namespace zorvek

#endif
