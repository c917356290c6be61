// The NEXUS Class Library [Lewis2003] reads all formats. FASTA and PHYLIP files are looked over
// first (sequence_scan.h) and handed to it as plain FASTA, a line for each sequence.
#include "wide/alignment.h"

#include <ncl/nxsmultiformat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <new>
#include <set>
#include <sstream>
#include <string_view>

#include "core/nexus_guard.h"
#include "input/cell_symbols.h"
#include "wide/error.h"
#include "wide/sequence_scan.h"
#include "wide/words.h"

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

// Has the library read the text, with guards in front of all blocks; it keeps what it reads.
class LibraryReader : private MultiFormatReader {
 public:
  explicit LibraryReader(const std::string& text) : LibraryReader(static_cast<double>(text.size())) {
    source_.str(text);
  }
  ~LibraryReader() override { DeleteBlocksFromFactories(); }

  void Read(const std::string& path, DataFormatType format) {
    CommentFilter filter(&source_, bytes_);
    std::istream stream(&source_);
    if (format == NEXUS_FORMAT) stream.rdbuf(&filter);
    try {
      ReadStream(stream, format, path.c_str());
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

Alignment Copy(NxsCharactersBlock& matrix) {
  Alignment alignment;
  alignment.rna = matrix.GetDataType() == NxsCharactersBlock::rna;
  CellSymbols symbols(matrix);
  for (unsigned taxon = 0; taxon < matrix.GetTaxaBlockPtr()->GetNTax(); ++taxon) {
    const NxsDiscreteStateRow& row = matrix.GetDiscreteMatrixRow(taxon);
    if (row.empty()) continue;  // named in the TAXA block, but not in the matrix
    std::string cells;
    for (unsigned site = 0; site < row.size(); ++site) {
      cells += symbols.At(taxon, site, row[site]);
    }
    alignment.labels.push_back(matrix.GetTaxaBlockPtr()->GetTaxonLabel(taxon));
    alignment.cells.push_back(std::move(cells));
  }
  return alignment;
}

Alignment FromNexus(const std::string& path, const std::string& text) {
  LibraryReader reader(text);
  reader.Read(path, MultiFormatReader::NEXUS_FORMAT);
  return Copy(NucleotideMatrix(path, reader));
}

bool IsRna(const std::vector<ScannedSequence>& sequences) {
  return std::any_of(sequences.begin(), sequences.end(), [](const ScannedSequence& sequence) {
    return sequence.symbols.find_first_of("Uu") != std::string::npos;
  });
}

Alignment FromSequences(const std::string& path, const std::vector<ScannedSequence>& sequences) {
  std::string plain;
  for (std::size_t i = 0; i < sequences.size(); ++i) {
    plain += ">" + std::to_string(i) + "\n" + sequences[i].symbols + "\n";
  }
  if (sequences.empty() || sequences[0].symbols.empty()) return {};
  LibraryReader reader(plain);
  reader.Read(
      path,
      IsRna(sequences) ? MultiFormatReader::FASTA_RNA_FORMAT : MultiFormatReader::FASTA_DNA_FORMAT);
  Alignment alignment = Copy(NucleotideMatrix(path, reader));
  for (std::size_t i = 0; i < sequences.size(); ++i) alignment.labels[i] = sequences[i].label;
  return alignment;
}

Format ByContent(const std::string& path, const std::string& text) {
  std::string word(Words(text).Next().text.substr(0, 6));
  std::transform(word.begin(), word.end(), word.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  if (word == "#NEXUS") return Format::kNexus;
  if (!word.empty() && word[0] == '>') return Format::kFasta;
  if (!word.empty() && word[0] >= '0' && word[0] <= '9') return Format::kPhylip;
  throw Error(At(path, 1, 1) +
              (word.empty() ? ": nothing in the file; give one with aligned sequences"
                            : ": neither NEXUS nor FASTA nor PHYLIP; give --format if it is one"));
}

}  // namespace

std::string ReadFile(const std::string& path) {
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream text;
  if (stream) text << stream.rdbuf();
  if (errno != 0) {
    throw Error(At(path) + ": cannot be read: " + std::strerror(errno) +
                "; name a file that can be");
  }
  const std::string mark = "\xEF\xBB\xBF";  // which some editors put before UTF-8
  std::string content = text.str();
  return content.compare(0, mark.size(), mark) == 0 ? content.substr(mark.size()) : content;
}

Alignment ParseAlignment(const std::string& path, const std::string& text, Format format) {
  switch (format == Format::kByContent ? ByContent(path, text) : format) {
    case Format::kFasta:
      return FromSequences(path, ScanFasta(path, text));
    case Format::kPhylip:
      return FromSequences(path, ScanPhylip(path, text));
    default:
      return FromNexus(path, text);
  }
}

}  // namespace zorvek::wide
