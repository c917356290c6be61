#include "search/iterated_local_search.h"

#include "driver/run_state.h"
#include "search/shift.h"
#include "search/two_opt.h"
#include "tree/fast_local_search.h"
#include "tree/tree_follower.h"
#include "tree/tree_length.h"

namespace zorvek {

namespace {

constexpr int kTwoOptCalls = 25;

// Makes T1 the best tree if it is strictly shorter, and logs that under the tag. Returns whether it
// is.
bool Improves(const char* tag) {
  if (!(t1_val < opt_val)) return false;
  outML << tag << " improved primal bound:" << t1_val << " at:" << t->elapsedTime(Timer::CPU)
        << std::endl;
  opt_val = t1_val;
  CopyTree(T1, OPT);
  time_val = static_cast<int>(t->elapsedTime(Timer::CPU));
  return true;
}

}  // namespace

int ILS(int) {
  const FollowerScope scope;
  int failures = 3;
  while (FastLocalSearch(T1) && WithinInnerLimit()) {
  }
  t1_val = Evaluate(T1);
  if (Improves("FLS")) --failures;

  for (int call = 0; call < kTwoOptCalls && WithinInnerLimit(); ++call) {
    t1_val = TWOoptLocalSearch(T1, t1_val);
  }
  if (Improves("2LS")) --failures;

  t1_val = Shift(T1, t1_val);
  if (Improves("SFT")) --failures;
  return failures;
}

}  // namespace zorvek
