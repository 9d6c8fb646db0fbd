// SPDX-License-Identifier: MIT
// Reading of knapsack instances: whole numbers from 0 to INT_MAX with white space between them, in this order:
//
//   the number of items, the number of rows of weights,
//   the capacity of each row,
//   the profit of each item,
//   the weight of each item in the first row, in the second row and so on.
//
// Line ends are white space like any other. Anything from a '#' to the end of its line is skipped.
#ifndef KORU_EXAMPLE_KNAPSACK_INPUT_H
#define KORU_EXAMPLE_KNAPSACK_INPUT_H

#include <ctype.h>
#include <limits.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { MAX_ITEMS = 1000, MAX_ROWS = 50 };

typedef struct {
  FILE *file;
  const char *name;
  long line;        // number of the line that is being read
  char error[160];  // why reading failed
} Input;

typedef struct {
  int nbItems, nbRows;
  int capacities[MAX_ROWS];
  int profits[MAX_ITEMS];
  int weights[MAX_ROWS][MAX_ITEMS];
} Instance;

// The next character, with a comment replaced by the end of its line. The line number moves on after a line end.
static inline int nextCharacter(Input *input) {
  int c = getc(input->file);
  if (c == '#') {
    while (c != '\n' && c != EOF) c = getc(input->file);
  }
  return c;
}

// Read the next word, which may be longer than what is kept of it. False at the end of the input.
static inline bool readWord(Input *input, char *word, size_t size) {
  int c = nextCharacter(input);
  for (; isspace(c); c = nextCharacter(input)) input->line += c == '\n';
  size_t length = 0;
  for (; c != EOF && !isspace(c); c = nextCharacter(input)) {
    if (length + 1 < size) word[length++] = isprint(c) ? (char)c : '?';
  }
  word[length] = '\0';
  // Put a line end back: the word belongs to the line before it.
  if (c == '\n') ungetc(c, input->file);
  return length > 0;
}

// Only digits, so no sign, and few enough of them for strtol, which stops at LONG_MAX when there are too many.
static inline bool parseNumber(const char *word, int min, int max, int *number) {
  if (word[strspn(word, "0123456789")] != '\0') return false;
  long value = strtol(word, NULL, 10);
  *number = value <= INT_MAX ? (int)value : INT_MAX;
  return value >= min && value <= max;
}

// Read a number from min to max. False, and the reason in error, when there is none; `what` tells what it stands for.
static inline bool readNumber(Input *input, int min, int max, const char *what, int *number) {
  char word[40];
  if (readWord(input, word, sizeof word)) {
    if (parseNumber(word, min, max, number)) return true;
    snprintf(input->error, sizeof input->error, "%s: %s is no number from %d to %d", what, word, min, max);
  } else {
    snprintf(input->error, sizeof input->error, ferror(input->file) ? "cannot read on" : "%s: missing", what);
  }
  return false;
}

// Read `count` numbers, of which `what`, followed by its place, tells what each stands for.
static inline bool readNumbers(Input *input, int count, const char *what, int *numbers) {
  for (int i = 0; i < count; i++) {
    char name[60];
    snprintf(name, sizeof name, "%s %d", what, i + 1);
    if (!readNumber(input, 0, INT_MAX, name, &numbers[i])) return false;
  }
  return true;
}

static inline bool readWeights(Input *input, Instance *instance) {
  for (int row = 0; row < instance->nbRows; row++) {
    char name[40];
    snprintf(name, sizeof name, "row %d: weight", row + 1);
    if (!readNumbers(input, instance->nbItems, name, instance->weights[row])) return false;
  }
  return true;
}

// All profits together must be an int, so that any choice of items has a profit the solver can hold.
static inline bool checkProfits(Input *input, const Instance *instance) {
  long long total = 0;
  for (int i = 0; i < instance->nbItems; i++) total += instance->profits[i];
  if (total <= INT_MAX) return true;
  snprintf(input->error, sizeof input->error, "the profits add up to more than %d", INT_MAX);
  return false;
}

static inline bool expectEnd(Input *input) {
  char word[40];
  bool isMore = readWord(input, word, sizeof word);
  if (!isMore && !ferror(input->file)) return true;
  snprintf(input->error, sizeof input->error, isMore ? "%s: nothing more is expected" : "cannot read on", word);
  return false;
}

// Read an instance. When the input holds none, its line and error say where and why.
static inline bool readInstance(Input *input, Instance *instance) {
  return readNumber(input, 1, MAX_ITEMS, "number of items", &instance->nbItems) &&
         readNumber(input, 1, MAX_ROWS, "number of rows", &instance->nbRows) &&
         readNumbers(input, instance->nbRows, "capacity", instance->capacities) &&
         readNumbers(input, instance->nbItems, "profit", instance->profits) && checkProfits(input, instance) &&
         readWeights(input, instance) && expectEnd(input);
}

#endif  // KORU_EXAMPLE_KNAPSACK_INPUT_H
