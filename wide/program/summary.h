// What a run of zorvek-wide tells at its end, and its log.
#ifndef ZORVEK_WIDE_PROGRAM_SUMMARY_H
#define ZORVEK_WIDE_PROGRAM_SUMMARY_H

#include <string>
#include <vector>

#include "wide/program/input.h"
#include "wide/program/options.h"
#include "wide/search/search.h"
#include "wide/support/bootstrap.h"

namespace zorvek::wide {

struct Improvement {
  double seconds;  // since the search began
  double length;   // of the best tree from then on
};

struct Outcome {
  SearchResult found;
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
