// The progress line of a search, for a person who waits at a terminal.
#ifndef ZORVEK_DRIVER_PROGRESS_H
#define ZORVEK_DRIVER_PROGRESS_H

#include <chrono>

namespace zorvek {

// Holds one line on standard error, if that is a terminal when the line is created, and otherwise
// nothing. The line is gone when the object is.
class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Rewrites the line, at most four times a second: processor seconds, `steps`, the best length,
  // and the seconds left until the search gives up.
  // Reads: t, time_val, opt_val.  Cost: a look at the wall clock; without a terminal none.
  void Show(long steps);

 private:
  bool terminal;
  std::chrono::steady_clock::time_point due;  // no rewriting before this time
  int width = 0;                              // columns written so far
};

}  // namespace zorvek

#endif
