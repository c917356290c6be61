#include "wide/newick.h"

#include "wide/labels.h"
#include "wide/numbers.h"

namespace zorvek::wide {

namespace {

void Append(const TreeView& tree, int node, const std::vector<std::string>& labels,
            std::string& text) {
  const TreeView::Node& here = tree.At(node);
  if (tree.IsTaxon(node)) text += Quoted(labels[static_cast<std::size_t>(node)]);
  for (const int child : here.children) {
    text += child == here.children[0] ? "(" : ",";
    Append(tree, child, labels, text);
  }
  if (!here.children.empty()) text += ")";
  if (node == tree.top) return;
  if (here.support >= 0) text += Rounded(100 * here.support, 1);
  text += ":" + Shortest(here.length);
}

}  // namespace

std::string Newick(const TreeView& tree, const std::vector<std::string>& labels) {
  std::string text;
  Append(tree, tree.top, labels, text);
  return text + ";";
}

std::string NexusTrees(const TreeView& tree, const std::vector<std::string>& labels) {
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
