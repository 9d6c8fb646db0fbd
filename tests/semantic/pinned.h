// SPDX-License-Identifier: MIT
// What the quick tests must see of each case, written down in two files.
//
// expected.txt beside this one, a line for each case: the least number of states, some two thirds of what there are, so
// that a case that has quietly become smaller is noticed; then the number and the digest of the handler calls, which
// are the same on every platform and from version to version. docs/consistency.md, a row for each case: the
// consistency.
//
// A change that is meant takes over what is seen now, "./dev pin", and says in its commit what hosts will see of it. To
// find the call that differs, run test_semantic in both versions with KORU_CALLS=1, compare the numbers after each
// posting, and run the first posting that differs alone, with KORU_POSTING set as well.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "semantic/harness/calls.h"
#include "semantic/harness/measure.h"

namespace koru::test::brute {

struct Expected {
  long long leastStates = 2000;  // of a case that has no line
  std::optional<Calls> calls;
};

struct Seen {
  long long states = 0;
  Calls calls;
  Measure measure;
};

// By name; a case of koru_extras.h may do without a line and without a row.
const std::map<std::string, Expected> &expectedCases();
const std::map<std::string, std::string> &documentedRows();
Expected expectedOf(const std::string &name);

// Whether what is seen is to be taken over.
bool isPinning();
// Of all cases.
void pin(const std::map<std::string, Seen> &seen);

}  // namespace koru::test::brute
