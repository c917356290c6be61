#include "wide/formats/newick.h"

#include "wide/data/labels.h"
#include "wide/formats/numbers.h"

namespace zorvek::wide {

namespace {

void Append(const Tree& tree, int node, const std::vector<std::string>& labels, std::string& text) {
  const Tree::Node& here = tree.At(node);
  if (tree.IsTaxon(node)) text += Quoted(labels[static_cast<std::size_t>(node)]);
  for (const int child : here.children) {
    text += child == here.children[0] ? "(" : ",";
    Append(tree, child, labels, text);
  }
  if (!here.children.empty()) text += ")";
  if (node == tree.root) return;
  if (here.support >= 0) text += Rounded(100 * here.support, 1);
  text += ":" + Shortest(tree.ShownLength(node));
}

}  // namespace

std::string Newick(const Tree& tree, const std::vector<std::string>& labels) {
  std::string text;
  Append(tree, tree.root, labels, text);
  return text + ";";
}

std::string NexusTrees(const Tree& tree, const std::vector<std::string>& labels) {
  std::vector<std::string> numbers;
  std::string table;
  for (const std::string& label : labels) {
    numbers.push_back(std::to_string(numbers.size() + 1));
    table += (table.empty() ? "    " : ",\n    ") + numbers.back() + " " + Quoted(label);
  }
  return "#NEXUS\n\nBEGIN TREES;\n  TRANSLATE\n" + table + "\n  ;\n  TREE zorvek_wide = [&U] " +
         Newick(tree, numbers) + "\nEND;\n";
}

}  // namespace zorvek::wide
