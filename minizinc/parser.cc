// SPDX-License-Identifier: MIT
// Reading FlatZinc by recursive descent; a function for each rule of the grammar. All return false after a mistake.
#include "minizinc/parser.h"

#include <algorithm>

#include "minizinc/names.h"

namespace koru::fzn {

namespace {

constexpr int kDeepest = 100;  // calls and arrays inside each other

class Parser {
 public:
  Parser(Syntax &syntax, Mistake &mistake) : s_(syntax), mistake_(mistake), lexer_(syntax.text) {}

  bool run() {
    while (lexer_.token() != Token::kEnd) {
      if (!item() || !expect(Token::kSemicolon, "';'")) return false;
    }
    return solved_ || fail("the solve item is missing");
  }

 private:
  // --- Tokens ---

  bool fail(std::uint32_t at, std::string message) {
    mistake_.set(at, std::move(message));
    return false;
  }
  bool fail(std::string message) {
    if (lexer_.token() == Token::kBad) message = lexer_.problem();
    return fail(lexer_.at(), std::move(message));
  }
  bool is(Token token) const { return lexer_.token() == token; }
  bool isWord(std::string_view word) const { return is(Token::kName) && lexer_.word() == word; }
  bool skip(Token token) {
    if (!is(token)) return false;
    lexer_.advance();
    return true;
  }
  bool skipWord(std::string_view word) {
    if (!isWord(word)) return false;
    lexer_.advance();
    return true;
  }
  bool expect(Token token, const char *what) { return skip(token) || fail(std::string(what) + " is expected here"); }
  bool expectWord(const char *word) { return skipWord(word) || fail(std::string("\"") + word + "\" is expected here"); }

  // --- Items ---

  bool item() {
    if (!is(Token::kName)) return fail("an item is expected here");
    if (solved_) return fail("nothing comes after the solve item");
    if (skipWord("constraint")) return constraint();
    if (skipWord("predicate")) return predicate();
    if (isWord("solve")) return solve();
    return declaration();
  }

  // Says nothing that a solver does not know.
  bool predicate() {
    if (!expect(Token::kName, "a name") || !expect(Token::kOpen, "'('")) return false;
    while (!is(Token::kClose)) {
      Declaration parameter;
      inPredicate_ = true;
      const bool read = type(parameter) && expect(Token::kColon, "':'") && expect(Token::kName, "a name");
      inPredicate_ = false;
      if (!read) return false;
      if (!skip(Token::kComma)) break;
    }
    return expect(Token::kClose, "')'");
  }

  bool constraint() {
    Constraint c;
    c.at = lexer_.at();
    if (!expect(Token::kName, "the name of a constraint")) return false;
    if (!expect(Token::kOpen, "'('") || !list(Token::kClose, "')'", false, c.arguments)) return false;
    if (!annotations(c.annotations)) return false;
    s_.constraints.push_back(c);
    return true;
  }

  bool solve() {
    s_.solve.at = lexer_.at();
    lexer_.advance();
    if (!annotations(s_.solve.annotations)) return false;
    solved_ = true;
    if (skipWord("satisfy")) return true;
    if (isWord("minimize"))
      s_.solve.goal = Goal::kMinimize;
    else if (isWord("maximize"))
      s_.solve.goal = Goal::kMaximize;
    else
      return fail("\"satisfy\", \"minimize\" or \"maximize\" is expected here");
    lexer_.advance();
    return expression(s_.solve.objective, false);
  }

