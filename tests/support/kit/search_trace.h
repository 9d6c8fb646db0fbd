// SPDX-License-Identifier: MIT
// Writes down every call that the selector-driven engine makes: the seven hooks and, through selectors that hand on to
// others, their three functions. A line each, such as "before 0 2 EQ 5": depth, index, decision.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "koru.h"

namespace koru::test {

inline std::string decisionText(const CSvalueSelection &r) {
  static const char *const names[] = {"EQ", "NEQ", "LE", "LT", "GE", "GT"};
  return std::string(names[r.method]) + " " + std::to_string(r.value);
}

inline std::string partText(int number) { return std::to_string(number); }
inline std::string partText(bool answer) { return answer ? "yes" : "no"; }
inline std::string partText(const CSvalueSelection *r) { return decisionText(*r); }

template <class... Parts>
std::string lineOf(std::string name, Parts... parts) {
  ((name += " " + partText(parts)), ...);
  return name;
}

// One at a time: the selectors, which get no pointer of the user's, find the trace that was made last.
class SearchTrace {
 public:
  SearchTrace() : notify_(cs_createSearchNotify(this), cs_freeSearchNotify) {
    current = this;
    cs_searchNotifySetSearchStart(notify_.get(), start);
    cs_searchNotifySetSearchEnd(notify_.get(), end);
    cs_searchNotifySetBeforeValueSelection(notify_.get(), before);
    cs_searchNotifySetAfterValueSelection(notify_.get(), after);
    cs_searchNotifySetEnter(notify_.get(), enter);
    cs_searchNotifySetLeave(notify_.get(), leave);
    cs_searchNotifySetFound(notify_.get(), found);
  }
  SearchTrace(const SearchTrace &) = delete;
  SearchTrace &operator=(const SearchTrace &) = delete;
  ~SearchTrace() { current = nullptr; }

  const CSsearchNotify *hooks() const { return notify_.get(); }

  // Selectors that log "init", "next" and "end" and ask those given; null stays null.
  CSvalueSelector **logging(std::vector<CSvalueSelector *> selectors) {
    asked_ = std::move(selectors);
    logging_.clear();
    for (CSvalueSelector *each : asked_) logging_.push_back(each != nullptr ? &kLogging : nullptr);
    return logging_.data();
  }

  std::vector<std::string> lines;
  std::function<void(const std::string &)> onLine;       // after each
  std::function<bool(CSint **array, int size)> accepts;  // what found answers, true when empty
  std::function<bool(int index)> begins;                 // what init answers where the selector does not refuse
  std::function<bool(int index)> ends;

 private:
  template <class... Parts>
  void log(const char *name, Parts... parts) {
    lines.push_back(lineOf(name, parts...));
    if (onLine) onLine(lines.back());
  }
  static SearchTrace &of(void *extra) { return *static_cast<SearchTrace *>(extra); }

  static void start(int limit, CSint **, int size, void *extra) { of(extra).log("start", limit, size); }
  static void end(bool result, int fails, int limit, CSint **, int size, void *extra) {
    of(extra).log("end", result, fails, limit, size);
  }
  static void before(int depth, int index, const CSvalueSelection *r, CSint **, int, void *extra) {
    of(extra).log("before", depth, index, r);
  }
  static void after(bool result, int depth, int index, const CSvalueSelection *r, CSint **, int, void *extra) {
    of(extra).log("after", result, depth, index, r);
  }
  static void enter(int depth, int index, CSint **, int, void *extra) { of(extra).log("enter", depth, index); }
  static void leave(int depth, int index, CSint **, int, void *extra) { of(extra).log("leave", depth, index); }
  static bool found(int depth, CSint **array, int size, void *extra) {
    of(extra).log("found", depth);
    return !of(extra).accepts || of(extra).accepts(array, size);
  }

  static bool initSelector(int index, CSint **array, int size, void *state) {
    const bool begins = cs_initValueSelector(current->asked_[at(index)], index, array, size, state);
    current->log("init", index);
    return begins && (!current->begins || current->begins(index));
  }
  static bool nextValue(CSvalueSelection *r, int index, CSint **array, int size, void *state) {
    const bool more = cs_selectNextValue(r, current->asked_[at(index)], index, array, size, state);
    if (more)
      current->log("next", index, r);
    else
      current->log("next", index, false);
    return more;
  }
  static bool endSelector(int index, CSint **array, int size, void *state) {
    const bool ends = cs_endValueSelector(current->asked_[at(index)], index, array, size, state);
    current->log("endSelector", index);
    return ends && (!current->ends || current->ends(index));
  }
  static std::size_t at(int index) { return static_cast<std::size_t>(index); }

  static inline SearchTrace *current = nullptr;
  static inline CSvalueSelector kLogging = {initSelector, nextValue, endSelector};

  std::unique_ptr<CSsearchNotify, void (*)(CSsearchNotify *)> notify_;
  std::vector<CSvalueSelector *> asked_;
  std::vector<CSvalueSelector *> logging_;
};

// The index of the first variable that is not bound.
inline int firstFree(CSint **array, int size) {
  for (int i = 0; i < size; ++i)
    if (cs_getMin(array[i]) < cs_getMax(array[i])) return i;
  return -1;
}

inline std::vector<std::string> linesOf(const std::string &text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t stop = text.find('\n', at);
    lines.push_back(text.substr(at, stop - at));
    at = stop == std::string::npos ? text.size() : stop + 1;
  }
  return lines;
}

}  // namespace koru::test
