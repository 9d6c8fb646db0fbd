// SPDX-License-Identifier: MIT
// What the tests of fzn-koru share.
#ifndef KORU_MINIZINC_TESTS_SUPPORT_H
#define KORU_MINIZINC_TESTS_SUPPORT_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "minizinc/parser.h"

namespace koru::fzn {

// The mistake in a text; empty when it parses.
inline std::string mistakeIn(const std::string &text) {
  Syntax syntax;
  Mistake mistake;
  syntax.file = "m.fzn";
  syntax.text = text;
  return parse(syntax, mistake) ? "" : describe(syntax, mistake);
}

struct Ran {
  std::string output;  // standard output and error together
  int status = -1;
};

inline Ran shell(const std::string &command) {
  Ran ran;
  std::FILE *pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return ran;
  char block[4096];
  std::size_t n = 0;
  while ((n = std::fread(block, 1, sizeof block, pipe)) > 0) ran.output.append(block, n);
  const int status = pclose(pipe);
  ran.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return ran;
}

// Runs fzn-koru, with every solution verified, on a file.
inline Ran solveFile(const std::string &options, const std::string &file) {
  return shell(std::string(KORU_FZN) + " --verify " + options + " " + file);
}

// The same for a text, which is put into a file of this process's own.
inline Ran solve(const std::string &options, const std::string &text) {
  const std::string file =
      (std::filesystem::temp_directory_path() / ("koru_fzn_" + std::to_string(getpid()) + ".fzn")).string();
  std::ofstream(file) << text;
  Ran ran = solveFile(options, file);
  for (std::size_t at = 0; (at = ran.output.find(file, at)) != std::string::npos;)
    ran.output.replace(at, file.size(), "m.fzn");
  std::filesystem::remove(file);
  return ran;
}

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_TESTS_SUPPORT_H
