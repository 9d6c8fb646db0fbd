// SPDX-License-Identifier: MIT
// FlatZinc as a row of tokens. Cost: a look or two at each character.
#include "minizinc/lexer.h"

#include <array>
#include <charconv>

namespace koru::fzn {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

constexpr std::array<bool, 256> kNameCharacters = [] {
  std::array<bool, 256> is{};
  for (int c = '0'; c <= '9'; ++c) is[static_cast<std::size_t>(c)] = true;
  for (int c = 'a'; c <= 'z'; ++c) is[static_cast<std::size_t>(c)] = true;
  for (int c = 'A'; c <= 'Z'; ++c) is[static_cast<std::size_t>(c)] = true;
  is['_'] = true;
  return is;
}();

}  // namespace

bool isNameCharacter(char c) { return kNameCharacters[static_cast<unsigned char>(c)]; }

std::string_view nameAt(std::string_view text, std::uint32_t at) {
  std::size_t end = at;
  while (end < text.size() && isNameCharacter(text[end])) ++end;
  return text.substr(at, end - at);
}

void Lexer::advance() {
  skipBlanks();
  start_ = next_;
  token_ = read();
}

void Lexer::skipBlanks() {
  while (next_ < text_.size()) {
    const char c = text_[next_];
    if (c == '%') {
      while (next_ < text_.size() && text_[next_] != '\n') ++next_;
    } else if (c == ' ' || c == '\n' || c == '\t' || c == '\r') {
      ++next_;
    } else {
      return;
    }
  }
}

Token Lexer::read() {
  if (next_ == text_.size()) return Token::kEnd;
  const char c = text_[next_];
  if (isLetter(c) || c == '_') return readName();
  if (isDigit(c) || c == '-') return readNumber();
  switch (c) {
    case ',':
      return one(Token::kComma);
    case ';':
      return one(Token::kSemicolon);
    case '=':
      return one(Token::kEquals);
    case '(':
      return one(Token::kOpen);
    case ')':
      return one(Token::kClose);
    case '[':
      return one(Token::kOpenBracket);
    case ']':
      return one(Token::kCloseBracket);
    case '{':
      return one(Token::kOpenBrace);
    case '}':
      return one(Token::kCloseBrace);
    case ':':
      return peek(1) == ':' ? two(':', Token::kAnnotate) : one(Token::kColon);
    case '.':
      return two('.', Token::kRange);
    case '"':
      return readString();
    default:
      return bad("a character that FlatZinc does not have");
  }
}

Token Lexer::one(Token token) {
  ++next_;
  return token;
}

Token Lexer::two(char second, Token token) {
  ++next_;
  if (peek() != second) return bad("a character is missing here");
  return one(token);
}

// Stays where it is, so that nothing after the mistake is read.
Token Lexer::bad(const char *problem) {
  problem_ = problem;
  next_ = text_.size();
  return Token::kBad;
}

Token Lexer::readName() {
  do {
    ++next_;
  } while (next_ < text_.size() && isNameCharacter(text_[next_]));
  return Token::kName;
}

Token Lexer::readNumber() {
  if (peek() == '-') ++next_;
  if (!isDigit(peek())) return bad("a number is missing after the minus sign");
  if (peek() == '0' && peek(1) == 'x') return readDigits(16);
  if (peek() == '0' && peek(1) == 'o') return readDigits(8);
  while (isDigit(peek())) ++next_;
  const bool fraction = peek() == '.' && isDigit(peek(1));
  if (fraction) ++next_;
  while (fraction && isDigit(peek())) ++next_;
  const bool power = peek() == 'e' || peek() == 'E';
  if (power) next_ += peek(1) == '-' || peek(1) == '+' ? 2 : 1;
  if (power && !isDigit(peek())) return bad("an exponent is missing");
  while (power && isDigit(peek())) ++next_;
  if (fraction || power) return Token::kFloat;
  const auto result = std::from_chars(text_.data() + start_, text_.data() + next_, number_);
  return result.ec == std::errc{} ? Token::kInt : bad("a number beyond 64 bits");
}

// Of a number after 0x or 0o.
Token Lexer::readDigits(int base) {
  const bool negative = text_[start_] == '-';
  next_ += 2;
  long long value = 0;
  const char *end = text_.data() + text_.size();
  const auto result = std::from_chars(text_.data() + next_, end, value, base);
  if (result.ec != std::errc{} || value < 0) return bad("a number beyond 64 bits, or without digits");
  next_ = static_cast<std::size_t>(result.ptr - text_.data());
  number_ = negative ? -value : value;
  return Token::kInt;
}

Token Lexer::readString() {
  ++next_;
  while (next_ < text_.size() && text_[next_] != '"' && text_[next_] != '\n') next_ += text_[next_] == '\\' ? 2 : 1;
  if (next_ >= text_.size() || text_[next_] != '"') return bad("a string without an end");
  ++next_;
  return Token::kString;
}

}  // namespace koru::fzn
