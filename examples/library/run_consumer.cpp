// Prints the length of the neighbour-joining tree of a NEXUS alignment.
#include <iostream>

#include "driver/run_state.h"
#include "input/distances.h"
#include "search/random_nj.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  zorvek::r = new zorvek::MTRand;
  zorvek::t = new zorvek::Timer;
  zorvek::BuildLeavesMatrix(argv[1]);
  if (zorvek::n < 4) return 1;
  zorvek::Init();
  zorvek::alpha = 1;
  zorvek::n_ants = 1;
  zorvek::RandomNJ();
  std::cout << "length of the neighbour-joining tree: " << zorvek::opt_val << '\n';
  zorvek::Finalize();
}
