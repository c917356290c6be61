#include <cmath>
#include <utility>

#include "core/index.h"
#include "wide/data/labels.h"
#include "wide/formats/numbers.h"
#include "zorvek/io.h"

namespace zorvek::wide {

namespace {

std::string AtNode(const Tree& tree, int node, const std::vector<std::string>& names) {
  std::string text = tree.IsTaxon(node) ? names[Index(node)] : "";
  if (node == tree.root) return text;
  const Tree::Node& here = tree.At(node);
  if (here.support >= 0) text += Rounded(100 * here.support, 1);
  if (!std::isnan(here.length)) text += ":" + Shortest(tree.ShownLength(node));
  return text;
}

// The tree with names as they are to be written.
std::string Written(const Tree& tree, const std::vector<std::string>& names) {
  std::string text;
  std::vector<std::pair<int, std::size_t>> open{{tree.root, 0}};  // nodes, and their children done
  while (!open.empty()) {
    auto& [node, done] = open.back();
    const std::vector<int>& children = tree.At(node).children;
    if (done < children.size()) {
      text += done == 0 ? "(" : ",";
      open.emplace_back(children[done++], 0);
      continue;
    }
    if (!children.empty()) text += ")";
    text += AtNode(tree, node, names);
    open.pop_back();
  }
  return text + ";";
}

}  // namespace

std::string Newick(const Tree& tree, const std::vector<std::string>& labels) {
  std::vector<std::string> names;
  for (const std::string& label : labels) names.push_back(QuotedForNewick(label));
  return Written(tree, names);
}

std::string NexusTrees(const std::vector<Tree>& trees, const std::vector<std::string>& labels) {
  std::vector<std::string> numbers;
  std::string text = "#NEXUS\n\nBEGIN TREES;\n  TRANSLATE\n";
  for (const std::string& label : labels) {
    text += numbers.empty() ? "    " : ",\n    ";
    numbers.push_back(std::to_string(numbers.size() + 1));
    text += numbers.back() + " " + QuotedForNexus(label);
  }
  text += "\n  ;\n";
  for (std::size_t k = 0; k < trees.size(); ++k) {
    text += "  TREE zorvek_wide" + (trees.size() > 1 ? "_" + std::to_string(k + 1) : "") +
            (trees[k].IsRooted() ? " = [&R] " : " = [&U] ") + Written(trees[k], numbers) + "\n";
  }
  return text + "END;\n";
}

}  // namespace zorvek::wide
