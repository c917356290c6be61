#include "wide/formats/tree_file.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/index.h"
#include "wide/data/ascii.h"
#include "wide/data/labels.h"
#include "wide/formats/numbers.h"
#include "wide/formats/text.h"
#include "zorvek/error.h"
#include "zorvek/io.h"

namespace zorvek::wide {

namespace {

constexpr std::string_view kNewickEnds = "()[]':;,";
constexpr std::string_view kNameEnds = "()[]':;,=";
constexpr int kFewestTaxa = 4;

bool ReadNumber(const std::string& word, double& number) {
  return ReadDecimal(word, number) && std::isfinite(number);
}

}  // namespace

TreeReader::TreeReader(std::string path, std::string_view text, std::vector<std::string> labels)
    : path_(std::move(path)),
      text_(text),
      labels_(std::move(labels)),
      labels_open_(labels_.empty()),
      seen_(labels_.size()) {
  for (const std::string& label : labels_) {
    taxa_.emplace(Folded(CleanLabel(label)), static_cast<int>(taxa_.size()));
  }
  if (text_.substr(0, 3) == "\xEF\xBB\xBF") at_ = 3;  // UTF-8's mark
  const std::size_t begin = at_;
  nexus_ = Peek() == '#' && Word() == "#nexus";
  if (!nexus_) at_ = begin;
}

void TreeReader::Fail(std::size_t place, const std::string& fault) const {
  const Place at = PlaceIn(text_, place);
  throw Error(Fault{path_, at.line, at.column, fault});
}

void TreeReader::SkipBlanks() {
  while (at_ < text_.size()) {
    if (IsBlank(text_[at_])) {
      ++at_;
    } else if (text_[at_] == '[') {
      const std::size_t begin = at_;
      int open = 0;
      do {
        if (text_[at_] == '[') ++open;
        if (text_[at_] == ']') --open;
      } while (++at_ < text_.size() && open > 0);
      if (open > 0) Fail(begin, "a comment without its end; add the ]");
    } else {
      return;
    }
  }
}

char TreeReader::Peek() {
  SkipBlanks();
  return at_ < text_.size() ? text_[at_] : '\0';
}

void TreeReader::Expect(char wanted, const std::string& where) {
  if (Peek() != wanted) Fail(at_, std::string("no ") + wanted + " " + where + "; add it");
  ++at_;
}

// Up to a blank or one of `ends`; or what stands in quotes, of which two are one. It may be empty.
std::string TreeReader::Label(std::string_view ends) {
  if (Peek() != '\'') {
    const std::size_t begin = at_;
    while (at_ < text_.size() && !IsBlank(text_[at_]) && ends.find(text_[at_]) == ends.npos) ++at_;
    return std::string(text_.substr(begin, at_ - begin));
  }
  const std::size_t begin = at_++;
  std::string label;
  for (; at_ < text_.size(); ++at_) {
    if (text_[at_] == '\'' && (at_ + 1 == text_.size() || text_[at_ + 1] != '\'')) {
      ++at_;
      return label;
    }
    if (text_[at_] == '\'') ++at_;
    label += text_[at_];
  }
  Fail(begin, "a quote without its end; add the '");
}

std::string TreeReader::Word() {
  std::string word = Label(kNameEnds);
  for (char& c : word) c = ToLower(c);
  return word;
}

void TreeReader::SkipCommand() {
  while (Peek() != ';') {
    if (at_ >= text_.size()) Fail(at_, "the file ends within a command; add the ;");
    const std::size_t begin = at_;
    Label(kNewickEnds);
    if (at_ == begin) ++at_;
  }
  ++at_;
}

bool TreeReader::FindTree() {
  if (!nexus_) {
    SkipBlanks();
    if (at_ >= text_.size()) return false;
    if (text_[at_] != '(') Fail(at_, "no tree begins here; give trees in Newick or NEXUS");
    return true;
  }
  while (SkipBlanks(), at_ < text_.size()) {
    const std::string command = Word();
    if (command == "begin") {
      in_trees_ = Word() == "trees";
      translation_.clear();
    } else if (in_trees_ && command == "translate") {
      ReadTranslation();
    } else if (in_trees_ && (command == "tree" || command == "utree")) {
      if (Peek() == '*') ++at_;
      Label(kNameEnds);
      Expect('=', "after the name of a tree");
      return true;
    }
    SkipCommand();
  }
  return false;
}

void TreeReader::ReadTranslation() {
  while (Peek() != ';') {
    const std::size_t begin = at_;
    const std::string key = Label(kNewickEnds);
    const std::string label = Label(kNewickEnds);
    if (label.empty()) Fail(begin, "a TRANSLATE entry without a label; write number and label");
    translation_[key] = label;
    if (Peek() == ',') ++at_;
  }
}

int TreeReader::Taxon(const std::string& label, std::size_t place) {
  const auto translated = translation_.find(label);
  const std::string name =
      CleanLabel(translated == translation_.end() ? label : translated->second);
  auto taxon = taxa_.find(Folded(name));
  if (taxon == taxa_.end()) {
    if (!labels_open_) {
      unknown_.push_back(name);
      return -1;
    }
    taxon = taxa_.emplace(Folded(name), static_cast<int>(labels_.size())).first;
    labels_.push_back(name);
    seen_.push_back(0);
  }
  int& seen = seen_[Index(taxon->second)];
  if (seen == trees_) Fail(place, "taxon " + name + " twice in one tree; take one of them out");
  seen = trees_;
  return taxon->second;
}

void TreeReader::Add(int parent) {
  parsed_.push_back({parent, -1, 0, Tree::kNoLength, Tree::kNoSupport});
  if (parent >= 0) ++parsed_[Index(parent)].children;
}

void TreeReader::ReadLength(Parsed& node) {
  if (Peek() != ':') return;
  ++at_;
  SkipBlanks();
  const std::size_t begin = at_;
  const std::string word = Label(kNewickEnds);
  if (!ReadNumber(word, node.length)) {
    Fail(begin, "\"" + word + "\" where the length of an edge should stand; write a number");
  }
}

void TreeReader::ReadInnerLabel(Parsed& node) {
  double support = 0;
  if (ReadNumber(Label(kNewickEnds), support) && support >= 0) node.support = support;
}

// From its first parenthesis to its semicolon.
void TreeReader::Parse() {
  parsed_.clear();
  Add(-1);
  int here = 0;
  for (;;) {
    if (Peek() == '(') {  // a subtree of several begins
      ++at_;
      Add(here);
      here = static_cast<int>(parsed_.size()) - 1;
      continue;
    }
    const std::size_t begin = at_;
    const std::string label = Label(kNewickEnds);
    if (at_ == begin) Fail(at_, "no label where a taxon should stand; add it");
    parsed_[Index(here)].taxon = Taxon(label, begin);
    ReadLength(parsed_[Index(here)]);
    while (Peek() == ')' && here != 0) {
      ++at_;
      here = parsed_[Index(here)].parent;
      ReadInnerLabel(parsed_[Index(here)]);
      ReadLength(parsed_[Index(here)]);
    }
    if (here == 0) return Expect(';', "at the end of a tree");
    Expect(',', "or ) after a subtree");
    here = parsed_[Index(here)].parent;
    Add(here);
    here = static_cast<int>(parsed_.size()) - 1;
  }
}

void TreeReader::CheckTaxa(std::size_t begin) {
  std::vector<std::string> missing;
  for (std::size_t taxon = 0; taxon < labels_.size(); ++taxon) {
    if (seen_[taxon] != trees_) missing.push_back(labels_[taxon]);
  }
  std::string fault;
  if (!missing.empty()) fault = "not in it: " + Listed(missing, ", ") + "; ";
  if (!unknown_.empty()) fault += "only in it: " + Listed(unknown_, ", ") + "; ";
  if (!fault.empty()) {
    Fail(begin, "tree " + std::to_string(trees_) + " has other taxa; " + fault +
                    "give every tree the same " + std::to_string(labels_.size()) + " taxa");
  }
  if (static_cast<int>(labels_.size()) < kFewestTaxa) {
    Fail(begin, "a tree needs at least " + std::to_string(kFewestTaxa) + " taxa");
  }
}

void TreeReader::ScaleSupports() {
  double most = 0;
  for (const Parsed& node : parsed_) most = std::max(most, node.support);
  for (Parsed& node : parsed_) {
    if (most > 1 && node.support >= 0) node.support /= 100;
    if (most > 100) node.support = Tree::kNoSupport;
  }
}

// Without nodes of one child, whose edge becomes part of that below it.
Tree TreeReader::Build() const {
  Tree tree;
  tree.taxa = static_cast<int>(labels_.size());
  tree.nodes.resize(labels_.size());
  std::vector<int> place(parsed_.size(), -1);  // in the tree; of a node left out that of its parent
  std::vector<double> carried(parsed_.size());  // by those left out: their length and that above
  for (std::size_t k = 0; k < parsed_.size(); ++k) {
    const Parsed& node = parsed_[k];
    const int parent = node.parent < 0 ? -1 : place[Index(node.parent)];
    const bool left_out_above = node.parent >= 0 && parsed_[Index(node.parent)].children == 1;
    const double above = left_out_above ? carried[Index(node.parent)] : Tree::kNoLength;
    const double length = std::isnan(above)         ? node.length
                          : std::isnan(node.length) ? above
                                                    : node.length + above;
    if (node.children == 1) {
      place[k] = parent;
      carried[k] = length;
      continue;
    }
    place[k] = node.children == 0 ? node.taxon : static_cast<int>(tree.nodes.size());
    if (node.children > 0) tree.nodes.emplace_back();
    tree.nodes[Index(place[k])] = {parent, {}, length, node.support};
    if (parent >= 0) tree.nodes[Index(parent)].children.push_back(place[k]);
    if (parent < 0) tree.root = place[k];
  }
  tree.nodes[Index(tree.root)].length = 0;
  return Unrooted(tree);
}

bool TreeReader::Next(Tree& tree) {
  if (!FindTree()) return false;
  ++trees_;
  SkipBlanks();
  const std::size_t begin = at_;
  unknown_.clear();
  Parse();
  CheckTaxa(begin);
  labels_open_ = false;
  ScaleSupports();
  tree = Build();
  return true;
}

LabelledTrees ReadTrees(Source source, const std::vector<std::string>& labels) {
  const std::string name = source.Name();
  const std::string text = LineReader(std::move(source)).Rest();
  TreeReader reader(name, text, labels);
  std::vector<Tree> trees;
  for (Tree tree; reader.Next(tree);) trees.push_back(std::move(tree));
  if (trees.empty()) throw Error(Fault{name, 0, 0, "no tree in it; give trees in Newick or NEXUS"});
  return {reader.Labels(), std::move(trees)};
}

}  // namespace zorvek::wide
