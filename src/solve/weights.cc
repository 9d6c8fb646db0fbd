// SPDX-License-Identifier: MIT
#include "solve/weights.h"

#include <algorithm>
#include <functional>

#include "core/solver.h"

namespace koru::solve {

namespace {

constexpr std::uint64_t kLargest = std::uint64_t{1} << 31;  // times a number of elements it fits 64 bits
constexpr int kSmall = 4;                                   // variables of a constraint that explains a result

struct Attachment {
  const Constraint *constraint;
  const CSint *variable;
};

bool byConstraint(const Attachment &a, const Attachment &b) {
  return a.constraint != b.constraint ? std::less<>{}(a.constraint, b.constraint)
                                      : std::less<>{}(a.variable, b.variable);
}

bool sameAttachment(const Attachment &a, const Attachment &b) {
  return a.constraint == b.constraint && a.variable == b.variable;
}

template <class Visit>
void forEachAttachment(Visit visit) {
  solver::variables.forEach([&](const CSint &v) {
    for (const Entry *entry = v.constraints; entry != nullptr; entry = entry->next)
      visit(Attachment{entry->constraint, &v});
  });
}

}  // namespace

// What is attached to what, ordered, while the scopes are being made of it.
class ScopeCollector {
 public:
  explicit ScopeCollector(Weights &weights) : weights_(weights) {}

  bool collect(CSint *const *variables, int n) {
    if (!orderPlaces(variables, n) || !orderAttachments()) return false;
    std::uint64_t links = 0;
    forEachLink([&](const Weights::Link &) { ++links; });
    weights_.scopes_ = Buffer<Weights::Link>(links);
    if (!weights_.scopes_) return false;
    int count = 0;
    forEachLink([&](const Weights::Link &link) { weights_.scopes_[count++] = link; });
    weights_.count_ = withoutRepetitions(count);
    return index(n);
  }

 private:
  struct Place {
    const CSint *variable;
    int position;
  };

  static bool byVariable(const Place &a, const Place &b) {
    return a.variable != b.variable ? std::less<>{}(a.variable, b.variable) : a.position < b.position;
  }

  bool orderPlaces(CSint *const *variables, int n) {
    places_ = Buffer<Place>(n);
    if (!places_) return false;
    for (int i = 0; i < n; ++i) places_[i] = {variables[i], i};
    placeCount_ = n;
    std::sort(places_.get(), places_.get() + n, byVariable);
    return true;
  }

  bool orderAttachments() {
    std::uint64_t count = 0;
    forEachAttachment([&](const Attachment &) { ++count; });
    attachments_ = Buffer<Attachment>(count);
    if (!attachments_) return false;
    Attachment *end = attachments_.get();
    forEachAttachment([&](const Attachment &attachment) { *end++ = attachment; });
    std::sort(attachments_.get(), end, byConstraint);
    end_ = std::unique(attachments_.get(), end, sameAttachment);
    return true;
  }

  template <class Visit>
  void forEachPlace(const CSint *v, Visit visit) const {
    const Place *begin = places_.get();
    const Place *end = begin + placeCount_;
    for (const Place *place = std::lower_bound(begin, end, Place{v, 0}, byVariable);
         place != end && place->variable == v; ++place)
      visit(place->position);
  }

  bool isLabelled(const CSint *v) const {
    bool found = false;
    forEachPlace(v, [&](int) { found = true; });
    return found;
  }

  // Past the attachments of one constraint from `first` on, or past more than a small one has.
  const Attachment *endOf(const Attachment *first) const {
    const Attachment *last = first;
    while (last != end_ && last - first <= kSmall && last->constraint == first->constraint) ++last;
    return last;
  }

  // The labelled variables of the small constraints that a result is attached to.
  template <class Visit>
  void forEachBehind(const CSint *result, Visit visit) const {
    for (const Entry *entry = result->constraints; entry != nullptr; entry = entry->next) {
      const Attachment *begin = attachments_.get();
      const Attachment *first = std::lower_bound(begin, end_, Attachment{entry->constraint, nullptr}, byConstraint);
      const Attachment *last = endOf(first);
      if (last - first > kSmall) continue;
      for (const Attachment *each = first; each != last; ++each) forEachPlace(each->variable, visit);
    }
  }

