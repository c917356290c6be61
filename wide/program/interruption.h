// Interruption by SIGINT (Ctrl-C) or SIGTERM: the best tree so far is still written.
#ifndef ZORVEK_WIDE_PROGRAM_INTERRUPTION_H
#define ZORVEK_WIDE_PROGRAM_INTERRUPTION_H

#include <atomic>
#include <csignal>
#include <thread>

namespace zorvek::wide {

// While one of these lives, the first of the two signals only makes Stop() true, and a second one
// ends the process. A thread waits for the signals, so no handler has to reach for a global. To be
// made before any other thread: it blocks the signals in its own thread and in those begun from it.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  const std::atomic<bool>& Stop() const { return stop_; }

 private:
  void Wait();

  std::atomic<bool> stop_{false};
  sigset_t before_;
  std::thread thread_;
};

}  // namespace zorvek::wide

#endif
