// SPDX-License-Identifier: MIT
// Rows of the table: searches, selections, selectors and hooks.
#include "koru_extras.h"
#include "traces/calls.h"

namespace koru::traces {
namespace {

// A selection by number: the four of the library, a callback of the script, or none.
CSfindFreeVar selection(const Arg &which, const Arg &script) {
  static const CSfindFreeVar builtIn[] = {cs_findFreeVar, cs_findFreeVarNbElements, cs_findFreeVarNbElementsMin,
                                          cs_findFreeVarNbConstraints};
  if (which.number >= 0 && which.number < 4) return builtIn[which.number];
  return Scripted<CSfindFreeVar>::slot(script.number);
}

void search(Machine &m, const Line &line) {
  Reader in(m, line);
  CSint **array = in.next<CSint **>();
  const int size = in.next<int>();
  m.answer(line, cs_search(array, size, selection(line.args[2], line.args[3])));
}

void searchFail(Machine &m, const Line &line) {
  Reader in(m, line);
  CSint **array = in.next<CSint **>();
  const int size = in.next<int>();
  m.answer(line, cs_searchFail(array, size, selection(line.args[2], line.args[3]), line.args[4].number));
}

void searchVariadic(Machine &m, const Line &line) {
  Reader in(m, line);
  CSint **v = in.next<CSint **>();
  const int n = v == nullptr ? 0 : std::min(in.next<int>(), 3);
  const CSfindFreeVar f = selection(line.args[2], line.args[3]);
  if (n < 1) return m.answer(line, cs_Vsearch(n, nullptr, f));
  if (n == 1) return m.answer(line, cs_Vsearch(1, v[0], f));
  if (n == 2) return m.answer(line, cs_Vsearch(2, v[0], v[1], f));
  m.answer(line, cs_Vsearch(3, v[0], v[1], v[2], f));
}

void findAll(Machine &m, const Line &line) {
  Reader in(m, line);
  CSint **array = in.next<CSint **>();
  const int size = in.next<int>();
  const auto found = Scripted<CSfoundCallback>::slot(line.args[4].number);
  m.answer(line, cs_findAll(array, size, selection(line.args[2], line.args[3]), found));
}

void minimize(Machine &m, const Line &line) {
  Reader in(m, line);
  CSint **array = in.next<CSint **>();
  const int size = in.next<int>();
  const auto found = Scripted<CSfoundCostCallback>::slot(line.args[5].number);
  CSint *cost = m.variable(line.args[4].number);
  m.answer(line, cs_minimize(array, size, selection(line.args[2], line.args[3]), cost, found));
}

// Rows of the array, of two columns each.
struct Matrix {
  CSint ***rows;
  int count;
  int columns;
  Matrix(Machine &m, const Line &line) : columns(std::clamp(line.args[2].number, -1, 2)) {
    CSint **array = m.array(line.args[0].list);
    const int available = static_cast<int>(line.args[0].list.size()) / 2;
    std::vector<CSint **> &kept = m.kept().matrices.emplace_back();
    for (int row = 0; row < available; ++row) kept.push_back(array + 2 * row);
    kept.push_back(nullptr);
    rows = line.args[0].number == kNull ? nullptr : kept.data();
    count = std::min(line.args[1].number, available);
  }
};

void searchMatrix(Machine &m, const Line &line) {
  const Matrix matrix(m, line);
  m.answer(line, cs_searchMatrix(matrix.rows, matrix.count, matrix.columns,
                                 Scripted<CSfindFreeRow>::slot(line.args[3].number),
                                 Scripted<CSfindFreeVarInRow>::slot(line.args[4].number),
                                 Scripted<CSmatrixCriteria>::slot(line.args[5].number)));
}

void searchMatrixFail(Machine &m, const Line &line) {
  const Matrix matrix(m, line);
  m.answer(line, cs_searchMatrixFail(matrix.rows, matrix.count, matrix.columns,
                                     Scripted<CSfindFreeRow>::slot(line.args[3].number),
                                     Scripted<CSfindFreeVarInRow>::slot(line.args[4].number),
                                     Scripted<CSmatrixCriteria>::slot(line.args[5].number), line.args[6].number));
}

// How a search object is to search, by number: digits in changing bases.
class OptionsByNumber {
 public:
  OptionsByNumber(int number, CSint *cost) : rest_(static_cast<unsigned>(number)) {
    options_.size = sizeof options_;
    options_.order = digit(CS_ORDER_HOST);
    if (digit(4) == 0) options_.order = CS_ORDER_ACTIVITY;
    options_.value = digit(CS_VALUE_HOST);
    options_.branching = digit(2);
    options_.lastConflict = digit(2) == 1;
    options_.randomTies = digit(2) == 1;
    options_.guided = digit(2) == 1;
    options_.restarts = digit(4);
    options_.restartFails = 1 + digit(3);
    if (digit(8) == 0) options_.choicePoints = 1 + digit(20);
    if (cost == nullptr || digit(2) == 0) return;
    (digit(2) == 0 ? options_.minimize : options_.maximize) = cost;
    options_.neighbours = digit(CS_NEIGHBOURS_HOST);
    options_.neighbourFails = 1 + digit(3);
  }
  const CSsearchOptions &options() const { return options_; }

