// Distances of aligned sequences: those of the run, and 0 for identical sequences.
#ifndef ZORVEK_WIDE_DISTANCE_PAIR_DISTANCES_H
#define ZORVEK_WIDE_DISTANCE_PAIR_DISTANCES_H

#include <vector>

#include "wide/data/distance_matrix.h"
#include "zorvek/alignment.h"

namespace zorvek::wide {

// The distances over the sites numbered in `sites`, which may repeat. 0 for a pair that shares at
// least one site and has the same nucleotide at all it shares; NaN for a pair that shares none, or
// whose spectrum is unstable. Identical sequences have the same distances to all others, those of
// the first of them. (The estimate depends a little on which taxon of a pair comes first.)
// Cost: n x sites + n^2 x (sites / 64 + one eigensystem of order 4), shared by the threads.
DistanceMatrix PairDistances(const Alignment& alignment, const std::vector<std::size_t>& sites,
                             int threads);

}  // namespace zorvek::wide

#endif
