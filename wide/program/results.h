// All that a run of zorvek-wide knows at its end; what its outputs are made of.
#ifndef ZORVEK_WIDE_PROGRAM_RESULTS_H
#define ZORVEK_WIDE_PROGRAM_RESULTS_H

#include <ctime>
#include <vector>

#include "wide/program/distances.h"
#include "wide/program/input.h"
#include "wide/program/options.h"
#include "zorvek/search.h"
#include "zorvek/support.h"

namespace zorvek::wide {

struct Improvement {
  double seconds;  // since the search began
  double length;   // of the best tree from then on
};

// Filled phase by phase: input, distances, search or evaluation, support, roots.
struct Results {
  const Options& options;
  std::time_t began;
  Input input{};
  DistanceNotes notes{};
  std::vector<SearchResult> found{};  // one by a search, or as many as were to be evaluated
  BootstrapResult support{};          // with the trees that the supports come from
  std::vector<Tree> trees{};          // those found as they are written, with their roots
  std::vector<Improvement> improvements{};
  double seconds = 0;        // wall clock, of the whole run
  bool interrupted = false;  // by a signal
};

}  // namespace zorvek::wide

#endif