 private:
  int digit(unsigned base) {
    const unsigned result = rest_ % base;
    rest_ = rest_ / base * 2654435761U + rest_ / base;
    return static_cast<int>(result);
  }

  unsigned rest_;
  CSsearchOptions options_{};
};

// A search object from its making to its end: everything is as before then. Answers 0 when it has proved that there is
// nothing.
void searchObject(Machine &m, const Line &line) {
  constexpr int kMostSolutions = 50;
  Reader in(m, line);
  CSint **array = in.next<CSint **>();
  const int size = in.next<int>();
  CSint *cost = in.next<CSint *>();
  const OptionsByNumber how(in.next<int>(), cost);
  const int contexts = solver::contexts.count();
  CSsearch *search = cs_createSearch(array, size);
  cs_setSearchOptions(search, &how.options());
  for (int i = 0; i < kMostSolutions && cs_nextSolution(search) == CS_STATUS_SOLUTION; ++i) continue;
  const CSstatus status = cs_getSearchStatus(search);
  const bool nothing = status == CS_STATUS_EXHAUSTED && cs_getBestSolution(search) == nullptr;
  if (search != nullptr && !cs_freeSearch(search)) m.fail("a search object cannot be freed");
  if (solver::contexts.count() != contexts) m.fail("a search object leaves contexts open");
  m.answer(line, nothing ? 0 : 1);
}

template <auto F>
void select(Machine &m, const Line &line) {
  Reader in(m, line);
  CSint **array = in.next<CSint **>();
  const int size = in.next<int>();
  const CSint *v = F(array, size);
  m.answer(line, static_cast<int>(std::find(array, array + (v == nullptr ? 0 : size), v) - array));
}

// A selector asked by hand: for the variable at the position, if there is one, with a word of state.
template <auto F>
void ask(Machine &m, const Line &line) {
  Reader in(m, line);
  CSvalueSelector *selector = in.next<CSvalueSelector *>();
  CSint **array = in.next<CSint **>();
  const int size = in.next<int>();
  const int index = size < 1 ? kNull : std::min(line.args[3].number, size - 1);
  void *state = nullptr;
  m.answer(line, F(selector, index, array, size, &state));
}

bool nextOnce(CSvalueSelector *selector, int index, CSint **array, int size, void *state) {
  CSvalueSelection decision{};
  cs_initValueSelector(selector, index, array, size, state);
  return cs_selectNextValue(&decision, selector, index, array, size, state) && decision.method >= 0;
}

void decide(Machine &m, const Line &line) {
  const CSvalueSelection decision{static_cast<int>(static_cast<unsigned>(line.args[1].number) % 6),
                                  line.args[2].number};
  m.answer(line, cs_selectValue(m.variable(line.args[0].number), line.args[1].number < 0 ? nullptr : &decision));
}

void freeSelector(Machine &m, const Line &line) { m.forgetSelector(line.args[0].number); }
void freeHooks(Machine &m, const Line &line) { m.forgetHooks(line.args[0].number); }

using enum Group;

const Row kRows[] = {
    {"cs_search", 'b', "anis", kSearch, 8, search},
    {"cs_searchFail", 'b', "anisi", kSearch, 4, searchFail},
    {"cs_Vsearch", 'b', "anis", kSearch, 3, searchVariadic},
    {"cs_findAll", 'b', "aniss", kSearch, 6, findAll},
    {"cs_minimize", 'b', "anisvs", kSearch, 6, minimize},
    {"cs_searchCriteria", 'b', "anss", kSearch, 4, call<cs_searchCriteria>},
    {"cs_searchCriteriaFail", 'b', "anssi", kSearch, 3, call<cs_searchCriteriaFail>},
    {"cs_searchMatrix", 'b', "aiisss", kSearch, 3, searchMatrix},
    {"cs_searchMatrixFail", 'b', "aiisssi", kSearch, 3, searchMatrixFail},
    {"cs_searchValueSelectorFail", 'b', "aQnsih", kSearch, 8, call<cs_searchValueSelectorFail>},
    {"cs_searchValueSelectorRestartNG", 'b', "aQnssxigh", kSearch, 8, call<cs_searchValueSelectorRestartNG>},
    {"cs_nextSolution", 'b', "anvi", kSearch, 8, searchObject},
    {"cs_cancelSearch", '-', "", kSearch, 1, call<cs_cancelSearch>},
    {"cs_findFreeVar", 'b', "an", kQuery, 1, select<cs_findFreeVar>},
    {"cs_findFreeVarNbElements", 'b', "an", kQuery, 1, select<cs_findFreeVarNbElements>},
    {"cs_findFreeVarNbElementsMin", 'b', "an", kQuery, 1, select<cs_findFreeVarNbElementsMin>},
    {"cs_findFreeVarNbConstraints", 'b', "an", kQuery, 1, select<cs_findFreeVarNbConstraints>},
    {"cs_getNbFails", 'b', "", kQuery, 1, call<cs_getNbFails>},
    {"cs_getNbChoicePoints", 'b', "", kQuery, 1, call<cs_getNbChoicePoints>},
    {"cs_printStats", '-', "", kOutput, 1, call<cs_printStats>},
    {"cs_fprintStats", '-', "x", kOutput, 2, call<cs_fprintStats>},

    {"cs_createValueSelector", 'q', "sss", kSelector, 4, call<cs_createValueSelector>},
    {"cs_getValueSelector", 'q', "i", kSelector, 8, call<cs_getValueSelector>},
    {"cs_initValueSelector", 'b', "qani", kSelector, 1, ask<cs_initValueSelector>},
    {"cs_selectNextValue", 'b', "qani", kSelector, 1, ask<nextOnce>},
    {"cs_endValueSelector", 'b', "qani", kSelector, 1, ask<cs_endValueSelector>},
    {"cs_selectValue", 'b', "vii", kSelector, 2, decide},
    {"cs_freeValueSelector", '-', "q", kSelector, 1, freeSelector},

    {"cs_createSearchNotify", 'h', "x", kSelector, 4, call<cs_createSearchNotify>},
    {"cs_searchNotifySetSearchStart", '-', "hs", kSelector, 1, call<cs_searchNotifySetSearchStart>},
    {"cs_searchNotifySetSearchEnd", '-', "hs", kSelector, 1, call<cs_searchNotifySetSearchEnd>},
    {"cs_searchNotifySetBeforeValueSelection", '-', "hs", kSelector, 1, call<cs_searchNotifySetBeforeValueSelection>},
    {"cs_searchNotifySetAfterValueSelection", '-', "hs", kSelector, 1, call<cs_searchNotifySetAfterValueSelection>},
    {"cs_searchNotifySetEnter", '-', "hs", kSelector, 1, call<cs_searchNotifySetEnter>},
    {"cs_searchNotifySetLeave", '-', "hs", kSelector, 1, call<cs_searchNotifySetLeave>},
    {"cs_searchNotifySetFound", '-', "hs", kSelector, 1, call<cs_searchNotifySetFound>},
    {"cs_freeSearchNotify", '-', "h", kSelector, 1, freeHooks},
};

}  // namespace

std::span<const Row> searchRows() { return kRows; }

}  // namespace koru::traces
