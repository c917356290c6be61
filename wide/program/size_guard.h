// What a run of zorvek-wide will need, estimated before it works.
#ifndef ZORVEK_WIDE_PROGRAM_SIZE_GUARD_H
#define ZORVEK_WIDE_PROGRAM_SIZE_GUARD_H

#include <string>

#include "wide/program/options.h"

namespace zorvek::wide {

struct Needs {
  double seconds =
      0;             // on one core of 2020 or later; iterations apart, which are the user's choice
  double bytes = 0;  // at the peak of the whole process
  int replicate_threads = 0;  // bootstrap replicates at a time
};

// For `taxa` taxa with `sites` sites each; 0 sites for a matrix of distances. Where not as many replicates as
// there are threads fit into `memory` bytes (0 if that is not known), fewer run at a time.
Needs NeedsOf(const Options& options, double taxa, double sites, double memory = 0);

// What should be told before such a run: its needs, when it takes more than a minute or three
// quarters of the memory; else nothing. Throws Error when it cannot fit into `memory` bytes (0 if
// that is not known), naming settings under which it would, if there are any.
std::string Forewarning(const Options& options, double taxa, double sites, double memory);

}  // namespace zorvek::wide

#endif
