#include "wide/program/interruption.h"

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <utility>

namespace zorvek::wide {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kSameRequest(1);

// What ends a program unless it is caught, faults of the program itself and SIGPIPE apart.
constexpr int kEnding[] = {SIGINT,  SIGTERM, SIGHUP,  SIGQUIT,   SIGUSR1, SIGUSR2,
                           SIGALRM, SIGXCPU, SIGPROF, SIGVTALRM, SIGIO,   SIGPWR};

int Wake() {
  return SIGRTMIN;  // sent to the waiting thread alone
}

bool IsIgnored(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

bool AsksForTree(int signal) {
  return signal == SIGINT || signal == SIGTERM || signal == SIGHUP;
}

}  // namespace

Interruption::Interruption(std::function<void()> at_end) : at_end_(std::move(at_end)) {
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  sigemptyset(&caught_);
  sigaddset(&caught_, Wake());
  for (const int signal : kEnding) {
    if (!IsIgnored(signal)) sigaddset(&caught_, signal);
  }
  pthread_sigmask(SIG_BLOCK, &caught_, &before_);
  thread_ = std::thread([this] { Wait(); });
}

Interruption::~Interruption() {
  pthread_kill(thread_.native_handle(), Wake());
  thread_.join();
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void Interruption::Wait() {
  Clock::time_point requested;
  for (int signal = 0;;) {
    sigwait(&caught_, &signal);
    if (signal == Wake()) return;
    if (!AsksForTree(signal) || !expects_tree_) End(signal);
    const Clock::time_point now = Clock::now();
    if (!stop_) {
      requested = now;
      stop_ = true;
    } else if (now - requested > kSameRequest) {
      End(signal);
    }
  }
}

void Interruption::End(int signal) const {
  at_end_();
  std::signal(signal, SIG_DFL);
  sigset_t one;
  sigemptyset(&one);
  sigaddset(&one, signal);
  pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
  raise(signal);
  _exit(128 + signal);  // not reached: each of them ends the process by default
}

}  // namespace zorvek::wide
