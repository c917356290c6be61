// Starting trees by agglomeration.
#ifndef ZORVEK_WIDE_SEARCH_NEIGHBOUR_JOINING_H
#define ZORVEK_WIDE_SEARCH_NEIGHBOUR_JOINING_H

#include <random>
#include <vector>

#include "wide/data/topology.h"

namespace zorvek::wide {

// Neighbour joining [Saitou1987]: of m active nodes, joins the pair with the least
//   Q(i,j) = d(i,j) - (r(i) + r(j)) / (m - 2),  r(i) the sum of row i [Studier1988],
// until three are left. A new node takes the place of the earlier of the two that it joins; of equal
// pairs the one is joined that a loop over i and j > i meets first. So the tree is that of the plain
// double loop, in a fraction of its time.
// With a generator, each join is made that way with probability `greedy`, and otherwise joins a random
// active node to the partner that is best for it.
// Number is double, or float for half the memory.
// Requires: n >= 4, a symmetric matrix of finite numbers (its diagonal is not read).
// Cost: n for each row that is searched; a join searches about 10 on distances of sequences (3 where half
// of them are the same), 50 on noise, and up to all of them where all pairs are equal. *searched, if
// given, becomes their number in all; *lengths, if given, becomes for each node but the last the length
// of the edge by which it was joined, d(i,j)/2 + (r(i) - r(j)) / (2 (m - 2)), which may be negative.
// Memory: n^2 Numbers besides the distances.
template <typename Number>
Topology JoinNeighbours(int n, const Number* const* distances, double greedy = 1,
                        std::mt19937_64* generator = nullptr, long* searched = nullptr,
                        std::vector<double>* lengths = nullptr);

// The same in the matrix itself, which it uses up.  Memory: of order n.
template <typename Number>
Topology JoinNeighboursInPlace(int n, Number* const* distances, double greedy = 1,
                               std::mt19937_64* generator = nullptr, long* searched = nullptr,
                               std::vector<double>* lengths = nullptr);

}  // namespace zorvek::wide

#endif
