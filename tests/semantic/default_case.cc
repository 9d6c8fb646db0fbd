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
    std::vector<std::vector<catalogue::Wide>> lists;
    for (const std::size_t length : catalogue::listLengths(row_, sizes_, numbers_)) {
      lists.emplace_back();
      for (std::size_t i = 0; i < length; ++i) lists.back().push_back(between(row_.domain.low - 1, row_.domain.high));
    }
    Form form(row_, sizes_, numbers_, lists, static_cast<unsigned>(between(0, 3)));
    if (static_cast<int>(form.arity()) > kMostPositions) return std::nullopt;
    return form;
  }

 private:
  int between(int low, int high) { return low + static_cast<int>(random_() % static_cast<unsigned>(high - low + 1)); }

  void drawNumbers() {
    const bool table = std::string_view(row_.kinds).find('T') != std::string_view::npos;
    for (const char kind : std::string_view(row_.kinds)) {
      if (catalogue::isSize(kind)) sizes_.push_back(between(row_.fewestOf(kind), 4));
      if (kind == 'i') numbers_.push_back(table ? between(1, 3) : between(-2, 4));
      if (kind == 'l') numbers_.push_back(between(-6, 9));
      if (kind == 'b') numbers_.push_back(between(0, 1));
      if (kind == 'c') numbers_.push_back(between(CS_METHOD_EQ, CS_METHOD_GT));
    }
  }

  const Row &row_;
  std::mt19937 &random_;
  std::vector<int> sizes_;
  std::vector<catalogue::Wide> numbers_;
};

bool varies(const Row &row) {
  return catalogue::countKinds(row.kinds, [](char kind) { return kind != 'v'; }) > 0;
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

// "cs_Eq" is Eq, "model_Apart" modelApart.
static std::string testName(std::string name) {
  if (name.starts_with("cs_")) return name.substr(3);
  std::erase(name, '_');
  return name;
}

Case defaultCase(const Row &row) {
  Case c{testName(row.name), {row.name}, formsOf(row), {}, 0};
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
