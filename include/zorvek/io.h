// Reading and writing: alignments, distance matrices and trees.
#ifndef ZORVEK_IO_H
#define ZORVEK_IO_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "zorvek/alignment.h"
#include "zorvek/distances.h"
#include "zorvek/tree.h"

struct gzFile_s;

namespace zorvek::wide {

// Where text comes from: a file, a pipe or standard input, plain or compressed by gzip. It gives its bytes
// once, from the first to the last, so that a pipe serves as well as a file.
class Source {
 public:
  // The file at the path, or standard input for "-". Throws Error if it cannot be opened.
  explicit Source(const std::string& path);

  // A text that is in memory already, named in messages as if it came from the file `name`.
  Source(const std::string& name, std::string text);

  // As messages name it.
  const std::string& Name() const { return name_; }

  // Tells from now on, at each reading, the share of the file that is read, 0..1. Where its size is not
  // known nothing is told.
  void TellProgress(std::function<void(double)> tell);

  // Puts the next bytes to `to`, `most` of them at most, and returns how many; 0 at the end. Throws
  // Error if it cannot be read, or if its compressed content is broken or ends too early.
  std::size_t Read(char* to, std::size_t most);

 private:
  struct Close {
    void operator()(gzFile_s* file) const;
  };

  std::string name_;
  std::unique_ptr<gzFile_s, Close> file_;  // null when the text is in memory
  std::string text_;
  std::size_t at_ = 0;
  std::function<void(double)> tell_;
  double size_ = 0;  // bytes, compressed or not; 0 if not known
};

// --- alignments ---

// The names of the formats, in the order in which they are recognised.
std::vector<std::string> AlignmentFormats();

// Reads the alignment in the format of that name, capital or not, or, if it is empty, in the one that
// the content shows. Throws Error, also if there are no sites.
Alignment ReadAlignment(Source source, const std::string& format = {});

// The alignment of sequences that are in memory already, taken and refused as those of a file are. Messages
// name it `name`, and give the number of a sequence as the line, the place in it as the column.
Alignment MakeAlignment(const std::string& name, const std::vector<std::string>& labels,
                        const std::vector<std::string>& sequences);

// --- distances ---

// Distance matrices as text: the number of taxa, then for each taxon, beginning on a line of its
// own, its label and its distances, over as many lines as it takes.
//
//   square           lower triangle    upper triangle
//   4                4                 4
//   a 0 1 2 3        a                 a 1 2 3
//   b 1 0 4 5        b 1               b 4 5         Triangles may have the diagonal too.
//   c 2 4 0 6        c 2 4             c 6
//   d 3 5 6 0        d 3 5 6           d
//
// A label ends at a blank; or, as PHYLIP has it [Felsenstein1989], it is the first 10 columns, which
// may hold blanks, and the distances may follow without one.

struct LabelledMatrix {
  std::vector<std::string> labels;
  DistanceMatrix distances{0};
};

// Reads a matrix of any of these shapes, holding a line of the text at a time. NaN, NA, -, ? and -1
// stand for a missing distance. The two numbers of a pair may differ by rounding; their mean is
// taken. Throws Error: at once where the shape is at fault, else with all numbers that are negative
// or above 1e300, distances of a taxon to itself, and pairs whose two numbers are not the same.
// Cost: 8 n^2 bytes, 12 n^2 for a lower triangle.
LabelledMatrix ReadMatrix(Source source);

// The square matrix in that format, the label padded to 10 columns, every number with the digits
// that read back as the same double.
std::string FormatSquareMatrix(const std::vector<std::string>& labels,
                               const DistanceMatrix& distances);

// The same in pieces, one for each row, so that the whole text is never in memory.
void FormatSquareMatrix(const std::vector<std::string>& labels, const DistanceMatrix& distances,
                        const std::function<void(const std::string&)>& put);

// --- trees ---

struct LabelledTrees {
  std::vector<std::string> labels;
  std::vector<Tree> trees;
};

// All trees of a text in Newick's format or NEXUS, without their roots. Their taxa must be those of `labels`;
// without any, those of the first tree. Throws Error, also if there is no tree.
LabelledTrees ReadTrees(Source source, const std::vector<std::string>& labels = {});

// The tree in Newick's format, with its semicolon: labels quoted where they must be, edge lengths
// with the digits that read back as the same double, the supports of inner edges in front of them,
// in percent. A support has a decimal ("93.0"), because a whole number in a NEXUS tree is the
// number of a taxon.
std::string Newick(const Tree& tree, const std::vector<std::string>& labels);

// A NEXUS file with one TREES block [Maddison1997] that holds the trees, each marked as rooted or
// unrooted. A table translates numbers into labels, so that a label may be a number too.
std::string NexusTrees(const std::vector<Tree>& trees, const std::vector<std::string>& labels);

}  // namespace zorvek::wide

#endif
