// Work that is shared by threads.
#ifndef ZORVEK_CORE_PARALLEL_H
#define ZORVEK_CORE_PARALLEL_H

#include <algorithm>
#include <atomic>
#include <future>
#include <system_error>
#include <vector>

namespace zorvek {

// Calls work(i, thread) for i from 0 to count-1, each once, on so many threads, which are numbered from
// 0, the calling one. Returns when all are done. An exception that one of them throws ends the work and
// comes out of here. Where the system refuses a thread, those that there are do the work.
template <class Work>
void ForEach(int count, int threads, const Work& work) {
  std::atomic<int> next{0};
  const auto worker = [&](int thread) {
    try {
      for (int i = next++; i < count; i = next++) work(i, thread);
    } catch (...) {
      next = count;  // nor need the others go on
      throw;
    }
  };
  std::vector<std::future<void>> others;
  try {
    for (int k = 1; k < std::min(threads, count); ++k) {
      others.push_back(std::async(std::launch::async, worker, k));
    }
  } catch (const std::system_error&) {
  }
  worker(0);
  for (std::future<void>& other : others) other.get();
}

}  // namespace zorvek

#endif
