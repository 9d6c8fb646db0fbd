// SPDX-License-Identifier: MIT
// The example of a row, posted in the running solver.
#pragma once

#include "catalogue/form.h"

namespace koru::catalogue {

class Posting {
 public:
  // On the given variables, and further ones over 0..9.
  explicit Posting(const Row &row, std::vector<CSint *> given = {})
      : row_(row), form_(exampleOf(row)), array_(std::move(given)) {
    array_.resize(std::min(array_.size(), form_.arity()));
    while (array_.size() < form_.arity()) array_.push_back(cs_createCSint(0, 9));
  }
  Posting(const Posting &) = delete;
  Posting &operator=(const Posting &) = delete;

  bool post() { return form_.post(array_.data(), result_); }

  // All of them, the result last.
  std::vector<CSint *> variables() const {
    std::vector<CSint *> all = array_;
    if (result_ != nullptr) all.push_back(result_);
    return all;
  }

  // Gives the variables values that contradict the constraint, until one is refused.
  bool violate() const {
    const std::vector<CSint *> all = variables();
    for (std::size_t i = 0; i < all.size(); ++i) {
      const int value = row_.example.violated[i];
      if (!(value < 0 ? cs_NEQ(all[i], -value) : cs_EQ(all[i], value))) return false;
    }
    return true;
  }

 private:
  const Row &row_;
  Form form_;
  std::vector<CSint *> array_;  // posters may keep it
  CSint *result_ = nullptr;
};

}  // namespace koru::catalogue
