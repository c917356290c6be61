// The counts take 64 sites at a time, and more where the processor has wider registers that count bits:
// the loop is compiled once for each kind of processor and picked when it runs.
#include "wide/distance/site_planes.h"

#include <numeric>

#include "core/index.h"
#include "core/parallel.h"

namespace zorvek::wide {

namespace {

constexpr SiteCodes DefiniteCodes() {
  SiteCodes codes{};
  codes[kA] = 1;
  codes[kC] = 3;
  codes[kG] = 5;
  codes[kT] = 7;
  return codes;
}

// Calls store(taxon, bytes) with the codes of the taxon's cells at the sites.
template <typename Store>
void ForEachCoded(const Alignment& alignment, const SiteList& sites, const SiteCodes& codes,
                  int threads, const Store& store) {
  ForEach(static_cast<int>(alignment.Taxa()), threads, [&](int taxon, int) {
    const StateSet* const cells = alignment.cells[Index(taxon)].data();
    std::vector<std::uint8_t> bytes(sites.size());
    for (std::size_t k = 0; k < sites.size(); ++k) bytes[k] = codes[cells[sites[k]]];
    store(taxon, bytes.data());
  });
}

PlaneWord Ones(PlaneWord word) {
  return static_cast<PlaneWord>(__builtin_popcountll(word));
}

// One pair, the second taxon's planes standing as the first one's do.
__attribute__((always_inline)) inline void CountPair(const PlaneWord* a, const PlaneWord* b,
                                                     std::size_t words, PairCounts& counts) {
  PlaneWord compared = 0, transversions = 0, ag = 0, ct = 0;
  for (std::size_t k = 0; k < words; ++k) {
    const PlaneWord both = a[k] & b[k];
    const PlaneWord pyrimidine = a[words + k];
    const PlaneWord other_kind = pyrimidine ^ b[words + k];
    const PlaneWord transition = both & ~other_kind & (a[2 * words + k] ^ b[2 * words + k]);
    compared += static_cast<PlaneWord>(__builtin_popcountll(both));
    transversions += static_cast<PlaneWord>(__builtin_popcountll(both & other_kind));
    ag += static_cast<PlaneWord>(__builtin_popcountll(transition & ~pyrimidine));
    ct += static_cast<PlaneWord>(__builtin_popcountll(transition & pyrimidine));
  }
  counts.compared = static_cast<double>(compared);
  counts.transversions = static_cast<double>(transversions);
  counts.ag = static_cast<double>(ag);
  counts.ct = static_cast<double>(ct);
}

__attribute__((always_inline)) inline void CountPlain(const PlaneWord* a, const PlaneWord* b,
                                                      std::size_t words, std::size_t stride,
                                                      int count, PairCounts* pairs) {
  for (int k = 0; k < count; ++k, b += stride) CountPair(a, b, words, pairs[k]);
}

#if defined(__x86_64__)
__attribute__((target("popcnt"))) void CountByInstruction(const PlaneWord* a, const PlaneWord* b,
                                                          std::size_t words, std::size_t stride,
                                                          int count, PairCounts* pairs) {
  CountPlain(a, b, words, stride, count, pairs);
}

__attribute__((target("avx512f,avx512vl,avx512vpopcntdq"))) void CountByVectors(
    const PlaneWord* a, const PlaneWord* b, std::size_t words, std::size_t stride, int count,
    PairCounts* pairs) {
  CountPlain(a, b, words, stride, count, pairs);
}
#endif

}  // namespace

SiteList AllSites(const Alignment& alignment) {
  SiteList sites(alignment.Sites());
  std::iota(sites.begin(), sites.end(), std::size_t{0});
  return sites;
}

SitePlanes::SitePlanes(const Alignment& alignment, const SiteList& sites, int threads)
    : taxa_(static_cast<int>(alignment.Taxa())),
      words_(WordsFor(sites.size())),
      bits_(alignment.Taxa() * kPlanes * words_) {
  ForEachCoded(alignment, sites, DefiniteCodes(), threads,
               [&](int taxon, const std::uint8_t* bytes) {
                 PackPlanes(bytes, sites.size(), kPlanes, &bits_[Index(taxon) * kPlanes * words_]);
               });
}

Frequencies SitePlanes::NucleotideShares() const {
  PlaneWord definite = 0, c = 0, g = 0, t = 0;
  for (int taxon = 0; taxon < taxa_; ++taxon) {
    const PlaneWord* const row = Row(taxon);
    for (std::size_t k = 0; k < words_; ++k) {
      const PlaneWord pyrimidine = row[words_ + k];
      const PlaneWord g_or_t = row[2 * words_ + k];
      definite += Ones(row[k]);
      c += Ones(pyrimidine & ~g_or_t);
      g += Ones(g_or_t & ~pyrimidine);
      t += Ones(g_or_t & pyrimidine);
    }
  }
  const auto share = [all = static_cast<double>(definite)](PlaneWord count) {
    return all > 0 ? static_cast<double>(count) / all : 0;
  };
  return {share(definite - c - g - t), share(c), share(g), share(t)};
}

void SitePlanes::Count(int i, int from, int to, PairCounts* pairs) const {
  const PlaneWord* const a = Row(i);
  const PlaneWord* const b = Row(from);
  const std::size_t stride = kPlanes * words_;
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx512vpopcntdq") && __builtin_cpu_supports("avx512vl")) {
    return CountByVectors(a, b, words_, stride, to - from, pairs);
  }
  if (__builtin_cpu_supports("popcnt")) {
    return CountByInstruction(a, b, words_, stride, to - from, pairs);
  }
#endif
  CountPlain(a, b, words_, stride, to - from, pairs);
}

NucleotidePlanes TablePlanes(const Alignment& alignment, const SiteList& sites,
                             const SiteCodes& codes, int threads) {
  NucleotidePlanes planes(alignment.Taxa(), sites.size());
  ForEachCoded(alignment, sites, codes, threads,
               [&](int taxon, const std::uint8_t* bytes) { planes.Fill(Index(taxon), bytes); });
  return planes;
}

}  // namespace zorvek::wide
