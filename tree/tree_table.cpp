#include "tree/tree_table.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <utility>

#include "driver/run_state.h"
#include "tree/candidate_lists.h"

namespace zorvek {

void Init() {
  const auto taxa_count = static_cast<std::size_t>(n);
  for (TreeTable* tree : {&OPT, &T1, &T2}) *tree = NewRows<double>(taxa_count - 1, kFields);
  EM = NewRows<double>(2 * taxa_count - 2, 2 * taxa_count - 2);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      if (i != j) EM[i][j] = DM1[i][j];
    }
  }
  BuildCL();
}

void Finalize() {
  for (double*** table : {&OPT, &T1, &T2, &EM}) DeleteRows(*table);
}

void FC(int node, int from, TreeTable tree) {
  if (node < n) {
    temp1.push_back(node);
    return;
  }
  const double* row = tree[node - n];
  for (const Field side : {kParent, kLeft, kRight}) {
    if (row[side] != from) FC(Id(row, side), node, tree);
  }
}

void CopyTree(TreeTable from, TreeTable to) {
  for (int row = 0; row < n - 1; ++row) std::copy_n(from[row], static_cast<int>(kFields), to[row]);
}

void FindAdj(TreeTable tree) {
  for (int row = 0; row < n - 1; ++row) {
    for (const Field side : {kLeft, kRight}) {
      const int child = Id(tree[row], side);
      if (child >= n) tree[child - n][kParent] = tree[row][kSelf];
    }
  }
  tree[n - 4][kParent] = 2 * n - 3;
  tree[n - 3][kParent] = 2 * n - 4;
}

void Interchange(TreeTable tree, int node, int child) {
  double* upper = tree[node - n];
  double* lower = tree[child - n];
  double& sibling_slot = upper[kLeft] == child ? upper[kRight] : upper[kLeft];
  const auto adopt = [tree](double id, int parent) {
    if (id >= n) tree[static_cast<int>(id) - n][kParent] = parent;
  };
  adopt(sibling_slot, child);
  adopt(lower[kLeft], node);
  std::swap(sibling_slot, lower[kLeft]);
}

void Reset(double** table, int rows, int columns) {
  if (columns < 1) return;
  for (int row = 0; row < rows; ++row) std::fill_n(table[row], columns, 0.0);
}

void Print(double** table, unsigned rows, unsigned columns) {
  for (unsigned row = 0; row < rows; ++row) {
    for (unsigned column = 0; column < columns; ++column) std::cout << table[row][column] << '\t';
    std::cout << std::endl;
  }
  std::cout << std::endl;
}

bool IsContained(int value, std::vector<int> list) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

}  // namespace zorvek
