// These functions of this program stand before the C library's.
#include "tests/clocks.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cmath>
#include <ctime>

namespace {

using zorvek::test::Clocks;

timeval Parts(double seconds) {
  const double whole = std::floor(seconds);
  return {static_cast<time_t>(whole), static_cast<suseconds_t>(1e6 * (seconds - whole))};
}

}  // namespace

extern "C" int getrusage(__rusage_who_t who, rusage* usage) noexcept {
  const int result = static_cast<int>(syscall(SYS_getrusage, who, usage));
  if (Clocks::held == nullptr) return result;
  Clocks& clocks = *Clocks::held;
  clocks.user += clocks.step;
  clocks.wall += 10 * clocks.step;
  usage->ru_utime = Parts(clocks.user);
  usage->ru_stime = Parts(clocks.system);
  return result;
}

extern "C" int gettimeofday(timeval* now, void*) noexcept {
  if (Clocks::held == nullptr) return static_cast<int>(syscall(SYS_gettimeofday, now, nullptr));
  *now = Parts(Clocks::held->wall);
  return 0;
}

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
  if (Clocks::held == nullptr) return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
  const timeval parts = Parts(Clocks::held->wall);
  *now = {parts.tv_sec, 1000 * parts.tv_usec};
  return 0;
}
