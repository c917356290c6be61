// Starting trees by agglomeration.
#ifndef ZORVEK_WIDE_SEARCH_NEIGHBOUR_JOINING_H
#define ZORVEK_WIDE_SEARCH_NEIGHBOUR_JOINING_H

#include <functional>
#include <random>
#include <vector>

#include "wide/data/topology.h"

namespace zorvek::wide {

struct Joining {
  Joining() = default;
  Joining(double greedy_share, std::mt19937_64* random) : greedy(greedy_share), generator(random) {}

  double greedy = 1;                     // with a generator: share of joins of the best pair
  std::mt19937_64* generator = nullptr;  // for the others, which join a random active node to the
                                         // partner that is best for it
  std::function<bool(double)> poll;  // told the share of the work that is done, true ends it: what
                                     // is left is joined without a search; may be empty
  int threads = 1;  // share what is done to all rows: the first search, closing up after joins
  long* searched = nullptr;  // becomes the number of rows that were searched
  std::vector<double>* lengths =
      nullptr;  // become, for each node but the last, the length of the edge
                // by which it was joined,
                // d(i,j)/2 + (r(i) - r(j)) / (2 (m - 2))
};

// Neighbour joining [Saitou1987]: of m active nodes, joins the pair with the least
//   Q(i,j) = d(i,j) - (r(i) + r(j)) / (m - 2),  r(i) the sum of row i [Studier1988],
// until three are left. A new node takes the place of the earlier of the two that it joins; of equal
// pairs the one is joined that a loop over i and j > i meets first. So the tree is that of the plain
// double loop, in a fraction of its time.
// Number is double, or float for half the memory.
// Requires: n >= 4, a symmetric matrix of finite numbers (its diagonal is not read).
// Cost: n for each row that is searched; a join searches about 10 on distances of sequences (3 where half
// of them are the same), 50 on noise, and one or a few where all distances are equal, or equal in groups.
// Memory: n^2 Numbers besides the distances.
template <typename Number = double>
Topology JoinNeighbours(int n, const double* const* distances, const Joining& joining = {});

// The same in the matrix itself, which it uses up.  Memory: of order n.
template <typename Number>
Topology JoinNeighboursInPlace(int n, Number* const* distances, const Joining& joining = {});

}  // namespace zorvek::wide

#endif
