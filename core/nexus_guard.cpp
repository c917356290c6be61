// The library is Debian's 2.1, and these are its habits that are answered here.
//  - It allocates what DIMENSIONS announces before it has seen a character, and reports on as many
//    taxa.
//  - It stores a set number by number, and before DIMENSIONS takes any number.
//  - It does not expect commands that change the matrix to stand after it.
//  - A failed assertion ends the process: one of its own kind, or one of the C library's when a
//    comment within parentheses is empty.
#include "core/nexus_guard.h"

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

// Cells that are let pass in a file of any size, so that NCL can say where a matrix falls short.
constexpr double kAlwaysHeld = 1 << 24;

// The last number that a set of taxa or characters may name.
unsigned Bounded(unsigned max_index, double bytes) {
  return max_index <= bytes ? max_index : static_cast<unsigned>(bytes);
}

void CheckTaxa(unsigned ntax, double bytes) {
  if (ntax <= bytes) return;
  throw NxsException("NTAX is " + std::to_string(ntax) + ", more than the file can hold");
}

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

void GuardedTaxa::SetNtax(unsigned ntax) {
  CheckTaxa(ntax, bytes_);
  NxsTaxaBlock::SetNtax(ntax);
}

unsigned GuardedTaxa::GetMaxIndex() const {
  return Bounded(NxsTaxaBlock::GetMaxIndex(), bytes_);
}

GuardedTaxa* GuardedTaxa::Clone() const {
  auto* copy = new GuardedTaxa(bytes_);
  static_cast<NxsTaxaBlock&>(*copy) = *this;
  return copy;
}

void GuardedTaxa::Read(NxsToken& token) {
  try {
    NxsTaxaBlock::Read(token);
  } catch (const std::bad_alloc&) {  // thrown at the command, before there is anything to check
    CheckTaxa(dimNTax, bytes_);
    throw;
  }
  CheckTaxa(dimNTax, bytes_);
}

template <class Block>
unsigned GuardedMatrix<Block>::GetMaxIndex() const {
  return Bounded(Block::GetMaxIndex(), bytes_);
}

template <class Block>
GuardedMatrix<Block>* GuardedMatrix<Block>::Clone() const {
  auto* copy = new GuardedMatrix(this->taxa, this->assumptionsBlock, bytes_);
  static_cast<Block&>(*copy) = *this;
  return copy;
}

template <class Block>
void GuardedMatrix<Block>::Read(NxsToken& token) {
  try {
    Block::Read(token);
  } catch (const NxsException&) {  // NCL empties the block
    throw;
  } catch (...) {
    this->Reset();
    throw;
  }
  if (!FitsDimensions()) throw NxsException("matrix does not fit DIMENSIONS", token);
}

template <class Block>
void GuardedMatrix<Block>::HandleFormat(NxsToken& token) {
  if (!this->discreteMatrix.empty()) throw NxsException("FORMAT command after the matrix", token);
  Block::HandleFormat(token);
}

template <class Block>
void GuardedMatrix<Block>::HandleMatrix(NxsToken& token) {
  const unsigned rows = this->nTaxWithData;
  const unsigned columns = this->nChar;
  CheckTaxa(rows, bytes_);
  if (static_cast<double>(rows) * columns > std::max(bytes_, kAlwaysHeld)) {
    throw NxsException("DIMENSIONS announces " + std::to_string(rows) + " taxa x " +
                           std::to_string(columns) + " characters, more than the file can hold",
                       token);
  }
  Block::HandleMatrix(token);
}

template <class Block>
bool GuardedMatrix<Block>::FitsDimensions() const {
  const unsigned taxa_with_data = this->nTaxWithData;
  if (this->GetDataType() == NxsCharactersBlock::continuous) {
    for (unsigned taxon = 0; taxon < taxa_with_data; ++taxon) {
      if (!this->TaxonIndHasData(taxon)) return false;
    }
    return true;
  }
  unsigned filled = 0;
  for (const NxsDiscreteStateRow& row : this->discreteMatrix) {
    if (row.empty()) continue;
    if (row.size() != this->nChar) return false;
    ++filled;
  }
  return filled == taxa_with_data;
}

template class GuardedMatrix<NxsDataBlock>;
template class GuardedMatrix<NxsCharactersBlock>;

}  // namespace zorvek
