// SPDX-License-Identifier: MIT
// A constraint with everything but its variables: what its arrays are to hold and its ints. Posted on variables, asked
// of values.
#pragma once

#include <memory>
#include <string>

#include "catalogue/row.h"

namespace koru::catalogue {

class Form {
 public:
  // A list is as long as it is; n and r are the sizes that are handed over. `nulls` has a bit for each o and O, in
  // order, that is null.
  Form(const Row &row, std::vector<int> sizes, std::vector<Wide> k = {}, std::vector<std::vector<Wide>> lists = {},
       unsigned nulls = 0);

  const Row &row() const { return *row_; }
  bool isRefused() const { return refused_; }   // for its sizes or a method
  std::size_t arity() const { return arity_; }  // variables, without the result
  std::string text() const;                     // "cs_IfEq 1 2"

  std::span<const std::vector<Wide>> lists() const { return constants_->lists; }
  Terms terms(std::span<const int> x, int z = 0) const;
  // The result counts where there is one. Nothing holds with sizes that are refused.
  bool holds(std::span<const int> x, int z = 0) const;
  Value value(std::span<const int> x) const;  // where the row has one

  // What the call is given for variables that lie one behind the other. What koru_extras.h is given is the caller's own
  // again when the call returns, unless the row says otherwise: such arrays are overwritten.
  std::vector<Actual> actuals(CSint **x) const;
  Answer call(CSint **x) const;
  // Whether it was accepted, as far as the answer says.
  bool post(CSint **x, CSint *&result) const;

 private:
  struct Constants {
    std::vector<std::vector<int>> ints;
    std::vector<std::vector<Wide>> lists;
  };

  std::vector<int> lengths() const;
  Answer lend(std::vector<Actual> &given) const;
  bool sizesAreRefused() const;
  bool methodIsRefused() const;

  const Row *row_;
  std::vector<int> sizes_;
  std::vector<Wide> k_;
  std::shared_ptr<Constants> constants_;  // posters may keep them
  unsigned nulls_;
  std::vector<int> lengths_;  // of variables, by argument
  std::size_t arity_ = 0;
  bool refused_;
};

// How long the lists are that go with sizes and ints.
std::vector<std::size_t> listLengths(const Row &row, const std::vector<int> &sizes, const std::vector<Wide> &k);

// The example of a row, and the same with arrays of other sizes, its lists repeated or cut.
Form exampleOf(const Row &row);
Form exampleOf(const Row &row, const std::vector<int> &sizes, unsigned nulls = 0);

// How many letters of the row's kinds the test takes.
inline std::size_t countKinds(std::string_view kinds, bool (*test)(char)) {
  return static_cast<std::size_t>(std::ranges::count_if(kinds, test));
}

}  // namespace koru::catalogue
