// SPDX-License-Identifier: MIT
// FlatZinc as a row of tokens. The text belongs to the caller and outlives the lexer; tokens are pieces of it.
#ifndef KORU_MINIZINC_LEXER_H
#define KORU_MINIZINC_LEXER_H

#include <cstdint>
#include <string_view>

namespace koru::fzn {

enum class Token : std::uint8_t {
  kEnd,
  kBad,  // problem() says why
  kName,
  kInt,
  kFloat,
  kString,
  kRange,     // ..
  kAnnotate,  // ::
  kComma,
  kColon,
  kSemicolon,
  kEquals,
  kOpen,
  kClose,
  kOpenBracket,
  kCloseBracket,
  kOpenBrace,
  kCloseBrace
};

// Letters, digits and underscores: what names are made of.
bool isNameCharacter(char c);

// The name that begins at `at`.
std::string_view nameAt(std::string_view text, std::uint32_t at);

class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) { advance(); }

  void advance();

  Token token() const { return token_; }
  std::uint32_t at() const { return static_cast<std::uint32_t>(start_); }  // where the token begins
  std::string_view word() const { return text_.substr(start_, next_ - start_); }
  long long number() const { return number_; }
  const char *problem() const { return problem_; }

 private:
  void skipBlanks();
  Token read();
  Token readName();
  Token readNumber();
  Token readDigits(int base);
  Token readString();
  Token one(Token token);
  Token two(char second, Token token);
  Token bad(const char *problem);
  char peek(std::size_t ahead = 0) const { return next_ + ahead < text_.size() ? text_[next_ + ahead] : '\0'; }

  std::string_view text_;
  std::size_t start_ = 0;
  std::size_t next_ = 0;
  Token token_ = Token::kEnd;
  long long number_ = 0;
  const char *problem_ = "";
};

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_LEXER_H
