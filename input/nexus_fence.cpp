// The library is Debian's 2.1, and these are its habits that are answered here.
//  - It sends messages to standard error unless its warning level is set.
//  - Its assumptions block also claims SETS and CODONS blocks.
//  - It allocates what DIMENSIONS announces before it has seen a character, and reports on as many
//    taxa.
//  - It stores a set number by number, and before DIMENSIONS takes any number.
//  - It does not expect commands that change the matrix to stand after it.
//  - A failed assertion ends the process: one of its own kind, or one of the C library's when a
//    comment within parentheses is empty.
#include "input/nexus_fence.h"

#include <sys/stat.h>

#include <algorithm>
#include <new>
#include <string>

// NCL calls this when one of its assertions fails. Its own version prints to standard error and
// exits; this one is found before that of the shared library, and makes the failure an error like
// any other. (Weak, so that the static library can be linked too.)
__attribute__((weak)) void ncl_assertion_failed(const char* expression, const char*, const char*,
                                                long) {
  throw NxsNCLAPIException((std::string("internal assertion failed: ") + expression).c_str());
}

namespace zorvek {

namespace {

// The size of the file in bytes, which limits what it can hold: a taxon takes a byte at least, and
// so does a cell. What is no regular file has no size to go by; of that this much is read.
double SizeLimit(const char* path) {
  constexpr double kUnknownSize = 1 << 28;
  struct stat status {};
  if (stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return kUnknownSize;
  return static_cast<double>(status.st_size);
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kLimitsMemory = false;
#elif defined(__has_feature)  // Clang
constexpr bool kLimitsMemory = !__has_feature(address_sanitizer);
#else
constexpr bool kLimitsMemory = true;
#endif

// The last number that a set of taxa or characters may name.
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
    try {
      NxsDataBlock::Read(token);
    } catch (const NxsException&) {  // NCL empties the block
      throw;
    } catch (...) {
      Reset();
      throw;
    }
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

}  // namespace

CommentFilter::CommentFilter(std::streambuf* source, double bytes)
    : source_(source), left_(static_cast<std::size_t>(bytes)), buffer_(1 << 16) {}

CommentFilter::int_type CommentFilter::underflow() {
  std::size_t size = 0;
  // An empty comment takes three places.
  for (; size + 3 <= buffer_.size() && left_ > 0; --left_) {
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

FencedInput::FencedInput(std::streambuf* source, const char* inputPath)
    : std::istream(nullptr), filter_(source, SizeLimit(inputPath)) {
  rdbuf(&filter_);
  getrlimit(RLIMIT_DATA, &outside_);
  if (!kLimitsMemory) return;
  // NCL takes 4 bytes for a cell and some 100 for a token that it keeps.
  constexpr double kAlways = 1 << 30;
  constexpr double kPerByte = 128;
  rusage used;
  getrusage(RUSAGE_SELF, &used);
  const double inUse = 1024 * static_cast<double>(used.ru_maxrss);
  const double limit = inUse + kAlways + kPerByte * SizeLimit(inputPath);
  rlimit inside = outside_;
  if (limit < static_cast<double>(inside.rlim_cur)) inside.rlim_cur = static_cast<rlim_t>(limit);
  setrlimit(RLIMIT_DATA, &inside);
}

FencedInput::~FencedInput() {
  setrlimit(RLIMIT_DATA, &outside_);
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

unsigned TaxaRead(const NexusBlocks& blocks) {
  const unsigned rows = blocks.data->GetNTaxWithData();
  return rows <= blocks.taxa->GetNTax() ? rows : 0;
}

}  // namespace zorvek
