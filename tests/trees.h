// Random matrices and trees of zorvek-wide, its search, and what trees say, straight from the definitions.
#ifndef ZORVEK_TESTS_TREES_H
#define ZORVEK_TESTS_TREES_H

#include <gtest/gtest.h>

#include "tests/data.h"
#include "wide/criterion/neighbourhood.h"
#include "wide/data/topology.h"
#include "zorvek/search.h"

namespace zorvek::test {

// RandomDistances and TreeLikeDistances as matrices.
wide::DistanceMatrix RandomMatrix(int n, std::uint32_t seed);
wide::DistanceMatrix TreeLikeMatrix(int n, double noise, std::uint32_t seed);

wide::SearchSettings Settings(wide::Criterion criterion, long iterations = 0);

wide::SearchResult Find(const wide::DistanceMatrix& distances,
                        const wide::SearchSettings& settings);

// The tree of a neighbourhood, with its edge lengths.
wide::Tree Result(const wide::Neighbourhood& found);

wide::Tree RandomTree(int n, std::mt19937& generator);

// Joined at random.
wide::Topology RandomTopology(const wide::DistanceMatrix& distances, std::mt19937_64& generator);

// The least length of all trees, made by adding the taxa one after the other in all places.
double LeastOfAll(int n, const std::function<double(const wide::Topology&)>& length);

// The side of a split without taxon 0.
std::set<int> WithoutFirst(const std::set<int>& side, int n);

// Length and support of the edges by their splits, the two halves of an edge with the root on it as
// one; a half with another support shows as a support of -9.
std::map<std::set<int>, std::pair<double, double>> Edges(const wide::Tree& tree);

// Between two taxa, without negative edges.
double PathLength(const wide::Tree& tree, int a, int b);

// The tree without the inner edges of the nodes for which `gone` is true: polytomies stand there.
wide::Tree Contracted(const wide::Tree& tree, const std::function<bool(int)>& gone);

}  // namespace zorvek::test

#endif
