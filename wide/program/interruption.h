// Interruption by signals: the best tree so far is still written, and no temporary file stays.
#ifndef ZORVEK_WIDE_PROGRAM_INTERRUPTION_H
#define ZORVEK_WIDE_PROGRAM_INTERRUPTION_H

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace zorvek::wide {

// While one of these lives, its thread waits for the signals that end a program, so no handler has
// to reach for a global. To be made before any other thread: it blocks the signals in its own
// thread and in those begun from it.
//
// SIGINT (Ctrl-C), SIGTERM and SIGHUP ask for the best tree so far: the first one makes Stop()
// true. One that follows within a second is the same request, for timeout(1) and some shells send
// it twice; a later one ends the process, and so does every other signal. SIGINT and SIGTERM count
// even where they are ignored so far, as in a script's background job; the others stay ignored.
class Interruption {
 public:
  // Calls `at_end` on its own thread before a signal ends the process.
  explicit Interruption(std::function<void()> at_end);
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  // From now on there will be a tree to write. Before, the first signal ends the process.
  void ExpectTree() { expects_tree_ = true; }

  const std::atomic<bool>& Stop() const { return stop_; }

 private:
  void Wait();
  [[noreturn]] void End(int signal) const;

  std::function<void()> at_end_;
  std::atomic<bool> expects_tree_{false};
  std::atomic<bool> stop_{false};
  sigset_t caught_;
  sigset_t before_;
  std::thread thread_;
};

}  // namespace zorvek::wide

#endif
