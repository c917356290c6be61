// Reading the NEXUS file [Maddison1997] through the NEXUS Class Library (NCL) [Lewis2003].
#ifndef ZORVEK_INPUT_NEXUS_READING_H
#define ZORVEK_INPUT_NEXUS_READING_H

#include <ncl/ncl.h>

#include <fstream>
#include <istream>
#include <ostream>
#include <string>

#include "input/nexus_fence.h"

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

// Reads the file. An exception that leaves NCL counts as its having stopped reading: the blocks
// hold what they hold, and a block that failed is empty. Writes the reading log (the input path
// with ".log" appended): what MyReader and MyToken tell, then NCL's reports of the blocks taxa,
// trees, assumptions and data. The log is closed and complete on return, whatever stops the run
// later.
NexusBlocks ReadNexus(const char* inputPath);

}  // namespace zorvek

#endif
