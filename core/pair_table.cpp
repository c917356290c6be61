// Every pair of taxa is counted over all sites, so the counting works on 64 sites at a time: the
// sites with nucleotide r in the first taxon and c in the second are the bits of one AND, and their
// number is its population count. Most processors count the bits of a word in one instruction; the
// default build may not assume it, so the loop is compiled once for each kind and picked when it
// runs.
#include "core/pair_table.h"

#include <algorithm>
#include <cmath>

#include "core/eigen_rg.h"

namespace zorvek {

namespace {

using Word = NucleotidePlanes::Word;

#if defined(__GNUC__)
#define ZORVEK_ALWAYS_INLINE __attribute__((always_inline)) inline
#else
#define ZORVEK_ALWAYS_INLINE inline
#endif

ZORVEK_ALWAYS_INLINE void CountPlain(const Word* first, const Word* second, std::size_t words,
                                     PairTable& table) {
  for (int r = 0; r < kNucleotides; ++r, first += words) {
    Word count[kNucleotides] = {};
    for (std::size_t k = 0; k < words; ++k) {
      for (std::size_t c = 0; c < kNucleotides; ++c) {
        count[c] += static_cast<Word>(__builtin_popcountll(first[k] & second[c * words + k]));
      }
    }
    for (int c = 0; c < kNucleotides; ++c) table[r][c] = static_cast<double>(count[c]);
  }
}

#if defined(__x86_64__)
__attribute__((target("popcnt"))) void CountByInstruction(const Word* first, const Word* second,
                                                          std::size_t words, PairTable& table) {
  CountPlain(first, second, words, table);
}

__attribute__((target("avx512f,avx512vl,avx512vpopcntdq"))) void CountByVectors(const Word* first,
                                                                                const Word* second,
                                                                                std::size_t words,
                                                                                PairTable& table) {
  CountPlain(first, second, words, table);
}
#endif

// An eigenvalue is 1 exactly when the table's row and column totals agree. Rounding returns it a
// little off; a true value this close to 1 would need 10^11 sites.
constexpr double kCountsAsOne = 1 - 1e-12;

// Column totals are kept in single precision, where adding 1 changes nothing from here on.
constexpr double kTotalStops = 1 << 24;

// P from F in place. Returns false when a row has counts but no total to be divided by. A row
// without either becomes 0: its eigenvalue is 0, and the others are those of the nucleotides that
// occur.
bool ScaleTable(PairTable& table) {
  double total[kNucleotides];
  for (int c = 0; c < kNucleotides; ++c) {
    const double sum = table[0][c] + table[1][c] + table[2][c] + table[3][c];
    total[c] = std::min(sum, kTotalStops);
  }
  for (int r = 0; r < kNucleotides; ++r) {
    for (int c = r; c < kNucleotides; ++c) {
      table[r][c] = table[c][r] = (table[r][c] + table[c][r]) * 0.5;
    }
  }
  for (int r = 0; r < kNucleotides; ++r) {
    for (int c = 0; c < kNucleotides; ++c) {
      if (total[r] != 0) {
        table[r][c] /= total[r];
      } else if (table[r][c] != 0) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

void NucleotidePlanes::Set(std::size_t taxon, std::size_t site, char symbol) {
  Word* plane = &bits_[taxon * kNucleotides * words_ + site / 64];
  const Word bit = Word{1} << (site % 64);
  const char* const symbols = "ACGT";
  const bool other = std::find(symbols, symbols + kNucleotides, symbol) == symbols + kNucleotides;
  for (int c = 0; c < kNucleotides; ++c, plane += words_) {
    if (other || symbols[c] == symbol) *plane |= bit;
  }
}

std::vector<NucleotidePlanes::Word> NucleotidePlanes::NucleotidesOnly(std::size_t taxon) const {
  const Word* planes = Planes(taxon);
  std::vector<Word> result(planes, planes + kNucleotides * words_);
  for (std::size_t k = 0; k < words_; ++k) {
    const Word other = planes[k] & planes[words_ + k];
    for (std::size_t c = 0; c < kNucleotides; ++c) result[c * words_ + k] &= ~other;
  }
  return result;
}

void CountPairs(const Word* first, const Word* second, std::size_t words, PairTable& table) {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx512vpopcntdq") && __builtin_cpu_supports("avx512vl")) {
    return CountByVectors(first, second, words, table);
  }
  if (__builtin_cpu_supports("popcnt")) return CountByInstruction(first, second, words, table);
#endif
  CountPlain(first, second, words, table);
}

double PairDistance(PairTable& table) {
  if (!ScaleTable(table)) return 0;
  double* rows[kNucleotides] = {table[0], table[1], table[2], table[3]};
  double wr[kNucleotides] = {};  // stays 0 where the iteration does not get to
  double wi[kNucleotides];
  int iv[kNucleotides];
  double fv[kNucleotides];
  Eigenvalues(kNucleotides, rows, wr, wi, iv, fv);
  double lambda = 0;
  for (const double value : wr) {
    if (value > lambda && value <= kCountsAsOne) lambda = value;
  }
  return lambda == 0 ? 0 : -0.25 * std::log(lambda);
}

}  // namespace zorvek
