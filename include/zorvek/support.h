// The support of the edges of a tree: from other trees, or by resampling the sites of an alignment
// [Felsenstein1985].
#ifndef ZORVEK_SUPPORT_H
#define ZORVEK_SUPPORT_H

#include <functional>
#include <vector>

#include "zorvek/alignment.h"
#include "zorvek/distances.h"
#include "zorvek/names.h"
#include "zorvek/search.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

enum class SupportMeasure {
  kFrequency,  // the share of trees that have the group [Felsenstein1985]
  kTransfer,  // the transfer bootstrap expectation: how near they come to it, on average [Lemoine2018]
};

inline Names<SupportMeasure> SupportNames() {
  return {{"fbp", SupportMeasure::kFrequency}, {"tbe", SupportMeasure::kTransfer}};
}

struct BootstrapSettings {
  int first = 1;  // number of the first replicate
  int replicates = 0;
  SupportMeasure measure = SupportMeasure::kFrequency;
  bool keep_trees = false;
  SearchSettings search;             // as for the tree; see Bootstrap for what counts here
  std::function<void(int)> on_done;  // with the number done; on any thread, one at a time
};

struct BootstrapResult {
  int done = 0;             // replicates that the supports stand on
  long redrawn = 0;         // samples in which a pair of taxa had no distance, drawn again
  int given_up = 0;         // replicates in which that happened every time
  std::vector<Tree> trees;  // of the replicates that were done, by number, if they are to be kept
};

// Sets the supports of the groups of `tree` to what the trees of the replicates say of them. In a
// replicate as many sites as there are are drawn with replacement, the distances estimated again under
// `model`, saturated pairs with a stand-in of their own, and a tree found by neighbour joining and a
// descent by the criterion and moves of the search settings; of these the seed, the threads and the stop
// flag count too, and no others. What replicate k draws depends on the seed and k alone, so the result
// is the same for any number of threads, and trees of several ranges of replicates are those of one.
BootstrapResult Bootstrap(const Alignment& alignment, const ModelSettings& model,
                          const BootstrapSettings& settings, Tree& tree);

// The supports that `trees` give to the edges of `tree`.
void SetSupports(const std::vector<Tree>& trees, SupportMeasure measure, Tree& tree);

// The majority-rule consensus [Margush1981] of unrooted trees with the same taxa, one tree or more:
// the groups (Tree::IsGroup) that more than half of them have, with the share that has them as
// support, and with polytomies where there are none. The length of an edge is the mean, as written, over
// the trees that have it.  Cost: for t trees t n, and the sum of the sizes of the groups.
Tree MajorityConsensus(const std::vector<Tree>& trees);

}  // namespace zorvek::wide

#endif
