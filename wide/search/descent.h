// Descent to a local optimum by NNI and SPR moves. Where moves are dear, the whole tree is looked at in
// rounds, and many moves are made together; else, and in what a try disturbs, moves come from a queue of the
// nodes around which something changed. Threads share the looking, in rounds and in a long queue.
#ifndef ZORVEK_WIDE_SEARCH_DESCENT_H
#define ZORVEK_WIDE_SEARCH_DESCENT_H

#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "wide/criterion/neighbourhood.h"

namespace zorvek::wide {

// One instance serves one thread.
class Descent {
 public:
  // Asked with the share of the present pass that is done; true ends the descent where it is.
  using Poll = std::function<bool(double)>;

  explicit Descent(std::unique_ptr<Neighbourhood> neighbourhood);

  Neighbourhood& Around() { return *neighbourhood_; }

  // Trades neighbouring subtrees until no NNI shortens the tree, or, if not `to_the_end`, until so few do
  // that those who look for SPR moves find them as well.
  void ByNni(const Poll& poll, bool to_the_end);

  // Moves subtrees until none has a better place. The threads of the neighbourhood share the looking
  // for moves; the outcome does not depend on how many there are.
  void BySpr(const Poll& poll);

  // Makes so many random moves of subtrees to places nearby, each around another random node, and
  // queues what they touch.
  void Kick(int moves, std::mt19937_64& generator);

  // Tries so often to make a few random SPR moves around a random node and to descend from there. A
  // try that ends in a longer tree is taken back, but, with the probability exp(-rise / T), where T
  // falls from `heat` mean edge lengths to 0 [Kirkpatrick1983]. Leaves the best tree that it met.
  void Anneal(long tries, double heat, std::mt19937_64& generator, const Poll& poll);

  // Moves subtrees around what was queued until none there has a better place. Returns whether a move
  // was made and the queue is empty.
  bool EmptyQueue(const Poll& poll);

 private:
  const Topology& Current() const { return neighbourhood_->Current(); }
  std::vector<SprMove> NniMoves();
  std::vector<SprMove> SprMoves(const Poll& poll);
  std::vector<SprMove> LookAround(const std::vector<int>& nodes,
                                  const std::function<bool(int)>& poll);
  bool KeepMovable(std::vector<int>& nodes, const std::function<bool(int)>& poll);
  bool MakeTogether(const std::vector<SprMove>& moves);
  bool MakeNnisSingly(const std::vector<SprMove>& moves);
  bool SprRound(const Poll& poll);
  std::vector<int> InnerNodes() const;
  bool BestAround(int node, int thread, SprMove& best);
  void Enqueue(int node);
  double MeanEdge() const;
  void TakeBack();
  bool ImproveAt(int node);
  void Make(const SprMove& move);
  int Wander(int node, std::mt19937_64& generator) const;
  void PerturbAt(int node, std::mt19937_64& generator);

  std::unique_ptr<Neighbourhood> neighbourhood_;
  std::deque<int> queue_;
  std::vector<char> queued_;  // by node
  std::vector<SprMove>
      back_;  // the moves that undo those of the present try, the last one first made
  bool trying_ = false;
};

}  // namespace zorvek::wide

#endif
