// SPDX-License-Identifier: MIT
// A row for each constraint of the catalogue: it is refused without one of its pointers; what it accepts keeps every
// solution, counted over all values of x, y and b, and over the ends of the int range for w; and what it refuses has
// none.
#include <algorithm>
#include <climits>
#include <cstring>
#include <map>
#include <set>

#include "catalogue/form.h"
#include "limits/table.h"

namespace koru::test::limits {
namespace {

using catalogue::Form;
using catalogue::Row;
using catalogue::Wide;

constexpr std::size_t kSize = 3;  // of arrays and lists; of a matrix and a table as many again

// "s" for a size, "v" for an int; a list has three.
std::string intsOf(const Row &row) {
  std::string ints;
  const bool table = std::strchr(row.kinds, 'T') != nullptr;
  std::size_t numbers = 0;
  for (const char kind : std::string(row.kinds)) {
    if (catalogue::isSize(kind)) ints += 's';
    if (catalogue::isNumber(kind)) ints += table && numbers++ < 2 ? 's' : 'v';
    if (catalogue::isList(kind)) ints += "vvv";
  }
  return ints;
}

// Pointers: each argument that is one and must not be null, and the first variable of each array.
int pointersOf(const Row &row) {
  int count = 0;
  for (const char kind : std::string(row.kinds))
    count += kind == 'a' ? 2 : kind == 'v' || catalogue::isList(kind) ? 1 : 0;
  return count;
}

// The same end of a wider range.
Wide widened(int end, char kind) {
  if (kind == 'b') return end > 0 ? 1 : 0;
  if (kind != 'l' && kind != 'L') return end;
  return end < -1 ? Wide{end} - INT_MIN + LLONG_MIN : end > 1 ? Wide{end} - INT_MAX + LLONG_MAX : end;
}

std::vector<Wide> drawList(char kind, const Arguments &a, std::size_t first) {
  const std::size_t length = kind == 'm' || kind == 'T' ? kSize * kSize : kSize;
  std::vector<Wide> list;
  for (std::size_t i = 0; i < length; ++i) list.push_back(widened(a[first + i % kSize], kind));
  return list;
}

class Call {
 public:
  Call(const Row &row, Operands &o, const Arguments &a, bool wide) : row_(row), o_(o), a_(a) {
    // Variables of arrays and single ones: x, y and b by turns.
    for (std::size_t i = 0; i < 3 * catalogue::kMostArrays; ++i)
      pool_.push_back(i == 0 && wide ? o.w : o.array[(i + i / kSize) % kSize]);
    for (const char kind : std::string(row.kinds)) add(kind);
    fitSizes();
  }

  // With what the sizes leave of the arrays.
  Form form() const { return {row_, sizes_, k_, lists_}; }
  const std::vector<CSint *> &variables() const { return x_; }
  catalogue::Answer run() const { return row_.door.call(actuals_.data()); }

 private:
  void add(char kind) {
    catalogue::Actual &actual = actuals_.emplace_back();
    if (catalogue::isSize(kind)) {
      actual.number = sizes_.emplace_back(a_[int_++]);
    } else if (catalogue::isNumber(kind)) {
      actual.number = k_.emplace_back(widened(a_[int_++], kind));
    } else if (catalogue::isList(kind)) {
      addList(kind, actual);
    } else if (catalogue::isArray(kind)) {
      addArray(kind, actual);
    } else {
      CSint *const v = pool_[next_++];
      actual.variable = kind == 'v' ? a_.pointer(pointer_++, v) : v;
      groups_.push_back({v});
    }
  }

  void addList(char kind, catalogue::Actual &actual) {
    lists_.push_back(drawList(kind, a_, int_));
    int_ += kSize;
    const std::vector<int> ints(lists_.back().begin(), lists_.back().end());
    actual.ints = a_.pointer(pointer_, o_.keep(ints));
    actual.longs = a_.pointer(pointer_, o_.longs.emplace_back(lists_.back()).data());
    ++pointer_;
  }

  void addArray(char kind, catalogue::Actual &actual) {
    std::vector<CSint *> &array = o_.arrays.emplace_back();
    for (std::size_t i = 0; i < kSize; ++i) array.push_back(pool_[next_++]);
    groups_.push_back(array);
    if (kind == 'a') array[0] = a_.pointer(pointer_ + 1, array[0]);
    actual.variables = kind == 'a' ? a_.pointer(pointer_, array.data()) : array.data();
    if (kind == 'a') pointer_ += 2;
  }

