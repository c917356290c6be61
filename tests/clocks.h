// The system's clocks as tests set them.
#ifndef ZORVEK_TESTS_CLOCKS_H
#define ZORVEK_TESTS_CLOCKS_H

namespace zorvek::test {

// For as long as this lives, what getrusage, gettimeofday and the steady clock tell.
struct Clocks {
  Clocks() { held = this; }
  ~Clocks() { held = nullptr; }

  double user = 5000.75, system = 70.5, wall = 1e9;  // seconds
  double step = 0;  // that a look at the processor's time takes; ten times as much by the wall's
  static inline Clocks* held = nullptr;
};

}  // namespace zorvek::test

#endif
