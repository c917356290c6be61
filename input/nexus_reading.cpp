// The reading sequence, and what stands between it and NCL: the classic 2.0 interface of
// Debian's 2.1 library, with the habits that this file answers to.
//  - It sends messages to standard error unless its warning level is set.
//  - Its assumptions block also claims SETS and CODONS blocks.
//  - It allocates what DIMENSIONS announces before it has seen a character, and reports on as many
//    taxa.
//  - The report of a block that failed may throw.
//  - A failed assertion ends the process: one of its own kind, or one of the C library's when a
//    comment within parentheses is empty.
#include "input/nexus_reading.h"

#include <sys/stat.h>

#include <algorithm>
#include <iostream>
#include <new>
#include <string>

// NCL calls this when one of its assertions fails. Its own version prints to standard error and
// exits; this one is found before it, and makes the failure an error like any other.
void ncl_assertion_failed(const char* expression, const char*, const char*, long) {
  throw NxsNCLAPIException((std::string("internal assertion failed: ") + expression).c_str());
}

namespace zorvek {

namespace {

// What a file of that size can hold: a taxon takes a byte at least, and so does a cell. The size of
// what is no regular file is not known.
double SizeLimit(const char* path) {
  constexpr double kUnknownSize = 1 << 30;
  struct stat status {};
  if (stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return kUnknownSize;
  return static_cast<double>(status.st_size);
}

// The last number that a set of taxa or characters may name. Sets are stored number by number, and
// before DIMENSIONS NCL would take any number.
unsigned Bounded(unsigned maxIndex, double limit) {
  return maxIndex <= limit ? maxIndex : static_cast<unsigned>(limit);
}

class AssumptionsBlock : public NxsAssumptionsBlock {
 public:
  using NxsAssumptionsBlock::NxsAssumptionsBlock;
  bool CanReadBlockType(const NxsToken& token) override { return token.Equals("ASSUMPTIONS"); }
};

class TaxaBlock : public NxsTaxaBlock {
 public:
  explicit TaxaBlock(double sizeLimit) : limit(sizeLimit) {}

  void SetNtax(unsigned ntax) override {
    Check(ntax);
    NxsTaxaBlock::SetNtax(ntax);
  }

  unsigned GetMaxIndex() const override { return Bounded(NxsTaxaBlock::GetMaxIndex(), limit); }

 protected:
  void Read(NxsToken& token) override {
    try {
      NxsTaxaBlock::Read(token);
    } catch (const std::bad_alloc&) {  // thrown at the command, before there is anything to check
      Check(dimNTax);
      throw;
    }
    Check(dimNTax);
  }

 private:
  void Check(unsigned ntax) const {
    if (ntax <= limit) return;
    throw NxsException("NTAX is " + std::to_string(ntax) + ", more than the file can hold");
  }

  double limit;
};

class DataBlock : public NxsDataBlock {
 public:
  DataBlock(NxsTaxaBlock* taxaBlock, NxsAssumptionsBlock* assumptions, double sizeLimit)
      : NxsDataBlock(taxaBlock, assumptions), limit(sizeLimit) {}

  unsigned GetMaxIndex() const override { return Bounded(NxsDataBlock::GetMaxIndex(), limit); }

 protected:
  void Read(NxsToken& token) override {
    NxsDataBlock::Read(token);
    for (unsigned taxon = 0; taxon < nTaxWithData; ++taxon) {
      if (!RowFits(taxon)) throw NxsException("matrix does not fit DIMENSIONS", token);
    }
  }

  void HandleFormat(NxsToken& token) override {
    if (!discreteMatrix.empty()) throw NxsException("FORMAT command after the matrix", token);
    NxsDataBlock::HandleFormat(token);
  }

  void HandleMatrix(NxsToken& token) override {
    if (static_cast<double>(nTaxWithData) * nChar > std::max(limit, kAlwaysHeld)) {
      throw NxsException("DIMENSIONS announces " + std::to_string(nTaxWithData) + " taxa x " +
                             std::to_string(nChar) + " characters, more than the file can hold",
                         token);
    }
    NxsDataBlock::HandleMatrix(token);
  }

 private:
  // Cells that are let pass in a file of any size, so that NCL can say where a matrix falls short.
  static constexpr double kAlwaysHeld = 1 << 24;

  bool RowFits(unsigned taxon) const {
    if (GetDataType() == continuous) return TaxonIndHasData(taxon);
    return taxon < discreteMatrix.size() && discreteMatrix[taxon].size() == nChar;
  }

  double limit;
};

void WriteReport(NxsBlock& block, std::ostream& log) {
  try {
    block.Report(log);
  } catch (...) {  // a block that failed; what it had to say stays
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

CommentFilter::CommentFilter(std::streambuf* source) : source_(source), buffer_(1 << 16) {}

CommentFilter::int_type CommentFilter::underflow() {
  std::size_t size = 0;
  // An empty comment takes three places.
  while (size + 3 <= buffer_.size()) {
    const int_type next = source_->sbumpc();
    if (next == traits_type::eof()) break;
    const char c = traits_type::to_char_type(next);
    buffer_[size++] = c;
    if (depth_ > 0) {
      depth_ += c == '[' ? 1 : c == ']' ? -1 : 0;
    } else if (c == '\'') {
      quoted_ = !quoted_;
    } else if (c == '[' && !quoted_) {
      depth_ = 1;
      if (source_->sgetc() == ']') buffer_[size++] = ' ';
    }
  }
  setg(buffer_.data(), buffer_.data(), buffer_.data() + size);
  return size == 0 ? traits_type::eof() : traits_type::to_int_type(buffer_[0]);
}

MyToken::MyToken(std::istream& input, std::ostream& echo) : NxsToken(input), echoStream(echo) {}

void MyToken::OutputComment(const NxsString& msg) {
  std::cout << msg << std::endl;
  echoStream << msg << std::endl;
}

NexusBlocks::NexusBlocks(const char* inputPath) {
  const double limit = SizeLimit(inputPath);
  taxa = std::make_unique<TaxaBlock>(limit);
  trees = std::make_unique<NxsTreesBlock>(taxa.get());
  assumptions = std::make_unique<AssumptionsBlock>(taxa.get());
  data = std::make_unique<DataBlock>(taxa.get(), assumptions.get(), limit);
}

void NexusBlocks::Register(NxsReader& reader) {
  reader.SetWarningOutputLevel(NxsReader::SUPPRESS_WARNINGS_LEVEL);
  reader.Add(taxa.get());
  reader.Add(assumptions.get());
  reader.Add(data.get());
  reader.Add(trees.get());
}

NexusBlocks ReadNexus(const char* inputPath) {
  NexusBlocks blocks(inputPath);
  MyReader reader(inputPath, (std::string(inputPath) + ".log").c_str());
  blocks.Register(reader);
  try {
    CommentFilter filter(reader.inFile.rdbuf());
    std::istream input(&filter);
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

unsigned TaxaRead(const NexusBlocks& blocks) {
  const unsigned rows = blocks.data->GetNTaxWithData();
  return rows <= blocks.taxa->GetNTax() ? rows : 0;
}

}  // namespace zorvek
