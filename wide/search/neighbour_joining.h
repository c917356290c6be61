// Starting trees by agglomeration.
#ifndef ZORVEK_WIDE_SEARCH_NEIGHBOUR_JOINING_H
#define ZORVEK_WIDE_SEARCH_NEIGHBOUR_JOINING_H

#include <random>

#include "wide/data/topology.h"

namespace zorvek::wide {

// Neighbour joining [Saitou1987, Studier1988]: joins the pair of active nodes with the least
// d(i,j) - (r(i) + r(j)) / (m - 2), r the row sums of the m active nodes, until three are left.
// With a generator, each join is made that way with probability `greedy`, and otherwise joins a
// random active node to the partner that is best for it. Requires: n >= 4.  Cost: n^3 / 6
// comparisons; memory 8 n^2 bytes.
Topology JoinNeighbours(int n, const double* const* distances, double greedy = 1,
                        std::mt19937_64* generator = nullptr);

}  // namespace zorvek::wide

#endif
