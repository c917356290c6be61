// Two habits of NCL's that concern a run only are answered here.
//  - It sends messages to standard error unless its warning level is set.
//  - Its assumptions block also claims SETS and CODONS blocks.
#include "input/nexus_fence.h"

#include <sys/stat.h>

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

class AssumptionsBlock : public NxsAssumptionsBlock {
 public:
  using NxsAssumptionsBlock::NxsAssumptionsBlock;
  bool CanReadBlockType(const NxsToken& token) override { return token.Equals("ASSUMPTIONS"); }
};

}  // namespace

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
  taxa = std::make_unique<GuardedTaxa>(limit);
  trees = std::make_unique<NxsTreesBlock>(taxa.get());
  assumptions = std::make_unique<AssumptionsBlock>(taxa.get());
  data = std::make_unique<GuardedMatrix<NxsDataBlock>>(taxa.get(), assumptions.get(), limit);
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
