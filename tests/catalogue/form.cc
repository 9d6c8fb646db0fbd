// SPDX-License-Identifier: MIT
#include "catalogue/form.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace koru::catalogue {

Form::Form(const Row &row, std::vector<int> sizes, std::vector<Wide> k, std::vector<std::vector<Wide>> lists,
           unsigned nulls)
    : row_(&row),
      sizes_(std::move(sizes)),
      k_(std::move(k)),
      constants_(std::make_shared<Constants>()),
      nulls_(nulls & ((1U << countKinds(row.kinds, mayBeNull)) - 1)) {
  for (const std::vector<Wide> &list : lists) {
    constants_->ints.emplace_back(list.begin(), list.end());
    constants_->ints.back().resize(list.size() + 4);  // an empty array has an address, too
  }
  constants_->lists = std::move(lists);
  refused_ = sizesAreRefused() || methodIsRefused();
  for (const int length : lengths_ = lengths()) arity_ += static_cast<std::size_t>(length);
}

// A negative size is an empty array to koru.h, and none to koru_extras.h.
bool Form::sizesAreRefused() const {
  const bool strict = !isOfKoruH(*row_);
  std::size_t at = 0;
  for (const char kind : std::string_view(row_->kinds)) {
    if (!isSize(kind)) continue;
    const int n = sizes_[at++];
    if (std::max(n, 0) < row_->fewestOf(kind) || (strict && n < 0)) return true;
  }
  return false;
}

// A method that is none.
bool Form::methodIsRefused() const {
  std::size_t number = 0;
  for (const char kind : std::string_view(row_->kinds)) {
    if (!isNumber(kind)) continue;
    const Wide k = k_[number++];
    if (kind == 'c' && (k < CS_METHOD_EQ || k > CS_METHOD_GT)) return true;
  }
  return false;
}

// An array is as long as the next size says.
std::vector<int> Form::lengths() const {
  const std::size_t count = std::strlen(row_->kinds);
  std::vector<int> result(count);
  std::size_t size = 0;
  std::size_t nullable = 0;
  std::size_t from = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const char kind = row_->kinds[i];
    const bool null = mayBeNull(kind) && (nulls_ >> nullable++ & 1U) != 0;
    if (isVariable(kind)) result[i] = null ? 0 : 1;
    if (isArray(kind)) result[i] = null ? 0 : INT_MAX;
    if (!isSize(kind)) continue;
    const int n = std::max(sizes_[size++], 0);
    for (; from < i; ++from) result[from] = result[from] == INT_MAX ? n : result[from];
  }
  return result;
}

std::string Form::text() const {
  std::string result = row_->name;
  for (const int n : sizes_) result += " of " + std::to_string(n);
  for (const Wide k : k_) result += " " + std::to_string(k);
  for (const std::vector<Wide> &list : constants_->lists) {
    result += " {";
    for (const Wide value : list) result += " " + std::to_string(value);
    result += " }";
  }
  if (nulls_ != 0) result += " without " + std::to_string(nulls_);
  return result;
}

Terms Form::terms(std::span<const int> x, int z) const {
  Terms t{x, {}, k_, constants_->lists, z};
  std::size_t at = 0;
  std::size_t array = 0;
  std::size_t nullable = 0;
  for (std::size_t i = 0; i < lengths_.size(); ++i) {
    const char kind = row_->kinds[i];
    const auto length = static_cast<std::size_t>(lengths_[i]);
    const bool null = mayBeNull(kind) && (nulls_ >> nullable++ & 1U) != 0;
    if (kind != 'v' && (isArray(kind) || kind == 'o')) {
      static constexpr int kNothing = 0;
      t.arrays[array++] = null ? std::span<const int>() : std::span<const int>(length > 0 ? &x[at] : &kNothing, length);
    }
    at += length;
  }
  return t;
}

bool Form::holds(std::span<const int> x, int z) const {
  const Terms t = terms(x, z);
  if (refused_) return false;
  if (row_->meaning.holds != nullptr) return row_->meaning.holds(t);
  return row_->meaning.value(t) == Value(z);
}

Value Form::value(std::span<const int> x) const { return refused_ ? std::nullopt : row_->meaning.value(terms(x)); }

