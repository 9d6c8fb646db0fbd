// SPDX-License-Identifier: MIT
#include "explain/place_text.h"

#include <cstdlib>
#include <cstring>

namespace koru::explain {

// Ends the text at its first tab; what follows, or an empty text.
static char *cutAtTab(char *text) {
  char *tab = std::strchr(text, '\t');
  if (tab == nullptr) return text + std::strlen(text);
  *tab = '\0';
  return tab + 1;
}

PlaceText::PlaceText(char *text) : file(text) {
  char *lineText = cutAtTab(text);
  char *address = cutAtTab(lineText);
  line = std::atoi(lineText);
  caller = cutAtTab(address);
}

void writePlace(std::FILE *f, const char *file, int line) {
  std::fputs(file, f);
  if (line > 0) std::fprintf(f, ":%d", line);
}

void writeSource(std::FILE *f, const char *file, int line) {
  std::FILE *source = line > 0 ? std::fopen(file, "r") : nullptr;
  if (source == nullptr) return;
  char text[160] = "";
  for (int i = 1; i <= line;) {
    if (std::fgets(text, sizeof text, source) == nullptr) {
      text[0] = '\0';  // there is no such line
      break;
    }
    if (std::strchr(text, '\n') != nullptr) ++i;
  }
  std::fclose(source);
  const char *begin = text + std::strspn(text, " \t");
  const auto length = static_cast<int>(std::strcspn(begin, "\r\n"));
  if (length > 0) std::fprintf(f, "    %.*s", length, begin);
}

}  // namespace koru::explain
