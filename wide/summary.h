// What a run of zorvek-wide tells at its end, and its log.
#ifndef ZORVEK_WIDE_SUMMARY_H
#define ZORVEK_WIDE_SUMMARY_H

#include <string>
#include <vector>

#include "wide/bootstrap.h"
#include "wide/input.h"
#include "wide/options.h"
#include "wide/tree.h"

namespace zorvek::wide {

struct Improvement {
  double seconds;  // since the search began
  double length;   // positive, of the best tree from then on
};

struct Outcome {
  Tree tree;
  BootstrapResult support;
  std::vector<Improvement> improvements;
  double seconds = 0;        // wall clock, of the whole run
  bool interrupted = false;  // by a signal
};

// The lines for standard output.
std::string Summary(const Options& options, const Input& input, const Outcome& outcome);

// Time and length of each improvement, a line each.
std::string RunLog(const Outcome& outcome);

}  // namespace zorvek::wide

#endif
