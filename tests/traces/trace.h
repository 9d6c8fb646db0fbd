// SPDX-License-Identifier: MIT
// API traces: sequences of calls of the whole public interface as text.
//
//   cs_init
//   v0 = cs_createCSint 0 4              numbers are part of the text: taking a line out renumbers nothing
//   s1 = script 3 -1                     a callback: refuses its third call, scores with -1 per value
//   s1: cs_GE v0 1                       what it does when it is called, a line each
//   cs_eventKnown [v0 null] 2 s1         arrays in brackets, of ints in braces; # starts a comment
//   g0 = cs_createNoGoodSet [v0] 1 null 0 null
//
// The letter before a number tells what it stands for: v variable, s script, q value selector, h search hooks, g
// no-good set, p profiler. A number that stands for nothing (its line was taken out, or the call failed) is a null
// pointer.
#pragma once

#include <string>
#include <vector>

namespace koru::traces {

struct Row;  // of the table of calls, see table.h

constexpr int kNull = -1;
constexpr int kReferences = 256;  // of each letter
constexpr int kScripts = 8;

// One argument. The row's kinds say which of the fields count.
struct Arg {
  int number = 0;         // an int, or what stands after the letter; kNull for a null pointer, also of a list
  std::vector<int> list;  // ints, or references
  std::string text;
};

struct Line {
  int script = kNull;  // the script it belongs to
  int target = kNull;  // the number of the result
  const Row *row = nullptr;
  std::vector<Arg> args;
};

using Trace = std::vector<Line>;

std::string print(const Line &line);
std::string print(const Trace &trace);

// False for text that is no line, with a reason. A line without a call (empty, a comment) has no row.
bool parse(const std::string &text, Line &line, std::string &reason);

// Lines that do not parse are left out; the reason for the first one, with its number, is in `reason`.
Trace parse(const std::string &text, std::string &reason);

}  // namespace koru::traces
