// SPDX-License-Identifier: MIT
// Reading of car sequencing instances, as the CSPLib collection (prob001) writes them, one after the other:
//
//   # Problem: small           a line that begins with no number; the first one that says "Problem" is kept as the name
//   12 2 3                     cars, options, classes
//   1 2                        of each option: how many cars in a row may have it ...
//   2 3                        ... out of how many
//   0 4 1 0                    for each class, from 0 on: its number, how many cars, and for each option 1 or 0
//   1 3 0 1
//   2 5 0 0
//
// An instance of five options may leave out the second and third line: it has those that the collection has in common,
// 1 2 1 2 1 out of 2 3 3 5 5.
#ifndef KORU_EXAMPLE_CAR_SEQUENCING_INPUT_H
#define KORU_EXAMPLE_CAR_SEQUENCING_INPUT_H

#include "input.h"

enum { MAX_CARS = 1000, MAX_OPTIONS = 20, MAX_CLASSES = 100, MAX_BLOCK = 10, MAX_NAME = 60, MAX_TEXT = 1000 };

typedef struct {
  char name[MAX_NAME + 1];
  int nbCars, nbOptions, nbClasses;
  int capacities[MAX_OPTIONS];  // at most that many ...
  int blocks[MAX_OPTIONS];      // ... in any row of that many cars
  int demands[MAX_CLASSES];
  int has[MAX_OPTIONS][MAX_CLASSES];
} Instance;

// A line of numbers, of which one after the other is taken.
typedef struct {
  Input *input;
  char text[MAX_TEXT];
  char *rest;
} Line;

// Read the next line, without the blanks at its start. What does not fit is lost: such a line has too many numbers.
static inline bool readLine(Line *line) {
  int c = getc(line->input->file);
  if (c == EOF) return false;
  size_t length = 0;
  for (; c != '\n' && c != EOF; c = getc(line->input->file)) {
    if (length + 1 < MAX_TEXT && (length > 0 || !isspace(c))) line->text[length++] = isprint(c) ? (char)c : ' ';
  }
  line->text[length] = '\0';
  line->rest = line->text;
  line->input->line++;
  return true;
}

static inline int countWords(const char *text) {
  int count = 0;
  for (const char *c = text; *c != '\0'; c++) count += *c != ' ' && (c == text || c[-1] == ' ');
  return count;
}

// Take the next number of a line.
static inline bool takeNumber(Line *line, int min, int max, const char *what, int *number) {
  char *word = line->rest + strspn(line->rest, " ");
  char *end = word + strcspn(word, " ");
  char copy[40];
  snprintf(copy, sizeof copy, "%.*s", (int)(end - word), word);
  line->rest = end;
  if (end != word && isNumberWithin(copy, min, max, number)) return true;
  snprintf(line->input->error, sizeof line->input->error,
           end == word ? "%s: missing" : "%s: %s is no number from %d to %d", what, copy, min, max);
  return false;
}

static inline bool takeNumbers(Line *line, int count, int min, int max, const char *what, int *numbers) {
  for (int i = 0; i < count; i++) {
    char name[40];
    snprintf(name, sizeof name, "%s %d", what, i + 1);
    if (!takeNumber(line, min, max, name, &numbers[i])) return false;
  }
  return true;
}

static inline bool expectLineEnd(Line *line) {
  if (countWords(line->rest) == 0) return true;
  snprintf(line->input->error, sizeof line->input->error, "nothing more is expected in this line");
  return false;
}

// Within an instance.
static inline bool readNextLine(Line *line, const char *what) {
  if (readLine(line)) return true;
  snprintf(line->input->error, sizeof line->input->error, ferror(line->input->file) ? "cannot read on" : "%s: missing",
           what);
  return false;
}

static inline void keepName(Instance *instance, const char *text) {
  const char *name = strstr(text, "Problem");
  if (name == NULL || instance->name[0] != '\0') return;
  name += strlen("Problem");
  name += strspn(name, ": ");
  snprintf(instance->name, sizeof instance->name, "%s", name);
  for (size_t i = strlen(instance->name); i > 0 && instance->name[i - 1] == ' '; i--) instance->name[i - 1] = '\0';
}

static inline bool readSizes(Line *line, Instance *instance) {
  return takeNumber(line, 1, MAX_CARS, "number of cars", &instance->nbCars) &&
         takeNumber(line, 1, MAX_OPTIONS, "number of options", &instance->nbOptions) &&
         takeNumber(line, 1, MAX_CLASSES, "number of classes", &instance->nbClasses) && expectLineEnd(line);
}

static inline void useCommonCapacities(Instance *instance) {
  static const int capacities[] = {1, 2, 1, 2, 1}, blocks[] = {2, 3, 3, 5, 5};
  memcpy(instance->capacities, capacities, sizeof capacities);
  memcpy(instance->blocks, blocks, sizeof blocks);
}

// The line after the sizes has been read; the first line of the classes has been when this is done.
static inline bool readCapacities(Line *line, Instance *instance) {
  int n = instance->nbOptions;
  if (n == 5 && countWords(line->text) == n + 2) {
    useCommonCapacities(instance);
    return true;
  }
  return takeNumbers(line, n, 0, MAX_BLOCK, "capacity of option", instance->capacities) && expectLineEnd(line) &&
         readNextLine(line, "blocks") && takeNumbers(line, n, 1, MAX_BLOCK, "block of option", instance->blocks) &&
         expectLineEnd(line) && readNextLine(line, "class 0");
}

static inline bool readClass(Line *line, Instance *instance, int class) {
  int number = 0, has[MAX_OPTIONS];
  if (!takeNumber(line, class, class, "class", &number) ||
      !takeNumber(line, 0, MAX_CARS, "number of its cars", &instance->demands[class]) ||
      !takeNumbers(line, instance->nbOptions, 0, 1, "option", has) || !expectLineEnd(line))
    return false;
  for (int option = 0; option < instance->nbOptions; option++) instance->has[option][class] = has[option];
  return true;
}

static inline bool readClasses(Line *line, Instance *instance) {
  int nbCars = 0;
  for (int class = 0; class < instance->nbClasses; class ++) {
    char name[40];
    snprintf(name, sizeof name, "class %d", class);
    if ((class > 0 && !readNextLine(line, name)) || !readClass(line, instance, class)) return false;
    nbCars += instance->demands[class];
  }
  if (nbCars == instance->nbCars) return true;
  snprintf(line->input->error, sizeof line->input->error, "the classes have %d cars together, not %d", nbCars,
           instance->nbCars);
  return false;
}

typedef enum { NO_MORE, READ, MALFORMED } Reading;

// Read the next instance. When it is malformed, the input's line and error say where and why.
static inline Reading readInstance(Input *input, Instance *instance) {
  Line line = {input, "", NULL};
  *instance = (Instance){0};
  do {
    if (!readLine(&line)) {
      snprintf(input->error, sizeof input->error, "cannot read on");
      return ferror(input->file) ? MALFORMED : NO_MORE;
    }
    keepName(instance, line.text);
  } while (!isdigit((unsigned char)line.text[0]));
  return readSizes(&line, instance) && readNextLine(&line, "capacities") && readCapacities(&line, instance) &&
                 readClasses(&line, instance)
             ? READ
             : MALFORMED;
}

#endif  // KORU_EXAMPLE_CAR_SEQUENCING_INPUT_H
