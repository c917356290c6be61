// The one matrix of nucleotides in the DATA and CHARACTERS blocks of a NEXUS file [Maddison1997], read
// by the NEXUS Class Library [Lewis2003], which holds the text.
#include <ncl/nxsmultiformat.h>

#include <algorithm>
#include <cctype>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/nexus_guard.h"
#include "wide/data/labels.h"
#include "wide/formats/alignment_formats.h"
#include "wide/formats/sequence_builder.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

constexpr int kBlocks =
    PublicNexusReader::NEXUS_TAXA_BLOCK_BIT | PublicNexusReader::NEXUS_CHARACTERS_BLOCK_BIT;
const char kFixNexus[] = "; fix it, and put single quotes around labels that hold punctuation";

std::string OneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

// What stands in the message after `before`, up to the next quote.
std::string InMessage(const std::string& message, const std::string& before) {
  const std::size_t found = message.find(before);
  if (found == message.npos) return {};
  const std::size_t begin = found + before.size();
  return message.substr(begin, message.find('"', begin) - begin);
}

std::string_view LineOf(std::string_view text, long number) {
  for (; number > 1 && !text.empty(); --number) {
    text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
  }
  return Trimmed(text.substr(0, text.find('\n')));
}

// What to do about a fault that the library found. A symbol that it does not know is the end of a
// label without quotes, protein, or a gap that was not declared.
std::string Remedy(const NxsException& fault, const std::string& text) {
  const std::string symbol = InMessage(fault.msg, "Invalid state specified \"");
  if (symbol.size() != 1) return kFixNexus;
  if (kAminoAcidsOnly.find(symbol) != kAminoAcidsOnly.npos) {
    return "; fix it, or, if the sequences are protein, give those of the nucleotides";
  }
  if (StatesOf(symbol[0]) == kT)
    return "; write datatype=nucleotide, and one of T and U in the whole matrix";
  const std::string label = InMessage(fault.msg, "(name \"");
  const std::string_view line = LineOf(text, fault.line);
  const bool in_label =
      line.substr(0, label.size()) == label && line.substr(label.size(), 1) == symbol;
  if (in_label || std::ispunct(static_cast<unsigned char>(symbol[0])) == 0) return kFixNexus;
  return "; if it is the gap, add gap=" + symbol + " to the FORMAT command";
}

// Makes the taxa that a DATA block brings along, and releases those that the library forgets when
// the block fails.
class TaxaFactory : public NxsTaxaBlockFactory {
 public:
  explicit TaxaFactory(double bytes) : bytes_(bytes) {}
  ~TaxaFactory() override {
    while (!alive_.empty()) delete *alive_.begin();
  }
  NxsTaxaBlock* GetBlockReaderForID(const std::string&, NxsReader*, NxsToken*) override {
    return new Taxa(bytes_, alive_);
  }

 private:
  class Taxa : public GuardedTaxa {
   public:
    Taxa(double bytes, std::set<Taxa*>& alive) : GuardedTaxa(bytes), alive_(alive) {
      alive_.insert(this);
    }
    ~Taxa() override { alive_.erase(this); }

   private:
    std::set<Taxa*>& alive_;
  };

  const double bytes_;
  std::set<Taxa*> alive_;
};

// Has the library read the text, with guards in front of all blocks; it keeps what it reads while
// this object lives.
class LibraryReader : private MultiFormatReader {
 public:
  explicit LibraryReader(const std::string& text)
      : LibraryReader(static_cast<double>(text.size())) {
    source_.str(text);
  }
  ~LibraryReader() override { DeleteBlocksFromFactories(); }

  void Read(const std::string& file, const std::string& text) {
    CommentFilter filter(&source_, bytes_);
    std::istream stream(&filter);
    try {
      ReadStream(stream, NEXUS_FORMAT, file.c_str());
    } catch (const NxsException& fault) {
      throw Error(Fault{file, fault.line, fault.col, OneLine(fault.msg) + Remedy(fault, text)});
    } catch (const std::bad_alloc&) {
      throw Error(Fault{file, 0, 0, "asks for more memory than there is; fix NTAX and NCHAR"});
    } catch (const std::exception& fault) {
      throw Error(Fault{file, 0, 0, OneLine(fault.what()) + kFixNexus});
    }
  }

  // All matrices that were read.
  std::vector<NxsCharactersBlock*> Matrices() const {
    std::vector<NxsCharactersBlock*> found;
    for (unsigned t = 0; t < GetNumTaxaBlocks(); ++t) {
      const NxsTaxaBlock* taxa = GetTaxaBlock(t);
      for (unsigned b = 0; b < GetNumCharactersBlocks(taxa); ++b) {
        found.push_back(GetCharactersBlock(taxa, b));
      }
    }
    return found;
  }

