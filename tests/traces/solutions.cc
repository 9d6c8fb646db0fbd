// SPDX-License-Identifier: MIT
#include "traces/solutions.h"

#include <algorithm>
#include <climits>

namespace koru::traces {

// Depth first over the variables in order; a relation is asked as soon as all its variables have a value.
struct Solutions::Search {
  const std::vector<CSint *> &variables;
  const Solutions &model;
  std::map<CSint *, std::size_t> position;
  std::vector<std::vector<const Posted *>> complete;  // relations whose last variable stands at the position
  std::vector<const Posted *> defining;               // the one whose result the variable is
  std::vector<const Posted *> constant;               // over no variable at all
  Tuple values;
  std::vector<Tuple> found;
  int budget = 20000;

  Search(const std::vector<CSint *> &order, const Solutions &solutions)
      : variables(order), model(solutions), complete(order.size()), defining(order.size()), values(order.size()) {
    for (std::size_t i = 0; i < order.size(); ++i) position[order[i]] = i;
    for (const Posted &p : model.posted_) enter(p);
  }

  void enter(const Posted &p) {
    std::size_t last = 0;  // one past the position
    for (CSint *v : p.x) last = std::max(last, position[v] + 1);
    if (p.z != nullptr && position[p.z] >= last) {
      last = position[p.z] + 1;
      if (model.domains_.count(p.z) == 0 && defining[last - 1] == nullptr) defining[last - 1] = &p;
    }
    (last > 0 ? complete[last - 1] : constant).push_back(&p);
  }

  std::vector<int> arguments(const Posted &p) const {
    std::vector<int> x;
    for (CSint *v : p.x) x.push_back(values[position.at(v)]);
    return x;
  }

  bool holds(const Posted &p) const {
    const std::vector<int> x = arguments(p);
    const int z = p.z != nullptr ? values[position.at(p.z)] : 0;
    if (!p.row->computes()) return p.form.holds(x, z) != wrong(x);
    const catalogue::Value value = p.form.value(x);
    return p.z != nullptr ? value == z : value && *value >= INT_MIN && *value <= INT_MAX;
  }

  bool wrong(const std::vector<int> &x) const { return model.wrong_ && x.size() == 2 && x[0] == 3; }

  void assign(std::size_t i) {
    if (--budget < 0) return;
    if (i == variables.size()) return found.push_back(values);
    if (defining[i] != nullptr) {
      const std::vector<int> x = arguments(*defining[i]);
      const auto value = defining[i]->form.value(x);
      if (value && *value >= INT_MIN && *value <= INT_MAX) attempt(i, static_cast<int>(*value));
      return;
    }
    for (const int value : model.domains_.at(variables[i])) attempt(i, value);
  }

  void attempt(std::size_t i, int value) {
    values[i] = value;
    for (const Posted *p : complete[i])
      if (!holds(*p)) return;
    assign(i + 1);
  }
};

void Solutions::clear() {
  const bool wrong = wrong_;
  *this = Solutions(wrong);
}

void Solutions::post(Posted posted) { posted_.push_back(std::move(posted)); }

std::string Solutions::refused(Posted posted, int depth) {
  checked_ = false;
  const bool asked = sure() && !(posted.z == nullptr && posted.row->isFunction() && !posted.row->computes());
  std::vector<CSint *> variables;
  std::optional<std::vector<Tuple>> solutions;
  posted_.push_back(std::move(posted));
  if (asked && !mayRefuse()) solutions = all(variables);
  const Row &row = *posted_.back().row;
  posted_.pop_back();
  failed_ = std::min(failed_, depth);
  checked_ = solutions.has_value();
  return solutions && !solutions->empty() ? std::string("refused though there is a solution: ") + row.name : "";
}

void Solutions::follow(int contexts) {
  marks_.resize(static_cast<std::size_t>(contexts), posted_.size());
  if (contexts < unknown_) unknown_ = kNever;  // a search has undone it
}

void Solutions::restored(int label) {
  const auto at = static_cast<std::size_t>(label - 1);
  while (at < marks_.size() && posted_.size() > marks_[at]) {
    const Posted &last = posted_.back();
    if (!last.row->computes() && last.z != nullptr) domains_.erase(last.z);
    posted_.pop_back();
  }
  marks_.resize(std::min(marks_.size(), at));
  if (unknown_ >= label) unknown_ = kNever;
  if (failed_ >= label) failed_ = kNever;
}

void Solutions::kept(int contexts) {
  marks_.resize(std::min(marks_.size(), static_cast<std::size_t>(contexts)));
  if (unknown_ != kNever) unknown_ = std::min(unknown_, contexts);
  if (failed_ != kNever) failed_ = std::min(failed_, contexts);
}

bool Solutions::none() {
  std::vector<CSint *> variables;
  const auto solutions = all(variables);
  return !solutions || solutions->empty();
}

bool Solutions::mayRefuse() const {
  return std::ranges::any_of(posted_, [](const Posted &p) { return p.row->constraint->mayRefuse; });
}

bool Solutions::mayAccept() const {
  return std::ranges::any_of(posted_, [](const Posted &p) { return p.row->constraint->mayAccept; });
}

bool Solutions::place(CSint *v, std::vector<CSint *> &result) const {
  if (std::ranges::find(result, v) != result.end()) return true;
  if (domains_.count(v) != 0) return result.push_back(v), true;
  const auto defining = std::ranges::find_if(
      posted_, [&](const Posted &p) { return p.z == v && std::ranges::find(p.x, v) == p.x.end(); });
  if (defining == posted_.end() || !defining->row->computes()) return false;
  for (CSint *x : defining->x)
    if (!place(x, result)) return false;
  result.push_back(v);
  return true;
}

std::optional<std::vector<Tuple>> Solutions::all(std::vector<CSint *> &variables) {
  if (!sure()) return std::nullopt;
  variables.clear();
  for (const Posted &p : posted_) {
    for (CSint *x : p.x)
      if (!place(x, variables)) return std::nullopt;
    if (p.z != nullptr && !place(p.z, variables)) return std::nullopt;
  }
  Search search(variables, *this);
  if (std::ranges::all_of(search.constant, [&](const Posted *p) { return search.holds(*p); })) search.assign(0);
  if (search.budget < 0) return std::nullopt;
  std::ranges::sort(search.found);
  return search.found;
}

}  // namespace koru::traces
