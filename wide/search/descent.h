// Descent to a local optimum by NNI and SPR moves. Where moves are dear, the whole tree is looked at in
// rounds, and many moves are made together; else moves come from a queue of the nodes around which something
// changed. Threads share the looking, in rounds and in a long queue.
#ifndef ZORVEK_WIDE_SEARCH_DESCENT_H
#define ZORVEK_WIDE_SEARCH_DESCENT_H

#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "wide/criterion/neighbourhood.h"

namespace zorvek::wide {

// Numbers of the Gumbel distribution, to be taken in their order from a random one on.
std::vector<double> GumbelNoise();

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

  // Gives `settled` random subtrees, one after the other, another place by a heat bath: at first of 5 about
  // 2 move, and linearly fewer and fewer, since the heat follows them [Kirkpatrick1983, Lam1988]. Then
  // descends from the best tree that it met. `noise` is GumbelNoise(), the tree of at most 8,000 taxa.
  // Cost: for each subtree, one BestSpr and perhaps one move.
  void Anneal(long settled, const std::vector<double>& noise, std::mt19937_64& generator,
              const Poll& poll);

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
  bool EmptyQueue(const Poll& poll);
  bool BestAround(int node, int thread, SprMove& best);
  void Enqueue(int node);
  double MeanEdge() const;
  bool ImproveAt(int node);
  void Make(const SprMove& move);

  std::unique_ptr<Neighbourhood> neighbourhood_;
  std::deque<int> queue_;
  std::vector<char> queued_;  // by node
};

}  // namespace zorvek::wide

#endif
