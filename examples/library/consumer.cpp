// From an alignment to a Newick tree, with progress, and Ctrl-C to stop with the best tree so far.
#include <atomic>
#include <csignal>
#include <iostream>

#include "zorvek/distances.h"
#include "zorvek/error.h"
#include "zorvek/io.h"
#include "zorvek/search.h"

namespace {

std::atomic<bool> stop{false};

}  // namespace

int main(int argc, char** argv) try {
  using namespace zorvek::wide;
  if (argc != 2) return 2;
  std::signal(SIGINT, [](int) { stop = true; });
  const Alignment alignment = ReadAlignment(Source(argv[1]));
  const EstimatedDistances distances = EstimateDistances(alignment);  // under TN93
  SearchSettings settings;
  settings.iterations = 100;
  settings.stop = &stop;
  settings.on_progress = [](const Progress& progress) {
    if (progress.improved) std::cerr << "length " << progress.length << '\n';
  };
  const DistanceMatrix& matrix = distances.matrix;
  const SearchResult found = FindShortestTree(matrix.Size(), matrix.Rows(), settings);
  std::cout << Newick(found.tree, alignment.labels) << '\n';
} catch (const zorvek::wide::Error& fault) {
  std::cerr << fault.what() << '\n';  // FILE:LINE:COLUMN: what is wrong; what to do
  return 1;
}
