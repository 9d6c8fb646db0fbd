// SPDX-License-Identifier: MIT
// What a piece of a scenario writes to a stream, as a string.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace koru::test {

template <class Write>
std::string textOf(Write write) {
  char *text = nullptr;
  std::size_t size = 0;
  std::FILE *stream = open_memstream(&text, &size);
  write(stream);
  std::fclose(stream);
  std::string result(text, size);
  std::free(text);
  return result;
}

}  // namespace koru::test
