// SPDX-License-Identifier: MIT
// Reading of text files: opening, words and numbers with white space between them, and where an error is.
//
// Line ends are white space like any other. Anything from a '#' to the end of its line is skipped.
#ifndef KORU_EXAMPLE_INPUT_H
#define KORU_EXAMPLE_INPUT_H

#include "example.h"

#include <ctype.h>
#include <errno.h>
#include <limits.h>

typedef struct {
  FILE *file;
  const char *name;
  long line;        // number of the line that is being read
  char error[160];  // why reading failed
} Input;

// The file of that path; standard input when it is null or "-". Says why and ends the program when it cannot be read.
static inline Input openInput(const char *program, const char *path) {
  bool isStandard = path == NULL || strcmp(path, "-") == 0;
  Input input = {stdin, "stdin", 1, ""};
  if (isStandard) return input;
  input.file = fopen(path, "r");
  input.name = path;
  if (input.file != NULL) return input;
  fprintf(stderr, "%s: %s: %s\n", program, path, strerror(errno));
  exit(EXIT_TROUBLE);
}

static inline void closeInput(Input *input) {
  if (input->file != stdin) fclose(input->file);
}

// Say where and why reading failed. The status is for main to return.
static inline int reportInput(const char *program, const Input *input) {
  fprintf(stderr, "%s: %s:%ld: %s\n", program, input->name, input->line, input->error);
  return EXIT_TROUBLE;
}

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

// Only digits, so no sign, and few enough of them for strtoll, which stops at LLONG_MAX when there are too many.
static inline bool isNumberWithin(const char *word, int min, int max, int *number) {
  if (word[strspn(word, "0123456789")] != '\0') return false;
  long long value = strtoll(word, NULL, 10);
  *number = value <= INT_MAX ? (int)value : INT_MAX;
  return value >= min && value <= max;
}

// Read a number from min to max, at least 0. False, and the reason in error, when there is none; `what` tells what it
// stands for.
static inline bool readNumber(Input *input, int min, int max, const char *what, int *number) {
  char word[40];
  if (readWord(input, word, sizeof word)) {
    if (isNumberWithin(word, min, max, number)) return true;
    snprintf(input->error, sizeof input->error, "%s: %s is no number from %d to %d", what, word, min, max);
  } else {
    snprintf(input->error, sizeof input->error, ferror(input->file) ? "cannot read on" : "%s: missing", what);
  }
  return false;
}

// Read `count` numbers, of which `what`, followed by its place, tells what each stands for.
static inline bool readNumbers(Input *input, int count, int min, int max, const char *what, int *numbers) {
  for (int i = 0; i < count; i++) {
    char name[60];
    snprintf(name, sizeof name, "%s %d", what, i + 1);
    if (!readNumber(input, min, max, name, &numbers[i])) return false;
  }
  return true;
}

static inline bool expectEnd(Input *input) {
  char word[40];
  bool isMore = readWord(input, word, sizeof word);
  if (!isMore && !ferror(input->file)) return true;
  snprintf(input->error, sizeof input->error, isMore ? "%s: nothing more is expected" : "cannot read on", word);
  return false;
}

#endif  // KORU_EXAMPLE_INPUT_H
