// The command line of zorvek-wide.
#ifndef ZORVEK_WIDE_PROGRAM_OPTIONS_H
#define ZORVEK_WIDE_PROGRAM_OPTIONS_H

#include <cstdint>
#include <string>
#include <vector>

#include "wide/drawing/svg.h"

namespace zorvek::wide {

struct Options {
  static constexpr long kByClock = -1;
  static constexpr long kMostRounds = 1000000000000;

  std::string file;
  bool matrix = false;                 // the file is a PHYLIP square distance matrix
  std::string format;                  // of the alignment; if empty, what the content shows
  std::vector<std::string> leave_out;  // as given; each a label or labels between commas
  bool drop_undefined = false;

  int starts = 1;
  double greedy = 0.5;
  std::uint64_t seed = 1;
  long rounds = 1000;  // kByClock: until the time or the patience is over
  int threads = 1;
  double time = 0;
  double patience = 0;
  int bootstrap = 0;

  std::string output;  // of these, an empty one is not written
  std::string log;
  std::string newick;
  std::string distances;
  std::string draw;
  Layout layout = Layout::kUnrooted;
  bool quiet = false;
};

// Reads the command line. Returns whether the program is to go on; if not, `status` is what it ends
// with: 0 after --help and --version, 2 after an error of usage, which has been told.
bool ParseOptions(int argc, char** argv, Options& options, int& status);

}  // namespace zorvek::wide

#endif
