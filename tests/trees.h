// Random trees of zorvek-wide, and what trees say, straight from the definitions.
#ifndef ZORVEK_TESTS_TREES_H
#define ZORVEK_TESTS_TREES_H

#include "tests/prelude.h"
#include "wide/criterion/neighbourhood.h"
#include "wide/data/topology.h"
#include "zorvek/distances.h"
#include "zorvek/tree.h"

namespace zorvek::wide::test {

DistanceMatrix RandomMatrix(int n, std::mt19937& generator);

// The tree of a neighbourhood, with its edge lengths.
Tree Result(const Neighbourhood& found);

Tree RandomTree(int n, std::mt19937& generator);

// The least length of all trees, made by adding the taxa one after the other in all places; a tree of
// those before the second argument of `hopeless` gets no more where that is true.
double LeastOfAll(int n, const std::function<double(const Topology&)>& length,
                  const std::function<bool(const Topology&, int)>& hopeless = {});

// The side of a split without taxon 0.
std::set<int> WithoutFirst(const std::set<int>& side, int n);

// The taxa on the far side of each inner edge, from taxon 0; nothing for the other nodes.
std::vector<std::set<int>> Splits(const Tree& view);

// Length and support of the edges by their splits, the two halves of an edge with the root on it as
// one; a half with another support shows as a support of -9.
std::map<std::set<int>, std::pair<double, double>> Edges(const Tree& tree);

// Between two taxa, without negative edges.
double PathLength(const Tree& tree, int a, int b);

// The tree without its inner edges for which `gone` is true, by node: polytomies stand there.
Tree Contracted(const Tree& tree, const std::vector<bool>& gone);

}  // namespace zorvek::wide::test

#endif
