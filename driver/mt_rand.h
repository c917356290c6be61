// The random source: the 32-bit Mersenne Twister MT19937 with its published initialisations
// [Matsumoto1998], seeded from the system's random device.
#ifndef ZORVEK_DRIVER_MT_RAND_H
#define ZORVEK_DRIVER_MT_RAND_H

#include <array>
#include <cstdint>

namespace zorvek {

// One instance serves one thread: every draw changes the state.
class MTRand {
 public:
  static constexpr int kWords = 624;

  // Seeds from the random device.
  MTRand();

  // `next` points into `state`, so an instance stays where it was made.
  MTRand(const MTRand&) = delete;
  MTRand& operator=(const MTRand&) = delete;

  // Seeds with 624 words of /dev/urandom, or with hash(time, clock) when it cannot deliver them.
  void seed();

  // The published single-word and array initialisations (init_genrand, init_by_array).
  void seedWithValue(std::uint32_t s);
  void seedWithArray(const std::uint32_t* key, std::uint32_t length);

  // A seed from the time and the processor clock; no two calls of a process give the same for the
  // same arguments, because each adds a counter.
  static std::uint32_t hash(long time, unsigned long clock);

  // The next 624 words of state.
  void refill();

  // The next tempered word.
  std::uint32_t nextWord();

  // A uniform integer from 0 to bound, both included. Rejects words beyond the bound under the
  // smallest covering bit mask, so it takes fewer than two words on average.
  std::uint32_t nextAtMost(std::uint32_t bound);

 private:
  void fill(std::uint32_t s);

  std::array<std::uint32_t, kWords> state{};
  const std::uint32_t* next = nullptr;
  int remaining = 0;
};

}  // namespace zorvek

#endif
