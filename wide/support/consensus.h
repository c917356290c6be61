// The groups that most trees have.
#ifndef ZORVEK_WIDE_SUPPORT_CONSENSUS_H
#define ZORVEK_WIDE_SUPPORT_CONSENSUS_H

#include <vector>

#include "zorvek/tree.h"

namespace zorvek::wide {

// The majority-rule consensus [Margush1981] of unrooted trees with the same taxa, one tree or more:
// the groups (Tree::IsGroup) that more than half of them have, with the share that has them as
// support, and with polytomies where there are none. The length of an edge is the mean, as written, over
// the trees that have it.  Cost: for t trees t n, and the sum of the sizes of the groups.
Tree MajorityConsensus(const std::vector<Tree>& trees);

}  // namespace zorvek::wide

#endif