  // As a form has them: what a size below 0 leaves is nothing, and lists are as long as they are used.
  void fitSizes() {
    const std::vector<std::size_t> lengths = catalogue::listLengths(row_, sizes_, k_);
    for (std::size_t i = 0; i < lists_.size(); ++i) lists_[i].resize(std::min(lists_[i].size(), lengths[i]));
    std::size_t group = 0;
    std::size_t size = 0;
    std::vector<std::size_t> waiting;
    for (const char kind : std::string(row_.kinds)) {
      if (catalogue::isArray(kind)) waiting.push_back(group);
      if (catalogue::isArray(kind) || catalogue::isVariable(kind)) ++group;
      if (!catalogue::isSize(kind)) continue;
      for (const std::size_t each : waiting) groups_[each].resize(static_cast<std::size_t>(std::max(sizes_[size], 0)));
      waiting.clear();
      ++size;
    }
    for (const std::vector<CSint *> &each : groups_) x_.insert(x_.end(), each.begin(), each.end());
  }

  const Row &row_;
  Operands &o_;
  const Arguments &a_;
  std::vector<CSint *> pool_;
  std::size_t next_ = 0;
  std::size_t int_ = 0;
  int pointer_ = 0;
  std::vector<int> sizes_;
  std::vector<Wide> k_;
  std::vector<std::vector<Wide>> lists_;
  std::vector<std::vector<CSint *>> groups_;  // the variables, by argument
  std::vector<CSint *> x_;
  std::vector<catalogue::Actual> actuals_;
};

// Which values stand in solutions, by variable, the result last.
class Needed {
 public:
  Needed(const Form &form, const std::vector<CSint *> &x, const Operands &o) : form_(form), x_(x), variables_(x) {
    std::ranges::sort(variables_);
    variables_.erase(std::unique(variables_.begin(), variables_.end()), variables_.end());
    for (const CSint *v : variables_) {
      domains_.emplace_back(std::begin(kEndValues), std::end(kEndValues));
      if (v != o.w) domains_.back() = v == o.b ? std::vector{0, 1} : interval(-5, 5);
    }
    forEach(0);
  }

  bool any = false;
  bool fits = true;  // no result lies beyond the ints
  Wide least = INT_MAX;
  Wide greatest = INT_MIN;
  bool distinct() const { return variables_.size() == x_.size(); }

  bool areLeft(CSint *result) const {
    for (const auto &[v, value] : values_)
      if (!cs_isIn(v, value)) return false;
    return std::ranges::all_of(results_, [&](int z) { return cs_isIn(result, z); });
  }

 private:
  static std::vector<int> interval(int low, int high) {
    std::vector<int> all;
    for (int value = low; value <= high; ++value) all.push_back(value);
    return all;
  }

  void forEach(std::size_t i) {
    if (i == variables_.size()) return look();
    for (const int value : domains_[i]) {
      now_[variables_[i]] = value;
      forEach(i + 1);
    }
  }

  void look() {
    std::vector<int> x;
    for (CSint *v : x_) x.push_back(now_.at(v));
    const Row &row = form_.row();
    if (!row.makes()) {
      if (form_.holds(x)) note();
    } else if (row.meaning.value != nullptr) {
      if (const catalogue::Value z = form_.value(x)) noteResult(*z);
    } else {
      for (int z = row.results.low; z <= row.results.high; ++z)
        if (form_.holds(x, z)) noteResult(z);
    }
  }

  void note() {
    any = true;
    values_.insert(now_.begin(), now_.end());
  }
  void noteResult(Wide z) {
    if (z < INT_MIN || z > INT_MAX) return void(fits = false);
    note();
    results_.insert(static_cast<int>(z));
    least = std::min(least, z);
    greatest = std::max(greatest, z);
  }

  const Form &form_;
  const std::vector<CSint *> &x_;
  std::vector<CSint *> variables_;
  std::vector<std::vector<int>> domains_;
  std::map<CSint *, int> now_;
  std::set<std::pair<CSint *, int>> values_;
  std::set<int> results_;
};

bool agrees(const Row &row, Operands &o, const Arguments &a, bool wide) {
  const Call call(row, o, a, wide);
  const catalogue::Answer answer = call.run();
  const bool accepted = answer.number != 0;
  const Form form = call.form();
  if (a.anyNull() || form.isRefused()) return row.saysNothing || !accepted;
  const Needed needed(form, call.variables(), o);
  if (!accepted && !row.saysNothing) return !needed.any || row.mayRefuse || refused() || cs_getErr() == CS_ERR_OVERFLOW;
  const bool exact = !wide && needed.any && needed.fits && needed.distinct() && row.makes() &&
                     row.meaning.value != nullptr && row.ofResult >= catalogue::Consistency::kBounds;
  if (exact && (cs_getMin(answer.result) != needed.least || cs_getMax(answer.result) != needed.greatest)) return false;
  return needed.areLeft(answer.result);
}

}  // namespace

LimitsRow defaultRow(const catalogue::Row &row) {
  return {row.name, intsOf(row), pointersOf(row), [&row](Operands &o, const Arguments &a) {
            const bool right = agrees(row, o, a, false);
            cs_restoreAndSaveContext();
            cs_initErr();
            return right && (a.anyNull() || agrees(row, o, a, true));
          }};
}

}  // namespace koru::test::limits
