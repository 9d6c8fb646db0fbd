// SPDX-License-Identifier: MIT
// Texts as HTML and JSON want them, for koru-profile and koru-tree.
#pragma once

#include <string>

namespace koru {

inline std::string escaped(const std::string &text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

// "<" is written so that no text can end a script that it stands in. Bytes beyond ASCII are written as they are: names
// in UTF-8 stay that.
inline std::string quoted(const std::string &text) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string result = "\"";
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 32 || c == '<') {
      result += "\\u00";
      result += kHex[code >> 4];
      result += kHex[code & 15];
      continue;
    }
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

}  // namespace koru
