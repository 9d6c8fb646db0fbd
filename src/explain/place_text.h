// SPDX-License-Identifier: MIT
// Places as hosts get them: the parts of a locator's text, and the line of the source.
#pragma once

#include <cstdio>

namespace koru::explain {

// "file, line, address, function", separated by tabs; of a text that is none of these, all is the file. The tabs are
// overwritten, the text stays the caller's.
struct PlaceText {
  const char *file;
  int line;
  const char *caller;

  explicit PlaceText(char *text);
};

// The file, and the line if it is known.
void writePlace(std::FILE *f, const char *file, int line);

// Of a source that can be read, the line without the blanks around it, after some of them.
void writeSource(std::FILE *f, const char *file, int line);

}  // namespace koru::explain
