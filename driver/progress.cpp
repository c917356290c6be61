#include "driver/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "driver/run_state.h"

namespace zorvek {

namespace {

constexpr std::chrono::milliseconds kPause(250);  // between two rewritings

}  // namespace

Progress::Progress() : terminal(isatty(STDERR_FILENO) == 1) {}

// Blanks clear the line on every terminal, the dumbest included.
Progress::~Progress() {
  if (width > 0) std::fprintf(stderr, "\r%*s\r", width, "");
}

void Progress::Show(long steps) {
  if (!terminal) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < due) return;
  due = now + kPause;
  char text[128];
  const int length =
      std::snprintf(text, sizeof text, "%.1f s, %ld steps, best length %g, %.1f s left",
                    t->elapsedTime(Timer::CPU), steps, opt_val, std::max(SecondsLeft(), 0.0));
  width = std::max(width, length);
  std::fprintf(stderr, "\r%-*s", width, text);
}

}  // namespace zorvek