  bool declaration() {
    Declaration d;
    if (!type(d) || !expect(Token::kColon, "':'")) return false;
    d.at = lexer_.at();
    d.name = lexer_.word();
    if (!expect(Token::kName, "a name")) return false;
    if (!annotations(d.annotations)) return false;
    if (skip(Token::kEquals)) {
      if (!expression(d.value, false)) return false;
    } else if (!d.isVar || d.isArray) {
      return fail("a value is expected here");
    }
    if (d.isArray && d.value.kind == Kind::kDeclared)
      d.value = s_.declarations[static_cast<std::size_t>(d.value.number)].value;
    if (d.isArray && d.value.kind != Kind::kArray) return fail(d.value.at, "an array is expected here");
    if (!names_.add(d.name, static_cast<std::uint32_t>(s_.declarations.size())))
      return fail(d.at, "\"" + std::string(d.name) + "\" is declared twice");
    s_.declarations.push_back(d);
    return true;
  }

  // --- Types ---

  bool type(Declaration &d) {
    if (skipWord("array")) {
      d.isArray = true;
      Expr size;
      if (!expect(Token::kOpenBracket, "'['")) return false;
      if (!(inPredicate_ && skipWord("int")) && !set(size)) return false;
      if (!expect(Token::kCloseBracket, "']'") || !expectWord("of")) return false;
    }
    d.isVar = skipWord("var");
    return baseType(d);
  }

  bool baseType(Declaration &d) {
    const std::uint32_t at = lexer_.at();
    if (skipWord("bool")) return d.base = Base::kBool, true;
    if (skipWord("int")) return true;
    if (is(Token::kFloat) || isWord("float"))
      return inPredicate_ ? (lexer_.advance(), true) : fail("floats are not supported");
    if (skipWord("set")) {
      d.base = Base::kSet;
      if (!expectWord("of")) return false;
      if (d.isVar && !d.isArray && !inPredicate_) return fail(at, "variables for sets are not supported");
      return skipWord("int") || set(d.domain);
    }
    return set(d.domain);
  }

  // --- Expressions ---

  bool expression(Expr &e, bool annotation) {
    e.at = lexer_.at();
    switch (lexer_.token()) {
      case Token::kInt:
        return intOrRange(e);
      case Token::kName:
        return nameOrCall(e, annotation);
      case Token::kOpenBrace:
        return set(e);
      case Token::kOpenBracket:
        lexer_.advance();
        e.kind = Kind::kArray;
        return list(Token::kCloseBracket, "']'", annotation, e.part);
      case Token::kFloat:
        if (!annotation) return fail("floats are not supported");
        lexer_.advance();
        e.kind = Kind::kFloat;
        return true;
      case Token::kString:
        if (!annotation) return fail("strings stand in annotations only");
        lexer_.advance();
        e.kind = Kind::kString;
        return true;
      default:
        return fail("an expression is expected here");
    }
  }

  bool intOrRange(Expr &e) {
    const long long number = lexer_.number();
    lexer_.advance();
    if (is(Token::kRange)) return rangeFrom(number, e);
    e.kind = Kind::kInt;
    e.number = number;
    return true;
  }

  bool rangeFrom(long long low, Expr &e) {
    lexer_.advance();
    const long long high = lexer_.number();
    if (!expect(Token::kInt, "an int")) return false;
    e.kind = Kind::kRange;
    e.part = {static_cast<std::uint32_t>(s_.numbers.size()), 2};
    s_.numbers.push_back(low);
    s_.numbers.push_back(high);
    return true;
  }

  // A range, or ints between braces.
  bool set(Expr &e) {
    e.at = lexer_.at();
    if (is(Token::kFloat)) return fail("floats are not supported");
    if (is(Token::kInt)) {
      const long long low = lexer_.number();
      lexer_.advance();
      return is(Token::kRange) ? rangeFrom(low, e) : fail("'..' is expected here");
    }
    if (!expect(Token::kOpenBrace, "a type or a set")) return false;
    std::vector<long long> values;
    while (!is(Token::kCloseBrace)) {
      if (is(Token::kFloat)) return fail("floats are not supported");
      values.push_back(lexer_.number());
      if (!expect(Token::kInt, "an int")) return false;
      if (!skip(Token::kComma)) break;
    }
    if (!expect(Token::kCloseBrace, "'}'")) return false;
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    e.kind = Kind::kSet;
    e.part = {static_cast<std::uint32_t>(s_.numbers.size()), static_cast<std::uint32_t>(values.size())};
    s_.numbers.insert(s_.numbers.end(), values.begin(), values.end());
    return true;
  }

