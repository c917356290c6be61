#include "wide/program/progress_line.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "wide/formats/numbers.h"

namespace zorvek::wide {

namespace {

constexpr std::chrono::milliseconds kPause(250);  // between two rewritings
constexpr double kEnoughToReckon = 0.02;          // share of a phase

}  // namespace

ProgressLine::ProgressLine(bool wanted) : terminal_(wanted && isatty(STDERR_FILENO) == 1) {}

// Blanks clear the line on every terminal, the dumbest included.
ProgressLine::~ProgressLine() {
  if (width_ > 0) std::fprintf(stderr, "\r%*s\r", width_, "");
}

void ProgressLine::Show(const std::string& phase, double fraction, const std::string& more,
                        double limit) {
  if (!terminal_) return;
  const Clock::time_point now = Clock::now();
  if (phase != phase_) {
    phase_ = phase;
    phase_began_ = now;
  } else if (now < due_) {
    return;
  }
  due_ = now + kPause;
  double left = limit;
  if (fraction > kEnoughToReckon) {
    const std::chrono::duration<double> spent = now - phase_began_;
    const double reckoned = spent.count() / fraction * (1 - fraction);
    left = limit > 0 ? std::min(limit, reckoned) : reckoned;
  }
  std::string text = phase;
  if (fraction >= 0) text += ", " + Rounded(100 * fraction, 0) + " %";
  text += more;
  if (left > 0) text += ", " + Rounded(left, 0) + " s left";
  width_ = std::max(width_, static_cast<int>(text.size()));
  std::fprintf(stderr, "\r%-*s", width_, text.c_str());
}

}  // namespace zorvek::wide
