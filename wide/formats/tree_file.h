// Trees read from files: Newick, one tree after the other, or NEXUS with a TREES block.
#ifndef ZORVEK_WIDE_FORMATS_TREE_FILE_H
#define ZORVEK_WIDE_FORMATS_TREE_FILE_H

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "zorvek/tree.h"

namespace zorvek::wide {

// Reads one tree after the other, so that a file of many needs no more memory than its text. In NEXUS
// [Maddison1997] a TRANSLATE table is heeded and other blocks are skipped; comments are skipped
// everywhere. Trees may be rooted anywhere and have polytomies; what is read is unrooted. A label of
// an inner node is a support if it is a number, in percent if one of the tree is above 1, and is left
// aside if they go beyond 100. An edge without a length has Tree::kNoLength. No depth of nesting is
// too great.
class TreeReader {
 public:
  // `text` is the content of the file at `path` and must outlive the reader. The trees must have the
  // taxa `labels`, told apart as Folded tells them; without any, those of the first tree.
  TreeReader(std::string path, std::string_view text, std::vector<std::string> labels);

  // Whether there was another tree; it is then in `tree`, its taxa numbered as the labels. Throws
  // Error at bad syntax, other taxa, or fewer than 4.  Cost: n log n.
  bool Next(Tree& tree);

  const std::vector<std::string>& Labels() const { return labels_; }

 private:
  // The nodes of a tree in the order in which they begin, parents first.
  struct Parsed {
    int parent;
    int taxon;  // -1 for an inner node
    int children;
    double length;
    double support;
  };

  [[noreturn]] void Fail(std::size_t place, const std::string& fault) const;
  void SkipBlanks();
  char Peek();  // the next character that counts, '\0' at the end
  void Expect(char wanted, const std::string& where);
  std::string Label(std::string_view ends);
  std::string Word();  // of a NEXUS command, in lower case
  void SkipCommand();
  bool FindTree();  // goes to where the next tree begins
  void ReadTranslation();

  int Taxon(const std::string& label, std::size_t place);
  void Add(int parent);
  void ReadLength(Parsed& node);
  void ReadInnerLabel(Parsed& node);
  void Parse();
  void CheckTaxa(std::size_t begin);
  void ScaleSupports();
  Tree Build() const;

  std::string path_;
  std::string_view text_;
  std::size_t at_ = 0;
  bool nexus_ = false;
  bool in_trees_ = false;  // inside a TREES block
  std::unordered_map<std::string, std::string> translation_;

  std::vector<std::string> labels_;
  std::unordered_map<std::string, int> taxa_;  // by folded label
  bool labels_open_;                           // the first tree adds its own
  int trees_ = 0;

  std::vector<Parsed> parsed_;
  std::vector<int> seen_;             // the tree in which each taxon was last met
  std::vector<std::string> unknown_;  // labels of this tree that are no taxa
};

}  // namespace zorvek::wide

#endif
