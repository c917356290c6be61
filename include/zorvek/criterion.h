// The criteria by which a tree is short.
#ifndef ZORVEK_CRITERION_H
#define ZORVEK_CRITERION_H

#include "zorvek/names.h"

namespace zorvek::wide {

enum class Criterion {
  kBalanced,  // the sum of all balanced edge lengths [Pauplin2000]
  kOls,       // the sum of the positive ordinary-least-squares edge lengths [Rzhetsky1993]
};

inline Names<Criterion> CriterionNames() {
  return {{"balanced", Criterion::kBalanced}, {"ols", Criterion::kOls}};
}

}  // namespace zorvek::wide

#endif
