// The run clock: processor time (user plus system) and wall-clock time since the last reset, and
// the stop rule of the search.
#ifndef ZORVEK_DRIVER_TIMER_H
#define ZORVEK_DRIVER_TIMER_H

#include <sys/resource.h>
#include <sys/time.h>

namespace zorvek {

// Every reading samples the system anew and overwrites the samples held here, so one clock serves
// one thread. A reading costs one system call; its failure leaves the previous sample in place.
class Timer {
 public:
  enum TYPE { WALL = 0, CPU = 1 };

  Timer();

  // Both clocks count from now on.
  void resetTime();

  // Seconds since the last reset, on the wall clock for WALL, else in processor time.
  double elapsedTime(const TYPE& type);

 private:
  double cpuSeconds();   // samples the processor time
  double wallSeconds();  // samples the wall clock

  rusage usage{};
  timeval wallNow{};
  double cpuStart = 0;   // seconds
  double wallStart = 0;  // seconds
};

// Processor seconds until the search gives up: 30 after the second in which the best tree last
// improved. Negative when they are over.
// Reads: t, time_val.
double SecondsLeft();

// Whether the search may go on; at exactly 30 seconds it still may.
// Reads: t, time_val.
bool StopCondition();

// Whether a local search may repeat: the elapsed processor time is below MAX_TIME. With MAX_TIME at
// 0 the answer is known without reading the clock.
// Reads: t, MAX_TIME.
bool WithinInnerLimit();

}  // namespace zorvek

#endif
