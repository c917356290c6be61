#include "driver/timer.h"

#include "driver/run_state.h"

namespace zorvek {

namespace {

constexpr double kPatience = 30.0;  // processor seconds without an improvement that end the search

}  // namespace

Timer::Timer() {
  resetTime();
}

void Timer::resetTime() {
  cpuStart = cpuSeconds();
  wallStart = wallSeconds();
}

double Timer::elapsedTime(const TYPE& type) {
  return type == WALL ? wallSeconds() - wallStart : cpuSeconds() - cpuStart;
}

double Timer::cpuSeconds() {
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) + static_cast<double>(usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec) * 1e-6 +
         static_cast<double>(usage.ru_stime.tv_usec) * 1e-6;
}

double Timer::wallSeconds() {
  gettimeofday(&wallNow, nullptr);
  return static_cast<double>(wallNow.tv_sec) + static_cast<double>(wallNow.tv_usec) * 1e-6;
}

double SecondsLeft() {
  return kPatience - (t->elapsedTime(Timer::CPU) - time_val);
}

// A difference of doubles is 0 only between equals, so the comparison with 0 loses nothing.
bool StopCondition() {
  return SecondsLeft() >= 0;
}

bool WithinInnerLimit() {
  return MAX_TIME > 0 && t->elapsedTime(Timer::CPU) < MAX_TIME;
}

}  // namespace zorvek
