#include "wide/regrafter.h"

#include <algorithm>

namespace zorvek::wide {

namespace {

std::size_t Index(int node) {
  return static_cast<std::size_t>(node);
}

}  // namespace

Regrafter::Regrafter(const Links& links, const double* const* distances)
    : links_(links),
      sums_(links.taxa, distances),
      place_(Index(2 * links.taxa - 1)),
      leaves_(place_.size()),
      outward_(place_.size()),
      between_(place_.size()),
      across_(place_.size()),
      inverse_(Index(links.taxa + 1)),
      lengths_(place_.size()),
      positive_(2 * links.taxa - 2),
      negative_(2 * links.taxa - 2),
      to_moved_(place_.size()),
      behind_(place_.size()) {
  for (std::size_t k = 1; k < inverse_.size(); ++k) inverse_[k] = 1 / static_cast<double>(k);
  for (int leaf = 0; leaf < links.taxa; ++leaf) {
    leaves_[Index(leaf)] = 1;
    outward_[Index(leaf)] = sums_.Outward(leaf);
  }
  order_.reserve(place_.size());
  Follow();
}

void Regrafter::Set(const Links& links) {
  links_ = links;
  Follow();
}

void Regrafter::Apply(const Regraft& regraft) {
  links_.Regraft(regraft.node, regraft.subtree, regraft.from, regraft.to);
  Follow();
}

// Orients the links away from the root edge and brings the sums up to date.
void Regrafter::Follow() {
  const auto adopt = [this](int node, int left, int right) {
    if (sums_.Left(node) != left || sums_.Right(node) != right)
      sums_.SetChildren(node, left, right);
  };
  adopt(sums_.Root(), links_.root.first, links_.root.second);
  order_.clear();
  stack_.assign(
      {{links_.root.second, links_.root.first, 0}, {links_.root.first, links_.root.second, 0}});
  while (!stack_.empty()) {
    const auto [node, behind, unused] = stack_.back();
    stack_.pop_back();
    place_[Index(node)] = static_cast<int>(order_.size());
    order_.push_back(node);
    if (links_.IsLeaf(node)) continue;
    const auto [left, right] = links_.Others(node, behind);
    adopt(node, left, right);
    stack_.push_back({right, node, 0});
    stack_.push_back({left, node, 0});
  }
  sums_.Update();
  RefreshLengths();
}

void Regrafter::RefreshLengths() {
  for (const int node : sums_.ChangedEdges()) {
    const bool central = sums_.Parent(node) == sums_.Root();
    const double length =
        sums_.IsLeaf(node) ? sums_.ExternalLength(node) : InternalLength(sums_.Around(node));
    lengths_[Index(node)] = length;
    const bool counts = !central || node == links_.root.first;  // the central edge once
    positive_.Set(node, counts ? std::max(length, 0.0) : 0.0);
    negative_.Set(node, counts ? std::max(-length, 0.0) : 0.0);
    if (sums_.IsLeaf(node)) continue;
    leaves_[Index(node)] = sums_.Leaves(node);
    outward_[Index(node)] = sums_.Outward(node);
    between_[Index(node)] = sums_.Between(node);
    across_[Index(node)] = sums_.Across(node);
  }
}

// Fills to_moved_ for the nodes that the walk of this subtree meets.
void Regrafter::SumsTo(int node, int subtree) {
  const bool below = Up(node) != subtree;  // X is below its node, else beyond it
  moved_leaves_ = below ? leaves_[Index(subtree)] : sums_.Taxa() - leaves_[Index(node)];
  moved_outward_ = outward_[Index(below ? subtree : node)];
  const int inside = below ? subtree : node;  // X is what is below this node, or all that is not
  const int first = place_[Index(inside)];
  const int last = first + 2 * sums_.Leaves(inside) - 1;
  const auto pass = [this, inside, below](int from, int to) {
    for (int place = to - 1; place >= from; --place) {
      const int y = order_[Index(place)];
      if (sums_.IsLeaf(y)) {
        const double near = sums_.ToLeaf(inside, y);
        to_moved_[Index(y)] = below ? near : outward_[Index(y)] - near;
      } else {
        to_moved_[Index(y)] = to_moved_[Index(sums_.Left(y))] + to_moved_[Index(sums_.Right(y))];
      }
    }
  };
  if (!below) return pass(first, last);
  to_moved_[Index(subtree)] = 0;
  pass(last, static_cast<int>(order_.size()));
  pass(0, first);
}

void Regrafter::Regrafts(int node, int subtree, double least, std::vector<Regraft>& found) {
  SumsTo(node, subtree);
  const auto [a, b] = links_.Others(node, subtree);
  for (const int start : {a, b}) {
    if (!links_.IsLeaf(start)) stack_.push_back({start, node, 0});
  }
  Walk(node, subtree, least, found);
}

void Regrafter::Walk(int node, int subtree, double least, std::vector<Regraft>& found) {
  // What lies beyond a neighbour ahead: leaves, S to all else, S to X.
  struct Ahead {
    double leaves, outward, moved;
  };
  const double x = moved_leaves_;
  const double inverse_x = inverse_[static_cast<std::size_t>(x)];
  const int taxa = sums_.Taxa();
  while (!stack_.empty()) {
    const Step step = stack_.back();
    stack_.pop_back();
    const std::size_t v = Index(step.node);
    behind_[v] = step.behind;
    const auto [f, g] = links_.Others(step.node, step.behind);
    const int up = Up(step.node);
    const auto look = [&](int ahead) -> Ahead {
      if (ahead == up) return {taxa - leaves_[v], outward_[v], moved_outward_ - to_moved_[v]};
      const std::size_t y = Index(ahead);
      return {leaves_[y], outward_[y], to_moved_[y]};
    };
    const Ahead to_f = look(f);
    const Ahead to_g = look(g);
    const double fg = f == up   ? to_g.outward - between_[v]
                      : g == up ? to_f.outward - between_[v]
                                : between_[v];
    const double p = taxa - x - to_f.leaves - to_g.leaves;
    const auto inverse = [this](double count) { return inverse_[static_cast<std::size_t>(count)]; };
    const double ip = inverse(p), jf = inverse(to_f.leaves), jg = inverse(to_g.leaves);
    const double average_pf = (to_f.outward - fg - to_f.moved) * ip * jf;
    const double average_pg = (to_g.outward - fg - to_g.moved) * ip * jg;
    const double average_xp = (moved_outward_ - to_f.moved - to_g.moved) * inverse_x * ip;
    const double average_xf = to_f.moved * inverse_x * jf;
    const double average_xg = to_g.moved * inverse_x * jg;
    const double average_fg = fg * jf * jg;
    const auto advance = [&](int ahead, const Quartet& around) {
      const double gain = step.gain + InterchangeGain(around);
      if (gain > least) {
        found.push_back({node, subtree, step.node, ahead, gain});
      }
      if (!links_.IsLeaf(ahead)) stack_.push_back({ahead, step.node, gain});
    };
    advance(f, {x, p, to_f.leaves, to_g.leaves, average_xp, average_xf, average_xg, average_pf,
                average_pg, average_fg});
    advance(g, {x, p, to_g.leaves, to_f.leaves, average_xp, average_xg, average_xf, average_pg,
                average_pf, average_fg});
  }
}

Tree Regrafter::Result() const {
  const int taxa = links_.taxa;
  // The root's children take the last two ids.
  std::vector<int> name(place_.size());
  int next = taxa;
  for (int node = 0; node < 2 * taxa - 2; ++node) {
    const bool central = node == links_.root.first || node == links_.root.second;
    name[Index(node)] = node < taxa ? node : central ? -1 : next++;
  }
  name[Index(links_.root.first)] = next;
  name[Index(links_.root.second)] = next + 1;

  wide::Tree tree;
  tree.taxa = taxa;
  tree.children.resize(Index(taxa - 1));
  tree.children.back() = {next, next + 1};
  tree.length.resize(Index(2 * taxa - 2));
  for (int node = 0; node < 2 * taxa - 2; ++node) {
    tree.length[Index(name[Index(node)])] = lengths_[Index(node)];
    if (node >= taxa) {
      tree.children[Index(name[Index(node)] - taxa)] = {name[Index(sums_.Left(node))],
                                                        name[Index(sums_.Right(node))]};
    }
  }
  for (std::size_t node = 0; node + 1 < tree.length.size(); ++node) {
    tree.raw += tree.length[node];
    tree.positive += std::max(tree.length[node], 0.0);
  }
  return tree;
}

}  // namespace zorvek::wide
