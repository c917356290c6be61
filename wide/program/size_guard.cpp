#include "wide/program/size_guard.h"

#include <algorithm>
#include <cmath>

#include "wide/criterion/criterion.h"
#include "wide/formats/numbers.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

// Measured on one core, from 2,000 to 10,000 taxa, and rounded up.
constexpr double kPair = 100e-9;        // seconds for the distance of two taxa
constexpr double kSpectralPair = 1e-6;  // of spectral ones
constexpr double kPairSite = 25e-12;    // and for each of their sites
constexpr double kGrowth = 2.1;         // exponent of n in what follows
constexpr double kJoining = 20e-9;      // seconds of neighbour joining
constexpr double kDescent = 80e-9;      // seconds of a descent
constexpr double kOlsDescent = 160e-9;  // of one under least squares
constexpr double kAlone = 0.3;          // share of it that threads cannot take over

constexpr double kProgram = 16e6;  // bytes, whatever is read

// For each pair of taxa: the copy of the distances that is joined.
double BytesOfJoining(double taxa) {
  return taxa < kSinglePrecision ? 8 : 4;
}

// And the averages or sums of the tree that is searched.
double BytesOfTree(Criterion criterion, double taxa) {
  switch (criterion) {
    case Criterion::kBalanced:
      return 32;
    case Criterion::kOls:
      return taxa < kSinglePrecision ? 16 : 4;
  }
  return 0;
}

// What a thread holds of these: of the first start the tree after the joining, later both; where a tree is
// only joined in single precision, nothing but the distances.
double BytesOfThread(const SearchSettings& search, double taxa) {
  const double joining = BytesOfJoining(taxa);
  if (search.moves == Moves::kNone && search.iterations == 0) {
    return taxa < kSinglePrecision || search.starts > 1 ? joining : 0;
  }
  const double tree = BytesOfTree(search.criterion, taxa);
  return search.starts > 1 ? tree + joining : std::max(tree, joining);
}

double SecondsOfDescent(const SearchSettings& search) {
  if (search.moves == Moves::kNone) return 0;
  return search.criterion == Criterion::kOls ? kOlsDescent : kDescent;
}

std::string Size(double bytes) {
  return Rounded(bytes / 1e9, bytes < 1e10 ? 1 : 0) + " GB";
}

std::string Time(double seconds) {
  if (seconds < 100) return Rounded(seconds, 0) + " s";
  if (seconds < 6000) return Rounded(seconds / 60, 0) + " min";
  return Rounded(seconds / 3600, 0) + " h";
}

// Settings that need less, with what they need: the first under which the run fits.
std::string WhatFits(const Options& options, double taxa, double sites, double memory) {
  Options lesser = options;
  std::string changes;
  const auto fits = [&](const std::string& change) {
    changes += (changes.empty() ? "" : " ") + change;
    return NeedsOf(lesser, taxa, sites, memory).bytes <= memory;
  };
  lesser.search.threads = 1;
  if (options.search.threads > 1 && fits("--threads 1")) return changes;
  lesser.search.criterion = Criterion::kOls;
  if (options.search.criterion != Criterion::kOls && fits("--criterion ols")) return changes;
  lesser.search.criterion = Criterion::kBalanced;
  lesser.search.moves = Moves::kNone;
  lesser.search.iterations = 0;
  changes = options.search.threads > 1 ? "--threads 1" : "";
  if (options.search.moves != Moves::kNone && fits("--search none")) return changes;
  return "";
}

}  // namespace

Needs NeedsOf(const Options& options, double taxa, double sites, double memory) {
  const SearchSettings& search = options.search;
  const double squared = taxa * taxa;
  const double threads = search.threads;
  const double replicates = options.bootstrap.replicates;
  Needs needs;

  const double bytes_of_thread = squared * BytesOfThread(search, taxa);
  const double searching =
      std::min<double>(threads, search.iterations > 0 ? threads : search.starts);
  const double shared = kProgram + taxa * sites + 8 * squared;
  const double replicate = 8 * squared + bytes_of_thread;
  needs.replicate_threads = static_cast<int>(std::min(threads, replicates));
  while (memory > 0 && needs.replicate_threads > 1 &&
         shared + needs.replicate_threads * replicate > memory) {
    --needs.replicate_threads;
  }
  needs.bytes = shared + std::max(searching * bytes_of_thread, needs.replicate_threads * replicate);

  const double pair = options.model.model == Model::kSpectral ? kSpectralPair : kPair;
  const double distances = sites > 0 ? squared / 2 * (pair + kPairSite * sites) : 0;
  const double power = std::pow(taxa, kGrowth);
  const double joining = power * kJoining;
  const double descent = power * SecondsOfDescent(search);
  const double found = search.starts == 1
                           ? joining + descent * (kAlone + (1 - kAlone) / threads)
                           : (joining + descent) * std::ceil(search.starts / threads);
  needs.seconds = distances / threads + found;
  if (replicates > 0) {
    needs.seconds += (distances + joining + descent) *
                     std::ceil(replicates / std::max(1, needs.replicate_threads));
  }
  if (search.seconds > 0) {
    needs.seconds = std::min(needs.seconds, distances / threads + search.seconds);
  }
  return needs;
}

std::string Forewarning(const Options& options, double taxa, double sites, double memory) {
  const Needs needs = NeedsOf(options, taxa, sites, memory);
  const std::string size = Rounded(taxa, 0) + " taxa";
  if (memory > 0 && needs.bytes > memory) {
    const std::string fitting = WhatFits(options, taxa, sites, memory);
    throw Error(At(options.file) + ": " + size + " need " + Size(needs.bytes) +
                " of memory, and the machine has " + Size(memory) +
                (fitting.empty() ? "; leave out taxa or take a larger machine"
                                 : "; with " + fitting + " they fit"));
  }
  const bool fewer =
      needs.replicate_threads < std::min(options.search.threads, options.bootstrap.replicates);
  if (needs.seconds < 60 && needs.bytes < 0.75 * memory && !fewer) return "";
  std::string told =
      size + ": about " + Time(needs.seconds) + " and " + Size(needs.bytes) + " of memory";
  if (fewer) {
    told += "; bootstrap replicates " + std::to_string(needs.replicate_threads) +
            " at a time, as many as the memory allows";
  }
  return told;
}

}  // namespace zorvek::wide
