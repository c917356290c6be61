// tree_lengths MATRIX TREE...: the minimum-evolution length (sum of the positive least-squares edge
// lengths) of trees that other programs made, for a PHYLIP square matrix. Each TREE is a file with one
// unrooted binary tree in Newick notation; its own edge lengths are passed over.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "wide/criterion/ols_neighbourhood.h"
#include "wide/formats/matrix_file.h"

namespace {

using namespace zorvek::wide;

std::string Content(const char* path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Reads a tree from the inside out: the nodes get their ids as their parentheses close.
class NewickLinks {
 public:
  NewickLinks(std::string text, const std::map<std::string, int>& taxa)
      : links_(static_cast<int>(taxa.size())), text_(std::move(text)), taxa_(taxa) {
    next_ = links_.taxa;
    const int last = Subtree();
    for (const int near : links_.At(last)) {
      if (!links_.IsLeaf(near)) links_.root = {last, near};
    }
  }
  const Topology& Result() const { return links_; }

 private:
  int Subtree() {
    if (text_[at_] != '(') return taxa_.at(Word());
    std::vector<int> children;
    do {
      ++at_;
      children.push_back(Subtree());
    } while (text_[at_] == ',');
    ++at_;
    Word();
    for (std::size_t i = 0; i < children.size(); ++i) {
      links_.adjacent[static_cast<std::size_t>(next_ - links_.taxa)][i] = children[i];
      links_.Replace(children[i], -1, next_);
    }
    return next_++;
  }

  // The label up to here, past its edge length.
  std::string Word() {
    const std::size_t end = text_.find_first_of(",();", at_);
    const std::string word = text_.substr(at_, end - at_);
    at_ = end;
    return word.substr(0, word.find(':'));
  }

  Topology links_;
  std::string text_;
  const std::map<std::string, int>& taxa_;
  std::size_t at_ = 0;
  int next_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const LabelledMatrix matrix = ParseSquareMatrix(argv[1], Content(argv[1]));
  std::map<std::string, int> taxa;
  for (const std::string& label : matrix.labels) taxa.emplace(label, taxa.size());
  for (int tree = 2; tree < argc; ++tree) {
    const NewickLinks links(Content(argv[tree]), taxa);
    OlsNeighbourhood regrafter(links.Result(), matrix.distances.Rows());
    std::printf("%.10f\n", regrafter.Length());
  }
}
