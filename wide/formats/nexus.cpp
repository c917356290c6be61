#include "wide/formats/nexus.h"

#include <ncl/nxsmultiformat.h>

#include <algorithm>
#include <new>
#include <set>
#include <sstream>
#include <utility>

#include "core/nexus_guard.h"
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

  void Read(const std::string& path) {
    CommentFilter filter(&source_, bytes_);
    std::istream stream(&filter);
    try {
      ReadStream(stream, NEXUS_FORMAT, path.c_str());
    } catch (const NxsException& fault) {
      throw Error(At(path, fault.line, fault.col) + ": " + OneLine(fault.msg) + kFixNexus);
    } catch (const std::bad_alloc&) {
      throw Error(At(path) + ": asks for more memory than there is; fix NTAX and NCHAR");
    } catch (const std::exception& fault) {
      throw Error(At(path) + ": " + OneLine(fault.what()) + kFixNexus);
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

// The one matrix of nucleotides.
NxsCharactersBlock& NucleotideMatrix(const std::string& path, const LibraryReader& reader) {
  NxsCharactersBlock* found = nullptr;
  const std::vector<NxsCharactersBlock*> matrices = reader.Matrices();
  for (NxsCharactersBlock* matrix : matrices) {
    if (!HoldsNucleotides(*matrix)) continue;
    if (found != nullptr) {
      throw Error(At(path) + ": more than one matrix of nucleotides; keep one");
    }
    found = matrix;
  }
  if (found != nullptr) return *found;
  throw Error(At(path) + (matrices.empty()
                              ? ": no DATA or CHARACTERS block; add one"
                              : ": the matrix does not hold nucleotides; say datatype=dna in its "
                                "FORMAT command if it does"));
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
    alignment.labels.push_back(taxa.GetTaxonLabel(taxon));
    alignment.cells.push_back(std::move(cells));
  }
  return alignment;
}

}  // namespace

Alignment ReadNexusMatrix(const std::string& path, const std::string& text) {
  LibraryReader reader(text);
  reader.Read(path);
  return Copy(NucleotideMatrix(path, reader));
}

}  // namespace zorvek::wide
