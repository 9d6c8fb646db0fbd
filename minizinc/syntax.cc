// SPDX-License-Identifier: MIT
#include "minizinc/syntax.h"

#include <algorithm>

namespace koru::fzn {

const Expr *Syntax::find(Part annotations, std::string_view wanted) const {
  for (const Expr &e : list(annotations)) {
    if ((e.kind == Kind::kName || e.kind == Kind::kCall) && name(e.at) == wanted) return &e;
  }
  return nullptr;
}

std::string_view Syntax::string(const Expr &e) const {
  const std::size_t begin = e.at + std::size_t{1};
  std::size_t end = begin;
  while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
  return std::string_view(text).substr(begin, end - begin);
}

std::string describe(const Syntax &syntax, const Mistake &mistake) {
  const std::string_view before = std::string_view(syntax.text).substr(0, mistake.at);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  const std::size_t column = before.size() - (before.rfind('\n') == before.npos ? 0 : before.rfind('\n') + 1) + 1;
  return syntax.file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + mistake.message;
}

}  // namespace koru::fzn
