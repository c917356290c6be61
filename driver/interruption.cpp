#include "driver/interruption.h"

#include <csignal>
#include <ctime>

namespace zorvek {

namespace {

constexpr double kSameSignal = 1;  // seconds within which further signals are the first one again

volatile std::sig_atomic_t interrupted = 0;
timespec first_signal;

void SetAction(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;  // a write that is under way is finished
  // Neither signal interrupts the handling of the other.
  sigaddset(&action.sa_mask, SIGINT);
  sigaddset(&action.sa_mask, SIGTERM);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

// Calls nothing but what is safe in a signal handler.
void NoteInterruption(int signal) {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  if (interrupted == 0) {
    interrupted = 1;
    first_signal = now;
  } else if (static_cast<double>(now.tv_sec - first_signal.tv_sec) +
                 1e-9 * static_cast<double>(now.tv_nsec - first_signal.tv_nsec) >
             kSameSignal) {
    SetAction(SIG_DFL);
    raise(signal);  // comes when this handler has returned, and ends the process
  }
}

}  // namespace

void CatchInterruptions() {
  SetAction(NoteInterruption);
}

bool Interrupted() {
  return interrupted != 0;
}

}  // namespace zorvek
