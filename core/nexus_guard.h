// What stands between a program and the NEXUS Class Library (NCL) [Lewis2003], which follows a bad
// file into the end of the process: by its assertions, by its arrays' bounds, or by the exhaustion
// of memory. No input may do that.
//
// A guarded block stops the reading, by an exception that NCL catches and hands to its reader, at
// DIMENSIONS that a file of that size cannot hold, and at DIMENSIONS or FORMAT commands that stand
// after the matrix. Every taxon takes a byte of the file at least, and so does every cell. A failed
// assertion of NCL's becomes such an exception too, wherever this file is linked.
#ifndef ZORVEK_CORE_NEXUS_GUARD_H
#define ZORVEK_CORE_NEXUS_GUARD_H

#include <ncl/ncl.h>

#include <cstddef>
#include <streambuf>
#include <vector>

namespace zorvek {

// The text of a NEXUS file, up to a number of bytes (an endless one ends there), with a blank put into
// each empty comment ("[]" outside quotes and comments), since NCL aborts the process at one that
// stands within parentheses.
class CommentFilter : public std::streambuf {
 public:
  CommentFilter(std::streambuf* source, double bytes);

 protected:
  int_type underflow() override;

 private:
  std::streambuf* source_;
  std::size_t left_;  // bytes that are still read
  std::vector<char> buffer_;
  int depth_ = 0;        // of the comment it is in
  bool quoted_ = false;  // whether it is within single quotes
};

// A TAXA block of a file of so many bytes.
class GuardedTaxa : public NxsTaxaBlock {
 public:
  explicit GuardedTaxa(double bytes) : bytes_(bytes) {}

  void SetNtax(unsigned ntax) override;
  unsigned GetMaxIndex() const override;
  GuardedTaxa* Clone() const override;

 protected:
  void Read(NxsToken& token) override;

 private:
  double bytes_;
};

// A block with a matrix, NxsDataBlock or NxsCharactersBlock, of a file of so many bytes. After it was
// read, each row of the matrix is empty or of GetNChar() cells, and as many rows as DIMENSIONS says
// are not empty.
template <class Block>
class GuardedMatrix : public Block {
 public:
  GuardedMatrix(NxsTaxaBlockAPI* taxa_block, NxsAssumptionsBlockAPI* assumptions, double bytes)
      : Block(taxa_block, assumptions), bytes_(bytes) {}

  unsigned GetMaxIndex() const override;
  GuardedMatrix* Clone() const override;

 protected:
  void Read(NxsToken& token) override;
  void HandleFormat(NxsToken& token) override;
  void HandleMatrix(NxsToken& token) override;

 private:
  bool FitsDimensions() const;

  double bytes_;
};

extern template class GuardedMatrix<NxsDataBlock>;
extern template class GuardedMatrix<NxsCharactersBlock>;

}  // namespace zorvek

#endif