 private:
  explicit LibraryReader(double bytes)
      : MultiFormatReader(kBlocks, IGNORE_WARNINGS),
        bytes_(bytes),
        taxa_(bytes),
        taxa_factory_(bytes),
        characters_(nullptr, nullptr, bytes),
        data_(nullptr, nullptr, bytes) {
    SetWarningOutputLevel(SUPPRESS_WARNINGS_LEVEL);
    static_cast<NxsTaxaBlock&>(taxa_) = *taxaBlockTemplate;
    static_cast<NxsCharactersBlock&>(characters_) = *charactersBlockTemplate;
    static_cast<NxsDataBlock&>(data_) = *dataBlockTemplate;
    taxaBlockFactory = &taxa_factory_;
    cloneFactory.AddPrototype(&taxa_, "TAXA");
    cloneFactory.AddPrototype(&characters_, "CHARACTERS");
    cloneFactory.AddPrototype(&data_, "DATA");
  }

  const double bytes_;
  std::stringbuf source_;
  // What the library clones for each block that it meets.
  GuardedTaxa taxa_;
  TaxaFactory taxa_factory_;
  GuardedMatrix<NxsCharactersBlock> characters_;
  GuardedMatrix<NxsDataBlock> data_;
};

bool HoldsNucleotides(const NxsCharactersBlock& matrix) {
  const auto type = matrix.GetDataType();
  return type == NxsCharactersBlock::dna || type == NxsCharactersBlock::rna ||
         type == NxsCharactersBlock::nucleotide;
}

// Why none of the matrices will do.
std::string WhyNone(const std::vector<NxsCharactersBlock*>& matrices) {
  if (matrices.empty()) return "no DATA or CHARACTERS block; add one";
  const bool protein = std::any_of(matrices.begin(), matrices.end(), [](const auto* matrix) {
    return matrix->GetDataType() == NxsCharactersBlock::protein;
  });
  return protein ? "the matrix holds protein; give the sequences of the nucleotides"
                 : "the matrix does not hold nucleotides; say datatype=dna in its FORMAT command "
                   "if it does";
}

// The one matrix of nucleotides.
NxsCharactersBlock& NucleotideMatrix(const std::string& file, const LibraryReader& reader) {
  NxsCharactersBlock* found = nullptr;
  const std::vector<NxsCharactersBlock*> matrices = reader.Matrices();
  for (NxsCharactersBlock* matrix : matrices) {
    if (!HoldsNucleotides(*matrix)) continue;
    if (found != nullptr) {
      throw Error(Fault{file, 0, 0, "more than one matrix of nucleotides; keep one"});
    }
    found = matrix;
  }
  if (found == nullptr) throw Error(Fault{file, 0, 0, WhyNone(matrices)});
  return *found;
}

// What the state codes of a matrix stand for. All that a cell holds is its state code, so the
// library is asked once for each code, and a cell costs one look.
class CodeStates {
 public:
  explicit CodeStates(const NxsCharactersBlock& matrix) : matrix_(matrix) {}

  // Of the cell of a taxon at a site, whose state code is known.
  StateSet At(unsigned taxon, unsigned site, NxsDiscreteStateCell code) {
    if (code < 0) return kNoState;
    const auto index = static_cast<std::size_t>(code);
    if (index >= states_.size()) states_.resize(index + 1, kNotASite);
    if (states_[index] == kNotASite) states_[index] = Ask(taxon, site);
    return states_[index];
  }

 private:
  // A set that a gap is in tells nothing.
  StateSet Ask(unsigned taxon, unsigned site) const {
    unsigned states = kNoState;
    for (unsigned k = 0; k < matrix_.GetNumStates(taxon, site); ++k) {
      if (matrix_.GetInternalRepresentation(taxon, site, k) < 0) return kNoState;
      states |= StatesOf(matrix_.GetState(taxon, site, k));
    }
    return static_cast<StateSet>(states & kAnyState);
  }

  const NxsCharactersBlock& matrix_;
  std::vector<StateSet> states_;
};

Alignment Copy(NxsCharactersBlock& matrix) {
  Alignment alignment;
  alignment.rna = matrix.GetDataType() == NxsCharactersBlock::rna;
  CodeStates states(matrix);
  const NxsTaxaBlockAPI& taxa = *matrix.GetTaxaBlockPtr();
  for (unsigned taxon = 0; taxon < taxa.GetNTax(); ++taxon) {
    const NxsDiscreteStateRow& row = matrix.GetDiscreteMatrixRow(taxon);
    if (row.empty()) continue;  // named in the TAXA block, but not in the matrix
    std::vector<StateSet> cells(row.size());
    for (unsigned site = 0; site < row.size(); ++site) {
      cells[site] = states.At(taxon, site, row[site]);
    }
    alignment.labels.push_back(CleanLabel(taxa.GetTaxonLabel(taxon)));
    alignment.cells.push_back(std::move(cells));
  }
  return alignment;
}

Alignment ReadNexusMatrix(LineReader& lines) {
  const std::string text = lines.Rest();
  LibraryReader reader(text);
  reader.Read(lines.Name(), text);
  return Copy(NucleotideMatrix(lines.Name(), reader));
}

}  // namespace

const AlignmentFormat kNexus = {
    "NEXUS", [](std::string_view line) { return line.substr(0, 6) == "#NEXUS"; }, ReadNexusMatrix};

}  // namespace zorvek::wide
