#include "driver/interruption.h"

#include <csignal>

namespace zorvek {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void SetAction(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;  // a write that is under way is finished
  // Neither signal interrupts the handling of the other, so a second one meets the default action.
  sigaddset(&action.sa_mask, SIGINT);
  sigaddset(&action.sa_mask, SIGTERM);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

// Calls nothing but sigaddset and sigaction, which are safe in a signal handler.
void NoteInterruption(int) {
  interrupted = 1;
  SetAction(SIG_DFL);
}

}  // namespace

void CatchInterruptions() {
  SetAction(NoteInterruption);
}

bool Interrupted() {
  return interrupted != 0;
}

}  // namespace zorvek
