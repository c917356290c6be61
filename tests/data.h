// Data and state for the tests: distance matrices, trees, and the globals that go with them.
#ifndef ZORVEK_TESTS_DATA_H
#define ZORVEK_TESTS_DATA_H

#include "tests/prelude.h"
#include "tree/tree_table.h"
#include "zorvek/distances.h"

namespace zorvek::test {

// Sets n, DM1, CL (unsorted), the clock and a seeded random source, then calls Init and DJT;
// releases all of it, and restores the run's initial values, when it goes out of scope.
class Workspace {
 public:
  Workspace(int taxa_count, const std::function<double(int, int)>& distance,
            std::uint32_t seed = 1);
  ~Workspace();
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

 private:
  wide::DistanceMatrix distances_;
  std::vector<double*> distance_rows_;
  std::vector<std::vector<int>> candidates_;
  std::vector<int*> candidate_rows_;
};

// A tree table of its own, that can be copied.
class Tree {
 public:
  explicit Tree(TreeTable tree);
  Tree(const Tree& other) : Tree(other.data()) {}
  Tree& operator=(const Tree& other) {
    cells_ = other.cells_;
    return *this;
  }
  TreeTable data() const { return rows_.data(); }
  operator TreeTable() const { return data(); }
  bool operator==(const Tree& other) const { return cells_ == other.cells_; }

 private:
  std::vector<double> cells_;
  mutable std::vector<double*> rows_;
};

// Distances drawn anew for every pair i < j, uniform over the whole numbers 1..2^20 times 2^-20, so
// that plain sums of them are exact.
std::function<double(int, int)> DyadicDistances(std::uint32_t seed);

// The same with all bits of a double, in 0.01..1.
std::function<double(int, int)> RandomDistances(std::uint32_t seed);

// Distances along a tree that grows at random taxa, with random edge lengths, times a little noise.
std::function<double(int, int)> TreeLikeDistances(int taxa_count, double noise, std::uint32_t seed);

// What the call throws as an Error of zorvek-wide; empty if nothing.
std::string FaultOf(const std::function<void()>& call);

// All pairs of taxa i < j, row by row.
std::vector<std::pair<int, int>> Pairs(int taxa_count);

// The same distances as a matrix of the wide search.
wide::DistanceMatrix Matrix(int taxa_count, const std::function<double(int, int)>& distance);

// Gives the tree a random topology.
void Shuffle(TreeTable tree, std::mt19937& generator);

// Makes an interchange across a random candidate edge.
void RandomInterchange(TreeTable tree, std::mt19937& generator);

// The ids of all rows, for comparing topologies field by field.
std::vector<double> Ids(TreeTable tree);

// All lengths of the table, row by row.
std::vector<double> Lengths(TreeTable tree);

// Empty if the table is well formed, else what is wrong with it.
std::string CheckTree(TreeTable tree);

}  // namespace zorvek::test

#endif
