// SPDX-License-Identifier: MIT
// A case of a constraint that its row in the catalogue says enough about.
#include <set>

#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

using catalogue::Form;
using catalogue::Row;

constexpr int kMostPositions = 7;  // that are enumerated
constexpr int kPostings = 2000;    // of all forms and patterns together
constexpr int kForms = 24;

// Ints and lists that are drawn for a row; the lists are as long as their size says.
class Draws {
 public:
  Draws(const Row &row, std::mt19937 &random) : row_(row), random_(random) {}

  std::optional<Form> form() {
    drawNumbers();
    for (std::size_t i = 0; row_.kinds[i] != '\0'; ++i) drawLists(i);
    const auto nulls = static_cast<unsigned>(between(0, 3));
    Form form(row_, sizes_, numbers_, lists_, nulls);
    if (static_cast<int>(form.arity()) > kMostPositions) return std::nullopt;
    return form;
  }

 private:
  int between(int low, int high) { return low + static_cast<int>(random_() % static_cast<unsigned>(high - low + 1)); }

  void drawNumbers() {
    const bool table = std::string_view(row_.kinds).find('T') != std::string_view::npos;
    for (const char kind : std::string_view(row_.kinds)) {
      if (catalogue::isSize(kind)) sizes_.push_back(between(row_.fewest, 4));
      if (kind == 'i') numbers_.push_back(table ? between(1, 3) : between(-2, 4));
      if (kind == 'l') numbers_.push_back(between(-6, 9));
      if (kind == 'b') numbers_.push_back(between(0, 1));
      if (kind == 'c') numbers_.push_back(between(CS_METHOD_EQ, CS_METHOD_GT));
    }
  }

  // The list at a position of the kinds.
  void drawLists(std::size_t at) {
    const std::string_view kinds = row_.kinds;
    const char kind = kinds[at];
    if (!catalogue::isList(kind)) return;
    int length = kind == 'T' ? product(at) : sizeAfter(at, kind == 'm' ? 'r' : 'n');
    if (kind == 'm') length *= sizeBefore(at);
    std::vector<catalogue::Wide> &list = lists_.emplace_back();
    for (int i = 0; i < length; ++i)
      list.push_back(kind == 'L' ? between(-3, 3) : between(row_.domain.low, row_.domain.high));
  }

  int sizeAfter(std::size_t at, char letter) const {
    const std::string_view kinds = row_.kinds;
    const std::size_t end = kinds.find(letter, at);
    if (end == std::string_view::npos) return sizeBefore(at);
    return sizes_[static_cast<std::size_t>(std::ranges::count_if(kinds.substr(0, end), catalogue::isSize))];
  }
  int sizeBefore(std::size_t at) const {
    const auto sizes = std::ranges::count_if(std::string_view(row_.kinds).substr(0, at), catalogue::isSize);
    return sizes > 0 ? sizes_[static_cast<std::size_t>(sizes - 1)] : 4;
  }
  int product(std::size_t at) const {
    const auto first = static_cast<std::size_t>(
        std::ranges::count_if(std::string_view(row_.kinds).substr(0, at), catalogue::isNumber));
    return static_cast<int>(numbers_[first] * numbers_[first + 1]);
  }

  const Row &row_;
  std::mt19937 &random_;
  std::vector<int> sizes_;
  std::vector<catalogue::Wide> numbers_;
  std::vector<std::vector<catalogue::Wide>> lists_;
};

bool varies(const Row &row) {
  return countKinds(row, [](char kind) { return !catalogue::isVariable(kind); }) > 0;
}

std::vector<Constraint> formsOf(const Row &row) {
  std::mt19937 random(1);
  std::vector<Constraint> forms;
  std::set<std::string> texts;
  for (int tries = 0; tries < 8 * kForms && std::ssize(forms) < (varies(row) ? kForms : 1); ++tries) {
    const std::optional<Form> form = Draws(row, random).form();
    if (form && texts.insert(form->text()).second) forms.push_back(constraintOf(*form));
  }
  return forms;
}

}  // namespace

Case defaultCase(const Row &row) {
  Case c{std::string(row.name).substr(3), {row.name}, formsOf(row), {}, 0};
  const int greatest = std::ranges::max_element(c.forms, {}, &Constraint::arity)->arity;
  c.rooms = {{row.domain.low, row.domain.high - row.domain.low + (greatest < 3 ? 2 : 1)}};
  c.fewPatternsFrom = 5;
  int patterns = 0;
  for (const Constraint &form : c.forms)
    patterns += static_cast<int>((form.arity < 5 ? allPatterns(form.arity) : fewPatterns(form.arity)).size());
  c.postings = std::max(4, kPostings / std::max(patterns, 1));
  return c;
}

}  // namespace koru::test::brute