  bool nameOrCall(Expr &e, bool annotation) {
    const std::string_view word = lexer_.word();
    lexer_.advance();
    if (word == "true" || word == "false") {
      e.kind = Kind::kBool;
      e.number = word == "true";
      return true;
    }
    if (annotation && skip(Token::kOpen)) {
      e.kind = Kind::kCall;
      return list(Token::kClose, "')'", true, e.part);
    }
    const std::uint32_t number = names_.find(word);
    if (number == Names::kUnknown) {
      if (!annotation) return fail(e.at, "\"" + std::string(word) + "\" is not declared");
      e.kind = Kind::kName;
      return true;
    }
    e.kind = Kind::kDeclared;
    e.number = number;
    return is(Token::kOpenBracket) ? access(e) : true;
  }

  bool access(Expr &e) {
    const Expr array = e;
    Expr index;
    lexer_.advance();
    index.at = lexer_.at();
    index.kind = Kind::kInt;
    index.number = lexer_.number();
    if (!expect(Token::kInt, "an int") || !expect(Token::kCloseBracket, "']'")) return false;
    const Declaration &d = s_.declarations[static_cast<std::size_t>(array.number)];
    if (!d.isArray) return fail(e.at, "\"" + std::string(d.name) + "\" is not an array");
    if (index.number < 1 || index.number > static_cast<long long>(d.value.part.count))
      return fail(index.at, "the index is outside of the array");
    e.kind = Kind::kAccess;
    e.part = {static_cast<std::uint32_t>(s_.exprs.size()), 2};
    s_.exprs.push_back(array);
    s_.exprs.push_back(index);
    return true;
  }

  // What stands up to `close`, separated by commas. Inner lists come to lie before the list that they are part of.
  bool list(Token close, const char *what, bool annotation, Part &part) {
    if (++depth_ > kDeepest) return fail("nested too deeply");
    const std::size_t base = stack_.size();
    while (!is(close)) {
      Expr e;
      if (!expression(e, annotation)) return false;
      stack_.push_back(e);
      if (!skip(Token::kComma)) break;
    }
    if (!expect(close, what)) return false;
    part = {static_cast<std::uint32_t>(s_.exprs.size()), static_cast<std::uint32_t>(stack_.size() - base)};
    s_.exprs.insert(s_.exprs.end(), stack_.begin() + static_cast<std::ptrdiff_t>(base), stack_.end());
    stack_.resize(base);
    --depth_;
    return true;
  }

  bool annotations(Part &part) {
    const std::size_t base = stack_.size();
    while (skip(Token::kAnnotate)) {
      Expr e;
      if (!is(Token::kName)) return fail("an annotation is expected here");
      if (!expression(e, true)) return false;
      stack_.push_back(e);
    }
    part = {static_cast<std::uint32_t>(s_.exprs.size()), static_cast<std::uint32_t>(stack_.size() - base)};
    s_.exprs.insert(s_.exprs.end(), stack_.begin() + static_cast<std::ptrdiff_t>(base), stack_.end());
    stack_.resize(base);
    return true;
  }

  Syntax &s_;
  Mistake &mistake_;
  Lexer lexer_;
  Names names_;
  std::vector<Expr> stack_;
  int depth_ = 0;
  bool inPredicate_ = false;
  bool solved_ = false;
};

}  // namespace

bool parse(Syntax &syntax, Mistake &mistake) {
  if (syntax.text.size() > UINT32_MAX - 1) {
    mistake.set(0, "the file is larger than 4 GB");
    return false;
  }
  syntax.exprs.reserve(syntax.text.size() / 8);
  return Parser(syntax, mistake).run();
}

}  // namespace koru::fzn
