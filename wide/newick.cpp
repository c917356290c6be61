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
  if (here.support >= 0) text += Percent(here.support);
  text += ":" + Shortest(here.length);
}

}  // namespace

std::string Percent(double support) {
  return Rounded(100 * support, 0);
}

std::string Newick(const TreeView& tree, const std::vector<std::string>& labels) {
  std::string text;
  Append(tree, tree.top, labels, text);
  return text + ";";
}

std::string NexusTrees(const std::string& newick) {
  return "#NEXUS\n\nBEGIN TREES;\n  TREE zorvek_wide = [&U] " + newick + "\nEND;\n";
}

}  // namespace zorvek::wide
