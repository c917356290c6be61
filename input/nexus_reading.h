// Reading the NEXUS file [Maddison1997] through the NEXUS Class Library (NCL) [Lewis2003].
#ifndef ZORVEK_INPUT_NEXUS_READING_H
#define ZORVEK_INPUT_NEXUS_READING_H

#include <ncl/ncl.h>

#include <fstream>
#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace zorvek {

// The reader of a run: tells on standard output and in the reading log which blocks it enters and
// which it skips. Errors in the file are left to NCL, which stops reading and says nothing.
class MyReader : public NxsReader {
 public:
  // Opens the input and, truncated, the reading log. A file that cannot be opened leaves its stream
  // in the failed state.
  MyReader(const char* inputPath, const char* logPath);

  // Closes both files.
  ~MyReader() override;

  void ExecuteStarting() override {}
  void ExecuteStopping() override {}
  bool EnteringBlock(NxsString blockName) override;
  void OutputComment(const NxsString& msg) override;
  void SkippingDisabledBlock(NxsString) override {}
  void SkippingBlock(NxsString blockName) override;

  std::ifstream inFile;
  std::ofstream logFile;

 private:
  void Tell(const std::string& line);
};

// The token of a run: shows the output comments ([! ...]) of the file.
class MyToken : public NxsToken {
 public:
  MyToken(std::istream& input, std::ostream& echo);
  void OutputComment(const NxsString& msg) override;

 private:
  std::ostream& echoStream;
};

// The text of a NEXUS file with a blank put into each empty comment ("[]" outside quotes and
// comments), since NCL aborts the process at one that stands within parentheses.
class CommentFilter : public std::streambuf {
 public:
  explicit CommentFilter(std::streambuf* source);

 protected:
  int_type underflow() override;

 private:
  std::streambuf* source_;
  std::vector<char> buffer_;
  int depth_ = 0;        // of the comment it is in
  bool quoted_ = false;  // whether it is within single quotes
};

// The blocks that are read: TAXA, ASSUMPTIONS, DATA and TREES, and no block of another name. They
// stop the reading (by an exception that NCL catches and reports) at what NCL itself would follow
// into the exhaustion of memory or beyond its arrays: DIMENSIONS that the file cannot hold, and
// DIMENSIONS or FORMAT commands that stand after the matrix.
struct NexusBlocks {
  // For the file at `inputPath`, whose size sets the limits.
  explicit NexusBlocks(const char* inputPath);

  // Adds the blocks to the reader, and keeps NCL's messages away from standard error.
  void Register(NxsReader& reader);

  // Released in reverse: the others refer to the taxa.
  std::unique_ptr<NxsTaxaBlock> taxa;
  std::unique_ptr<NxsAssumptionsBlock> assumptions;
  std::unique_ptr<NxsTreesBlock> trees;
  std::unique_ptr<NxsDataBlock> data;
};

// Reads the file. An exception that leaves NCL counts as its having stopped reading: the blocks
// hold what they hold, and a block that failed is empty. Writes the reading log (the input path
// with ".log" appended): what MyReader and MyToken tell, then NCL's reports of the blocks taxa,
// trees, assumptions and data. The log is closed and complete on return, whatever stops the run
// later.
NexusBlocks ReadNexus(const char* inputPath);

// The number of taxa that were read: rows of the matrix, each with a label. 0 without a DATA block,
// or after a failure in it.
unsigned TaxaRead(const NexusBlocks& blocks);

}  // namespace zorvek

#endif
