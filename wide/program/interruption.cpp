#include "wide/program/interruption.h"

#include <pthread.h>

namespace zorvek::wide {

namespace {

constexpr int kEnd = SIGUSR1;  // sent to the waiting thread alone

sigset_t Set(bool interruptions, bool end) {
  sigset_t set;
  sigemptyset(&set);
  if (interruptions) sigaddset(&set, SIGINT);
  if (interruptions) sigaddset(&set, SIGTERM);
  if (end) sigaddset(&set, kEnd);
  return set;
}

}  // namespace

Interruption::Interruption() {
  // Also where they are ignored so far, as in a script's background job.
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  const sigset_t all = Set(true, true);
  pthread_sigmask(SIG_BLOCK, &all, &before_);
  thread_ = std::thread([this] { Wait(); });
}

Interruption::~Interruption() {
  pthread_kill(thread_.native_handle(), kEnd);
  thread_.join();
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void Interruption::Wait() {
  int signal = 0;
  const sigset_t all = Set(true, true);
  sigwait(&all, &signal);
  if (signal == kEnd) return;
  stop_ = true;
  // From here on a signal finds this one thread open to it, and ends the process.
  const sigset_t interruptions = Set(true, false);
  pthread_sigmask(SIG_UNBLOCK, &interruptions, nullptr);
  const sigset_t end = Set(false, true);
  sigwait(&end, &signal);
}

}  // namespace zorvek::wide
