// The reading sequence: what it tells, and in which order the blocks are reported.
#include "input/nexus_reading.h"

#include <iostream>

namespace zorvek {

namespace {

// NCL may throw in its report of a block that failed; what it had to say before stays.
void WriteReport(NxsBlock& block, std::ostream& log) {
  try {
    block.Report(log);
  } catch (...) {
  }
}

}  // namespace

MyReader::MyReader(const char* inputPath, const char* logPath)
    : inFile(inputPath, std::ios::in | std::ios::binary),
      logFile(logPath, std::ios::out | std::ios::trunc) {}

MyReader::~MyReader() {
  inFile.close();
  logFile.close();
}

bool MyReader::EnteringBlock(NxsString blockName) {
  Tell("Reading \"" + blockName + "\" block...");
  return true;
}

void MyReader::OutputComment(const NxsString& msg) {
  logFile << msg;
}

void MyReader::SkippingBlock(NxsString blockName) {
  Tell("Skipping unknown block (" + blockName + ")...");
}

void MyReader::Tell(const std::string& line) {
  std::cout << line << std::endl;
  logFile << line << std::endl;
}

MyToken::MyToken(std::istream& input, std::ostream& echo) : NxsToken(input), echoStream(echo) {}

void MyToken::OutputComment(const NxsString& msg) {
  std::cout << msg << std::endl;
  echoStream << msg << std::endl;
}

NexusBlocks ReadNexus(const char* inputPath) {
  NexusBlocks blocks(inputPath);
  MyReader reader(inputPath, (std::string(inputPath) + ".log").c_str());
  blocks.Register(reader);
  try {
    FencedInput input(reader.inFile.rdbuf(), inputPath);
    MyToken token(input, reader.logFile);
    reader.Execute(token);
  } catch (...) {  // the library has stopped reading
  }
  WriteReport(*blocks.taxa, reader.logFile);
  WriteReport(*blocks.trees, reader.logFile);
  WriteReport(*blocks.assumptions, reader.logFile);
  WriteReport(*blocks.data, reader.logFile);
  return blocks;
}

}  // namespace zorvek
