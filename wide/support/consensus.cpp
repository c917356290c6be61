#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <unordered_map>

#include "core/index.h"
#include "zorvek/support.h"

namespace zorvek::wide {

namespace {

// A set of taxa, by random numbers of which each taxon has two: those of its taxa, each bit added up.
// Two sets of the same key are not met within the age of the world.
using Key = std::array<std::uint64_t, 2>;

struct KeyHash {
  std::size_t operator()(const Key& key) const { return static_cast<std::size_t>(key[0]); }
};

struct Group {
  int trees = 0;      // that have it
  double length = 0;  // sum over these
  int size = 0;
  const Tree* tree = nullptr;  // the first of them
  int node = -1;               // and where the group is there
};

using Groups = std::unordered_map<Key, Group, KeyHash>;

void CountGroups(const Tree& tree, const std::vector<Key>& taxa, Groups& groups) {
  std::vector<Key> below(tree.nodes.size());
  std::vector<int> sizes(tree.nodes.size());
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    Key& key = below[Index(*node)];
    int& size = sizes[Index(*node)];
    if (tree.IsTaxon(*node)) {
      key = taxa[Index(*node)];
      size = 1;
    }
    for (const int child : tree.At(*node).children) {
      size += sizes[Index(child)];
      for (std::size_t k = 0; k < key.size(); ++k) key[k] ^= below[Index(child)][k];
    }
    if (!tree.IsTaxon(*node) && !tree.IsGroup(*node)) continue;
    Group& group = groups[key];
    ++group.trees;
    group.length += tree.ShownLength(*node);
    if (group.tree == nullptr) group = {1, group.length, size, &tree, *node};
  }
}

// The groups that more than half of the trees have, the smaller first.
std::vector<Group> Majority(const Groups& groups, std::size_t trees) {
  std::vector<Group> majority;
  for (const auto& [key, group] : groups) {
    if (2 * static_cast<std::size_t>(group.trees) > trees) majority.push_back(group);
  }
  std::sort(majority.begin(), majority.end(),
            [](const Group& a, const Group& b) { return a.size < b.size; });
  return majority;
}

std::vector<int> TaxaBelow(const Group& group) {
  std::vector<int> taxa;
  std::vector<int> open{group.node};
  while (!open.empty()) {
    const int node = open.back();
    open.pop_back();
    if (group.tree->IsTaxon(node)) taxa.push_back(node);
    const std::vector<int>& children = group.tree->At(node).children;
    open.insert(open.end(), children.begin(), children.end());
  }
  return taxa;
}

// Grows a tree from its taxa: each group takes the subtrees so far that hold its taxa. To be given the
// smaller groups first.
class Gathering {
 public:
  explicit Gathering(int taxa) {
    tree_.taxa = taxa;
    tree_.nodes.resize(Index(taxa));
    for (int taxon = 0; taxon < taxa; ++taxon) top_.push_back(taxon);
  }

  int Gather(const std::vector<int>& taxa) {
    const int node = static_cast<int>(top_.size());
    tree_.nodes.emplace_back();
    top_.push_back(node);
    for (const int taxon : taxa) {
      const int top = Top(taxon);
      if (top == node) continue;
      tree_.nodes[Index(node)].children.push_back(top);
      top_[Index(top)] = node;
    }
    return node;
  }

  Tree& Grown() { return tree_; }

 private:
  int Top(int node) {
    while (top_[Index(node)] != node) {
      top_[Index(node)] = top_[Index(top_[Index(node)])];  // halves the way for the next
      node = top_[Index(node)];
    }
    return node;
  }

  Tree tree_;
  std::vector<int> top_;  // of each node one on the way to the top of its subtree, there itself
};

}  // namespace

Tree MajorityConsensus(const std::vector<Tree>& trees) {
  const int n = trees[0].taxa;
  std::mt19937_64 generator(1);
  std::vector<Key> taxa(Index(n));
  for (Key& key : taxa) key = {generator(), generator()};
  Groups groups;
  for (const Tree& tree : trees) CountGroups(tree, taxa, groups);

  Gathering gathering(n);
  Tree& tree = gathering.Grown();
  for (const Group& group : Majority(groups, trees.size())) {
    const int node = group.size == 1 ? group.node : gathering.Gather(TaxaBelow(group));
    tree.nodes[Index(node)].length = group.length / group.trees;
    if (group.size == 1) continue;
    tree.nodes[Index(node)].support =
        static_cast<double>(group.trees) / static_cast<double>(trees.size());
  }
  std::vector<int> all(Index(n));
  for (int taxon = 0; taxon < n; ++taxon) all[Index(taxon)] = taxon;
  tree.root = gathering.Gather(all);
  Ladderise(tree);
  return tree;
}

}  // namespace zorvek::wide