  // All constraints of a variable concern the same positions.
  template <class Visit>
  void forEachLink(Visit visit) const {
    solver::variables.forEach([&](const CSint &v) {
      const auto add = [&](int position) {
        for (const Entry *entry = v.constraints; entry != nullptr; entry = entry->next)
          visit(Weights::Link{entry->constraint, position});
      };
      if (isLabelled(&v)) {
        forEachPlace(&v, add);
      } else {
        forEachBehind(&v, add);
      }
    });
  }

  int withoutRepetitions(int count) const {
    Weights::Link *begin = weights_.scopes_.get();
    std::sort(begin, begin + count, [](const Weights::Link &a, const Weights::Link &b) {
      return a.constraint != b.constraint ? std::less<>{}(a.constraint, b.constraint) : a.position < b.position;
    });
    return static_cast<int>(std::unique(begin, begin + count,
                                        [](const Weights::Link &a, const Weights::Link &b) {
                                          return a.constraint == b.constraint && a.position == b.position;
                                        }) -
                            begin);
  }

  // For each position where its constraints begin, in the order in which the attachments of all variables lead to them:
  // that of addresses would be another one in every run.
  bool index(int n) const {
    Weights &w = weights_;
    w.linksBegin_ = Buffer<int>(n + 1);
    w.links_ = Buffer<int>(w.count_);
    Buffer<bool> indexed(w.count_);
    if (!w.linksBegin_ || !w.links_ || !indexed) return false;
    // Counted, summed up, and filled: a begin ends where its position's links do, and goes down.
    std::fill_n(w.linksBegin_.get(), n + 1, 0);
    for (int i = 0; i < w.count_; ++i) ++w.linksBegin_[w.scopes_[i].position];
    for (int p = 1; p <= n; ++p) w.linksBegin_[p] += w.linksBegin_[p - 1];
    std::fill_n(indexed.get(), w.count_, false);
    forEachAttachment([&](const Attachment &attachment) {
      const int first = w.findScope(attachment.constraint);
      if (first == w.count_ || w.scopes_[first].constraint != attachment.constraint) return;
      if (std::exchange(indexed[first], true)) return;
      w.forEachConcerned(first, [&](int position) { w.links_[--w.linksBegin_[position]] = first; });
    });
    return true;
  }

  Weights &weights_;
  Buffer<Place> places_;
  int placeCount_ = 0;
  Buffer<Attachment> attachments_;
  const Attachment *end_ = nullptr;
};

bool Weights::collect(CSint *const *variables, int n) {
  variables_ = n;
  Buffer<std::uint64_t> weights(n);
  if (!weights || !ScopeCollector(*this).collect(variables, n)) return false;
  std::fill_n(weights.get(), n, addend_);
  weights_ = std::move(weights);
  return true;
}

int Weights::findScope(const Constraint *constraint) const {
  const Link *begin = scopes_.get();
  return static_cast<int>(
      std::lower_bound(begin, begin + count_, constraint,
                       [](const Link &link, const Constraint *c) { return std::less<>{}(link.constraint, c); }) -
      begin);
}

void Weights::noteFailure(const Constraint *constraint) {
  const int first = findScope(constraint);
  if (first == count_ || scopes_[first].constraint != constraint) return;
  bool tooLarge = false;
  forEachConcerned(first, [&](int position) {
    weights_[position] += addend_;
    tooLarge = tooLarge || weights_[position] >= kLargest;
  });
  addend_ += addend_ / 20 + 1;
  if (tooLarge) rescale();
}

void Weights::rescale() {
  for (int i = 0; i < variables_; ++i) weights_[i] = weights_[i] / 1024 + 1;
  addend_ = addend_ / 1024 + 1;
}

}  // namespace koru::solve
