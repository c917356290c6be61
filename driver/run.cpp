#include "driver/run.h"

#include <csignal>
#include <iostream>
#include <string>

#include "driver/interruption.h"
#include "driver/progress.h"
#include "driver/run_state.h"
#include "input/diagnosis.h"
#include "input/distances.h"
#include "output/tree_writer.h"
#include "search/iterated_local_search.h"
#include "search/random_perturbation.h"
#include "tree/starting_tree.h"
#include "tree/tree_follower.h"
#include "tree/tree_length.h"
#include "tree/tree_table.h"

namespace zorvek {

namespace {

constexpr int kFewestTaxa = 4;  // the tree table needs a central pair and a root row
constexpr int kStages = 3;      // what ILS returns when none of its stages improved the best tree
constexpr int kFruitlessSteps = 21;  // this many since the last restart call for another

// Reads the alignment and estimates its distances. Returns whether there are enough taxa for a
// tree, and says what is wrong if not.
bool ReadInput(const char* path) {
  BuildLeavesMatrix(path);
  if (n >= kFewestTaxa) return true;
  std::cout << "Error: " << path << ": " << DiagnoseInput(path) << "; at least " << kFewestTaxa
            << " taxa are needed." << std::endl;
  return false;
}

void BuildStartingTree() {
  Init();
  DJT();
  CatchInterruptions();
  std::cout << "Generating starting tree..."
            << "starting length: " << opt_val << std::endl;
}

void SearchUntilStopped() {
  time_val = 0;
  std::cout << "Minimizing tree length, please wait..." << std::endl;
  t->resetTime();
  Search search;
  Progress progress;
  for (long steps = 0; StopCondition() && !Interrupted(); ++steps) {
    progress.Show(steps);
    search.Step();
  }
}

void WriteBestTree(const char* path) {
  std::cout << "Best value found: " << Evaluate(OPT) << std::endl;
  PrintTree(path);
}

}  // namespace

void Search::Step() {
  if (ILS(0) < kStages || ++stallCount < kFruitlessSteps) return;
  CopyTree(OPT, T1);
  RandomPerturbation(T1);
  stallCount = 0;
}

void CreateSources() {
  r = new MTRand;
  t = new Timer;
}

void Run(const char* path) {
  // Whoever read the standard output may leave; the tree is written all the same.
  std::signal(SIGPIPE, SIG_IGN);
  if (!ReadInput(path)) return;
  outML.open(std::string(path) + ".Tavlen.log");
  const FollowerScope scope;  // nobody changes the distances from here on
  BuildStartingTree();
  SearchUntilStopped();
  WriteBestTree(path);
  Finalize();
  std::cout << "done!" << std::endl;
}

}  // namespace zorvek
