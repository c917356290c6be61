// A run from the NEXUS file to the tree file: its phases in order, and the search loop with its
// restarts.
#ifndef ZORVEK_DRIVER_RUN_H
#define ZORVEK_DRIVER_RUN_H

namespace zorvek {

// The search, one step at a time: an iterated local search that starts again from a perturbed copy
// of the best tree whenever it has stalled.
class Search {
 public:
  // One step of ILS. After every 21st step that improved nothing, improving steps in between not
  // counted, T1 becomes a randomly perturbed copy of OPT.
  // Requires: Init, DJT, and the sources r and t.  Cost: n^2 for a FollowerScope of its own, unless
  // there is one.
  void Step();

 private:
  int stallCount = 0;  // fruitless steps since the last restart
};

// Creates the random source r and the run clock t, which then live as long as the process.
void CreateSources();

// The whole run on the NEXUS file at `path`. Writes `path`.log, `path`.Tavlen.log and
// `path`.phylogeny; a file that cannot be written is done without, silently. Fewer than 4 taxa end
// the run with one line that gives the cause, before the latter two files are touched. An unstable
// spectrum ends the process.
// Requires: CreateSources.
void Run(const char* path);

}  // namespace zorvek

#endif
