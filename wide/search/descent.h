// Descent to a local optimum by SPR moves, from a queue of the nodes around which something changed.
#ifndef ZORVEK_WIDE_SEARCH_DESCENT_H
#define ZORVEK_WIDE_SEARCH_DESCENT_H

#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "wide/criterion/neighbourhood.h"

namespace zorvek::wide {

// A tree is shorter than another when it is by this share of its length.
constexpr double kShorter = 1e-12;

// One instance serves one thread.
class Descent {
 public:
  // Asked with the number of nodes in the queue; true ends the descent where it is.
  using Poll = std::function<bool(std::size_t)>;

  explicit Descent(std::unique_ptr<Neighbourhood> neighbourhood);

  Neighbourhood& Around() { return *neighbourhood_; }

  // Moves subtrees until none at any node has a better place.
  void Everywhere(const Poll& poll);

  // Makes a few random SPR moves around a random node and descends from there.
  void Perturbed(std::mt19937_64& generator, const Poll& poll);

 private:
  const Topology& Current() const { return neighbourhood_->Current(); }
  void Enqueue(int node);
  void EmptyQueue(const Poll& poll);
  bool ImproveAt(int node);
  bool Improve(int holder, int subtree);
  void Make(const SprMove& move);
  int Wander(int node, std::mt19937_64& generator) const;
  void PerturbAt(int node, std::mt19937_64& generator);

  std::unique_ptr<Neighbourhood> neighbourhood_;
  std::deque<int> queue_;
  std::vector<char> queued_;  // by node
  std::vector<SprMove> found_;
};

}  // namespace zorvek::wide

#endif
