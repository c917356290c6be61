// The criteria by which a tree is short.
#ifndef ZORVEK_WIDE_CRITERION_CRITERION_H
#define ZORVEK_WIDE_CRITERION_CRITERION_H

#include <memory>

#include "wide/criterion/neighbourhood.h"

namespace zorvek::wide {

enum class Criterion {
  kBalanced,  // the sum of all balanced edge lengths [Pauplin2000]
  kOls,       // the sum of the positive ordinary-least-squares edge lengths [Rzhetsky1993]
};

// The neighbourhood of a tree under a criterion.
// Requires: n >= 4, a symmetric matrix of finite numbers that outlives it.
std::unique_ptr<Neighbourhood> MakeNeighbourhood(Criterion criterion, const Topology& topology,
                                                 const double* const* distances);

}  // namespace zorvek::wide

#endif
