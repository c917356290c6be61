#include "wide/drawing/page.h"

#include <charconv>
#include <cstddef>

#include "core/index.h"
#include "wide/drawing/layout.h"
#include "wide/drawing/text.h"

namespace zorvek::wide {

namespace {

constexpr int kDigits = 7;  // of a place: more than any screen shows

std::string Number(double value) {
  char text[32];
  const auto end =
      std::to_chars(text, text + sizeof text, value, std::chars_format::general, kDigits).ptr;
  return std::string(text, end);
}

// As JSON that may stand in HTML.
std::string String(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : Drawable(text)) {
    if (c == '<') {
      quoted += "\\u003c";
    } else {
      if (c == '"' || c == '\\') quoted += '\\';
      quoted += c;
    }
  }
  return quoted + "\"";
}

// ,"name":[...], with an entry for each node in preorder.
template <typename Entry>
std::string List(const Tree& tree, const char* name, Entry entry) {
  std::string text = std::string(",\n\"") + name + "\":[";
  for (std::size_t k = 0; k < tree.preorder.size(); ++k) {
    text += (k == 0 ? "" : ",") + entry(tree.preorder[k]);
  }
  return text + "]";
}

}  // namespace

std::string DrawPage(const Tree& unrooted, const std::vector<std::string>& labels,
                     const DrawingSettings& settings) {
  const Tree tree = RootedForDrawing(unrooted);
  const std::vector<Point> phylogram = PhylogramLayout(tree);
  const std::vector<Point> places = UnrootedLayout(tree);
  const std::vector<double> supports = DrawnSupports(tree);
  std::vector<std::size_t> rank(tree.nodes.size());
  for (std::size_t k = 0; k < rank.size(); ++k) rank[Index(tree.preorder[k])] = k;
  const std::string text =
      std::string("{\"layout\":") +
      (settings.layout == Layout::kUnrooted ? "\"unrooted\"" : "\"phylogram\"") +
      ",\n\"unit\":" + String(settings.unit) +
      List(tree, "parent",
           [&](int node) {
             return node == tree.root ? "-1" : std::to_string(rank[Index(tree.At(node).parent)]);
           }) +
      List(tree, "label",
           [&](int node) { return tree.IsTaxon(node) ? String(labels[Index(node)]) : "null"; }) +
      List(tree, "depth", [&](int node) { return Number(phylogram[Index(node)].x); }) +
      List(tree, "x", [&](int node) { return Number(places[Index(node)].x); }) +
      List(tree, "y", [&](int node) { return Number(places[Index(node)].y); }) +
      List(tree, "support",
           [&](int node) {
             const double support = supports[Index(node)];
             return support == Tree::kNoSupport ? "null" : Number(support);
           }) +
      "}";
  std::string page = kPageHtml;
  const std::string place = "TREE";
  return page.replace(page.find(place), place.size(), text);
}

}  // namespace zorvek::wide