std::vector<Actual> Form::actuals(CSint **x) const {
  std::vector<Actual> result(lengths_.size());
  std::size_t size = 0;
  std::size_t number = 0;
  std::size_t list = 0;
  std::size_t nullable = 0;
  for (std::size_t i = 0; i < result.size(); ++i) {
    const char kind = row_->kinds[i];
    const bool null = mayBeNull(kind) && (nulls_ >> nullable++ & 1U) != 0;
    if (isVariable(kind)) result[i].variable = null ? nullptr : *x;
    if (isArray(kind)) result[i].variables = null ? nullptr : x;
    if (isSize(kind)) result[i].number = sizes_[size++];
    if (isNumber(kind)) result[i].number = k_[number++];
    if (isList(kind)) {
      result[i].ints = constants_->ints[list].data();
      result[i].longs = constants_->lists[list].data();
      ++list;
    }
    x += lengths_[i];
  }
  return result;
}

Answer Form::call(CSint **x) const {
  std::vector<Actual> given = actuals(x);
  return row_->keepsArrays || isOfKoruH(*row_) ? row_->door.call(given.data()) : lend(given);
}

// In arrays that hold something else as soon as the call returns, and are gone.
Answer Form::lend(std::vector<Actual> &given) const {
  std::vector<std::vector<CSint *>> arrays(given.size());
  Constants lent = *constants_;
  std::size_t list = 0;
  for (std::size_t i = 0; i < given.size(); ++i) {
    CSint **const x = given[i].variables;
    if (x != nullptr) {
      arrays[i].assign(x, x + lengths_[i]);
      arrays[i].push_back(nullptr);  // an empty array has an address, too
      given[i].variables = arrays[i].data();
    }
    if (!isList(row_->kinds[i])) continue;
    given[i].ints = lent.ints[list].data();
    given[i].longs = lent.lists[list].data();
    ++list;
  }
  const Answer answer = row_->door.call(given.data());
  for (std::vector<CSint *> &array : arrays) std::ranges::fill(array, nullptr);
  for (std::vector<int> &each : lent.ints) std::ranges::fill(each, 77);
  for (std::vector<Wide> &each : lent.lists) std::ranges::fill(each, 77);
  return answer;
}

bool Form::post(CSint **x, CSint *&result) const {
  const Answer answer = call(x);
  result = answer.result;
  return row_->saysNothing || answer.number != 0;
}

std::vector<std::size_t> listLengths(const Row &row, const std::vector<int> &sizes, const std::vector<Wide> &k) {
  const std::string_view kinds = row.kinds;
  const auto sizeAt = [&](std::size_t i) { return std::max(sizes[countKinds(kinds.substr(0, i), isSize)], 0); };
  std::vector<std::size_t> result;
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    if (!isList(kinds[i])) continue;
    const std::size_t before = kinds.substr(0, i).rfind('n');
    const std::size_t after = kinds.find(kinds[i] == 'm' ? 'r' : 'n', i);
    const std::size_t ints = countKinds(kinds.substr(0, i), isNumber);
    Wide length = kinds[i] == 'T' ? k[ints] * k[ints + 1] : sizeAt(after != std::string_view::npos ? after : before);
    if (kinds[i] == 'm') length *= sizeAt(before);
    result.push_back(static_cast<std::size_t>(length));
  }
  return result;
}

Form exampleOf(const Row &row) {
  std::vector<int> sizes = row.example.sizes;
  if (sizes.empty()) sizes.assign(countKinds(row.kinds, isSize), 3);
  return exampleOf(row, sizes);
}

Form exampleOf(const Row &row, const std::vector<int> &sizes, unsigned nulls) {
  std::vector<std::vector<Wide>> lists = row.example.lists;
  const std::vector<std::size_t> lengths = listLengths(row, sizes, row.example.k);
  for (std::size_t i = 0; i < lists.size(); ++i) {
    const std::vector<Wide> given = lists[i];
    lists[i].resize(lengths[i]);
    for (std::size_t j = 0; j < lengths[i] && !given.empty(); ++j) lists[i][j] = given[j % given.size()];
  }
  return Form(row, sizes, row.example.k, std::move(lists), nulls);
}

}  // namespace koru::catalogue
