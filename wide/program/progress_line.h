// The progress line of zorvek-wide, for a person who waits at a terminal.
#ifndef ZORVEK_WIDE_PROGRAM_PROGRESS_LINE_H
#define ZORVEK_WIDE_PROGRAM_PROGRESS_LINE_H

#include <chrono>
#include <string>

namespace zorvek::wide {

// Holds one line on standard error, if that is a terminal, and otherwise nothing. The line is gone
// when the object is. For one thread at a time.
class ProgressLine {
 public:
  static constexpr double kUnknown = -1;  // as a fraction

  explicit ProgressLine(bool wanted);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // Rewrites the line, at most four times a second: the phase, its share done (0..1), `more`, and
  // the time left, reckoned from the phase's beginning, but no more than `limit` seconds if that is
  // not 0.
  void Show(const std::string& phase, double fraction, const std::string& more, double limit = 0);

 private:
  using Clock = std::chrono::steady_clock;

  bool terminal_;
  std::string phase_;
  Clock::time_point phase_began_;
  Clock::time_point due_;
  int width_ = 0;  // columns written so far
};

}  // namespace zorvek::wide

#endif
