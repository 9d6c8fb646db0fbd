// SPDX-License-Identifier: MIT
#include "minizinc/output.h"

namespace koru::fzn {

namespace {

Expr nameOf(std::size_t number) {
  Expr e;
  e.kind = Kind::kDeclared;
  e.number = static_cast<long long>(number);
  return e;
}

class Writer {
 public:
  Writer(const Syntax &syntax, const std::vector<long long> &values) : s_(syntax), values_(values) {}

  std::string run() {
    for (std::size_t i = 0; i < s_.declarations.size(); ++i) {
      const Declaration &d = s_.declarations[i];
      const Expr *array = s_.find(d.annotations, "output_array");
      if (d.isArray ? array == nullptr : s_.find(d.annotations, "output_var") == nullptr) continue;
      text_.append(d.name).append(" = ");
      if (d.isArray)
        writeArray(d, *array);
      else
        writeValue(d.base, nameOf(i));
      text_ += ";\n";
    }
    return std::move(text_);
  }

 private:
  void writeNumber(Base base, long long value) {
    text_ += base == Base::kBool ? (value != 0 ? "true" : "false") : std::to_string(value);
  }

  void writeSet(const Expr &e) {
    const IntSet set = setOf(s_, e);
    if (set.isRange) {
      text_ += std::to_string(set.low) + ".." + std::to_string(set.high);
      return;
    }
    text_ += '{';
    for (const long long value : set.values) text_.append(value == set.low ? "" : ",").append(std::to_string(value));
    text_ += '}';
  }

  void writeValue(Base base, const Expr &e) {
    switch (e.kind) {
      case Kind::kInt:
      case Kind::kBool:
        return writeNumber(base, e.number);
      case Kind::kAccess: {
        const auto &array = s_.declarations[static_cast<std::size_t>(s_.list(e.part)[0].number)];
        return writeValue(base, s_.list(array.value.part)[static_cast<std::size_t>(s_.list(e.part)[1].number - 1)]);
      }
      case Kind::kDeclared: {
        const Declaration &d = s_.declarations[static_cast<std::size_t>(e.number)];
        return d.isVar ? writeNumber(base, values_[static_cast<std::size_t>(e.number)]) : writeValue(base, d.value);
      }
      default:
        return writeSet(e);
    }
  }

  // "array2d(1..2, 1..3, [...])", by the index sets in the annotation.
  void writeArray(const Declaration &d, const Expr &annotation) {
    std::string indices;
    std::size_t dimensions = 0;
    const bool hasSets = annotation.kind == Kind::kCall && annotation.part.count == 1 &&
                         s_.list(annotation.part)[0].kind == Kind::kArray;
    const std::span<const Expr> sets = hasSets ? s_.list(s_.list(annotation.part)[0].part) : std::span<const Expr>();
    for (const Expr &set : sets) {
      if (set.kind != Kind::kRange && set.kind != Kind::kSet) continue;
      const IntSet ends = setOf(s_, set);
      indices += std::to_string(ends.low) + ".." + std::to_string(ends.high) + ", ";
      ++dimensions;
    }
    if (dimensions == 0) {
      dimensions = 1;
      indices = "1.." + std::to_string(d.value.part.count) + ", ";
    }
    text_ += "array" + std::to_string(dimensions) + "d(" + indices + "[";
    bool first = true;
    for (const Expr &e : s_.list(d.value.part)) {
      if (!first) text_ += ", ";
      first = false;
      writeValue(d.base, e);
    }
    text_ += "])";
  }

  const Syntax &s_;
  const std::vector<long long> &values_;
  std::string text_;
};

}  // namespace

std::vector<long long> valuesOf(const Syntax &syntax, Variables &variables) {
  std::vector<long long> values(syntax.declarations.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const Declaration &d = syntax.declarations[i];
    if (!d.isVar || d.isArray) continue;
    const Operand o = variables.operand(nameOf(i));
    values[i] = o.isConstant ? o.value : cs_getMin(variables.get(o));
  }
  return values;
}

std::string textOf(const Syntax &syntax, const std::vector<long long> &values) { return Writer(syntax, values).run(); }

std::vector<Operand> outputOf(const Syntax &syntax, const Variables &variables) {
  std::vector<Operand> all;
  const auto add = [&](const Expr &e) {
    const Expr end = variables.follow(e);
    if (end.kind != Kind::kDeclared) return;
    const Operand o = variables.operand(end);
    if (!o.isConstant) all.push_back(o);
  };
  for (std::size_t i = 0; i < syntax.declarations.size(); ++i) {
    const Declaration &d = syntax.declarations[i];
    if (d.isArray && syntax.find(d.annotations, "output_array") != nullptr) {
      for (const Expr &e : syntax.list(d.value.part)) add(e);
    } else if (!d.isArray && syntax.find(d.annotations, "output_var") != nullptr) {
      add(nameOf(i));
    }
  }
  return all;
}

}  // namespace koru::fzn
