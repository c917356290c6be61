#include "tree/starting_tree.h"

#include "driver/run_state.h"
#include "tree/tree_length.h"
#include "tree/tree_table.h"

namespace zorvek {

void DJT() {
  for (int row = 0; row < n - 1; ++row) {
    OPT[row][kParent] = -1;
    OPT[row][kSelf] = n + row;
    OPT[row][kLeft] = 2 * row;
    OPT[row][kRight] = 2 * row + 1;
    OPT[row][kLeftLength] = 0;
    OPT[row][kRightLength] = 0;
  }
  FindAdj(OPT);
  CopyTree(OPT, T1);
  opt_val = t1_val = Evaluate(OPT);
}

}  // namespace zorvek
