// The trees that a run is given beside its data, and the roots of those that it writes.
#ifndef ZORVEK_WIDE_PROGRAM_TREES_H
#define ZORVEK_WIDE_PROGRAM_TREES_H

#include "wide/program/input.h"
#include "wide/program/options.h"
#include "wide/program/results.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

// All of these throw Error: at trees that cannot be read, or have other taxa than the input.

// The tree that the search is to set out from; one of no taxa if none is given.
Tree StartingTree(const Options& options, const Input& input);

// Fits the given trees to the distances.
void EvaluateTrees(Results& results);

// The trees that the supports are to come from; none if no files are named.
std::vector<Tree> TreesForSupport(const Options& options, const Input& input);

// Throws Error if the outgroup has taxa that the input has not, or all that it has.
void CheckOutgroup(const Options& options, const Input& input);

// The tree with the root that the options ask for. `loose` becomes whether the outgroup is not one group
// of it; the root is then at the smallest group that holds it.
Tree Rooted(const Tree& tree, const Options& options, const Input& input, bool* loose = nullptr);

// Takes over the trees of the run as they are to be written. Those of which the outgroup is not one group
// are told once, on standard error.
void SetRoots(Results& results);

}  // namespace zorvek::wide

#endif
