// The edge lengths of balanced minimum evolution, without the table of all averages.
#ifndef ZORVEK_WIDE_CRITERION_BALANCED_LENGTHS_H
#define ZORVEK_WIDE_CRITERION_BALANCED_LENGTHS_H

#include <vector>

#include "wide/data/topology.h"

namespace zorvek::wide {

// By node, the length of the edge between it and its neighbour on the way to taxon 0 [Desper2002]; that of
// taxon 0 itself is 0. They may be negative.
// Requires: n >= 4, a symmetric matrix of finite numbers.
// Cost: n^2, and for each node its distance from taxon 0.  Memory: of order n log n.
std::vector<double> BalancedLengths(const Topology& topology, const double* const* distances);

}  // namespace zorvek::wide

#endif
