#include "wide/program/trees.h"

#include <algorithm>
#include <iostream>

#include "core/index.h"
#include "wide/criterion/fitted_tree.h"
#include "wide/data/topology.h"
#include "wide/program/outputs.h"
#include "zorvek/error.h"
#include "zorvek/io.h"

namespace zorvek::wide {

Tree StartingTree(const Options& options, const Input& input) {
  if (options.start_tree.empty()) return {};
  const std::vector<Tree> trees = ReadTrees(Source(options.start_tree), input.Labels()).trees;
  if (trees.size() > 1) {
    throw Error(At(options.start_tree) + ": " + std::to_string(trees.size()) +
                " trees; give one to start from");
  }
  return trees[0];
}

void EvaluateTrees(Results& results) {
  const Options& options = results.options;
  const std::vector<Tree> trees = ReadTrees(Source(options.evaluate), results.input.Labels()).trees;
  const bool one = options.bootstrap.replicates > 0 || !PathOf(options, "--draw").empty();
  if (one && trees.size() > 1) {
    throw Error(At(options.evaluate) + ": " + std::to_string(trees.size()) +
                " trees; give one, or neither --bootstrap nor --draw");
  }
  const double* const* distances = results.input.distances.Rows();
  for (const Tree& tree : trees) {
    FittedTree fitted = Fit(options.search.criterion, TopologyOf(tree), distances);
    results.found.push_back({std::move(fitted.tree), fitted.length});
  }
}

std::vector<Tree> TreesForSupport(const Options& options, const Input& input) {
  std::vector<Tree> given;
  for (const std::string& path : options.support_from) {
    for (Tree& tree : ReadTrees(Source(path), input.Labels()).trees)
      given.push_back(std::move(tree));
  }
  return given;
}

void CheckOutgroup(const Options& options, const Input& input) {
  const std::vector<int> taxa = NamedTaxa(options.outgroup, "for the outgroup", options, input);
  std::vector<bool> named(input.Labels().size());
  for (const int taxon : taxa) named[Index(taxon)] = true;
  if (std::count(named.begin(), named.end(), false) == 0) {
    throw Error("the outgroup holds all taxa; name fewer");
  }
}

Tree Rooted(const Tree& tree, const Options& options, const Input& input, bool* loose) {
  if (options.midpoint) return RootedAtMidpoint(tree);
  const std::vector<int> taxa = NamedTaxa(options.outgroup, "for the outgroup", options, input);
  if (taxa.empty()) return tree;
  const Outgroup found = FindOutgroup(tree, taxa);
  if (loose != nullptr) *loose = !found.exact;
  return RootedAbove(tree, found.node, 0.5);
}

void SetRoots(Results& results) {
  std::size_t without = 0;
  for (const SearchResult& found : results.found) {
    bool loose = false;
    results.trees.push_back(Rooted(found.tree, results.options, results.input, &loose));
    without += loose ? 1 : 0;
  }
  if (without == 0) return;
  const std::size_t all = results.trees.size();
  std::cerr << "zorvek-wide: warning: the outgroup is not one group of "
            << (all == 1 ? "the tree; its root is"
                         : std::to_string(without) + " of the " + std::to_string(all) +
                               " trees; their roots are")
            << " at the smallest group that holds it\n";
}

}  // namespace zorvek::wide
