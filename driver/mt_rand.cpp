#include "driver/mt_rand.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <memory>

namespace zorvek {

namespace {

// The four low bytes of a value, least significant first, as digits of base 257.
std::uint32_t FoldBytes(std::uint32_t value) {
  std::uint32_t folded = 0;
  for (int byte = 0; byte < 4; ++byte, value >>= 8) folded = folded * 257 + (value & 0xff);
  return folded;
}

}  // namespace

MTRand::MTRand() {
  seed();
}

void MTRand::seed() {
  std::array<std::uint32_t, kWords> words;
  std::size_t got = 0;
  if (const std::unique_ptr<std::FILE, int (*)(std::FILE*)> device(std::fopen("/dev/urandom", "rb"),
                                                                   std::fclose);
      device) {
    while (got < words.size() && std::fread(&words[got], sizeof words[got], 1, device.get()) == 1) {
      ++got;
    }
  }
  if (got == words.size()) {
    seedWithArray(words.data(), kWords);
    return;
  }
  const std::clock_t clock = std::clock();
  seedWithValue(hash(std::time(nullptr), static_cast<unsigned long>(clock)));
}

void MTRand::fill(std::uint32_t s) {
  state[0] = s;
  for (std::uint32_t i = 1; i < kWords; ++i) {
    state[i] = 1812433253u * (state[i - 1] ^ (state[i - 1] >> 30)) + i;
  }
}

void MTRand::seedWithValue(std::uint32_t s) {
  fill(s);
  refill();
}

void MTRand::seedWithArray(const std::uint32_t* key, std::uint32_t length) {
  fill(19650218u);
  std::uint32_t i = 1;
  std::uint32_t j = 0;
  const auto mixed = [&](std::uint32_t multiplier) {
    return state[i] ^ ((state[i - 1] ^ (state[i - 1] >> 30)) * multiplier);
  };
  const auto advance = [&] {
    if (++i >= kWords) {
      state[0] = state[kWords - 1];
      i = 1;
    }
  };
  for (std::uint32_t k = std::max<std::uint32_t>(kWords, length); k > 0; --k) {
    state[i] = mixed(1664525u) + key[j] + j;
    advance();
    if (++j >= length) j = 0;
  }
  for (int k = kWords - 1; k > 0; --k) {
    state[i] = mixed(1566083941u) - i;
    advance();
  }
  state[0] = 0x80000000u;
  refill();
}

std::uint32_t MTRand::hash(long time, unsigned long clock) {
  static std::uint32_t differ = 0;
  return (FoldBytes(static_cast<std::uint32_t>(time)) + differ++) ^
         FoldBytes(static_cast<std::uint32_t>(clock));
}

void MTRand::refill() {
  for (std::size_t k = 0; k < kWords; ++k) {
    const std::uint32_t following = state[(k + 1) % kWords];
    const std::uint32_t y = (state[k] & 0x80000000u) | (following & 0x7fffffffu);
    state[k] = state[(k + 397) % kWords] ^ (y >> 1) ^ (following & 1 ? 0x9908b0dfu : 0u);
  }
  remaining = kWords;
  next = state.data();
}

std::uint32_t MTRand::nextWord() {
  if (remaining == 0) refill();
  --remaining;
  std::uint32_t y = *next++;
  y ^= y >> 11;
  y ^= (y << 7) & 0x9d2c5680u;
  y ^= (y << 15) & 0xefc60000u;
  y ^= y >> 18;
  return y;
}

std::uint32_t MTRand::nextAtMost(std::uint32_t bound) {
  std::uint32_t mask = bound;
  for (int shift = 1; shift <= 16; shift *= 2) mask |= mask >> shift;
  std::uint32_t value;
  do {
    value = nextWord() & mask;
  } while (value > bound);
  return value;
}

}  // namespace zorvek
