// The slow reference: lengths, gains and the search written straight from their definitions, with
// leaf lists and double loops over DM1. Real is long double where the true value is wanted, and
// double where the plain loops' own arithmetic is. Shared by tests and benchmarks.
#ifndef ZORVEK_TESTS_REFERENCE_H
#define ZORVEK_TESTS_REFERENCE_H

#include "driver/mt_rand.h"
#include "tests/data.h"

namespace zorvek::reference {

// Sum of the positive edge lengths; the lengths go into the table.
template <typename Real>
Real Evaluate(TreeTable tree);

template <typename Real>
Real Delta(int u, int v, TreeTable tree);

bool FastLocalSearch(TreeTable tree);

// The run's search in plain double arithmetic on trees of its own, from the run's starting tree.
struct Search {
  explicit Search(std::uint32_t seed);

  // One iterated local search step, and the restart after every 21st fruitless one.
  void Step();

  // The shift move, with its markers and all its passes.
  double Shift(TreeTable tree, double bound);

  test::Tree best, current;
  double best_length, current_length;
  int stalled = 0;
  MTRand random;
};

}  // namespace zorvek::reference

#endif
