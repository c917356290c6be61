// The candidate lists: for each taxon the others, by increasing distance.
#ifndef ZORVEK_TREE_CANDIDATE_LISTS_H
#define ZORVEK_TREE_CANDIDATE_LISTS_H

namespace zorvek {

// Orders every row of CL by increasing distance from its taxon. Taxa at equal distance come in the
// order that an exchange sort leaves (for each position p, for each later position q: swap when the
// distance at p is strictly greater), which is not that of a stable sort.
// Reads: n, DM1, CL.  Writes: CL.  Cost: n log n per row, n^1.5 at worst on rows full of ties.
void BuildCL();

}  // namespace zorvek

#endif
