// SPDX-License-Identifier: MIT
// Reading of the command line: options, and operands, which stand without a name.
//
// An argument that starts with "--" is an option, and so is one that starts with "-" and is neither a number nor "-"
// alone. After "--" there are only operands. Bad arguments and --help end the program.
#ifndef KORU_EXAMPLE_ARGUMENTS_H
#define KORU_EXAMPLE_ARGUMENTS_H

#include "example.h"

#include <errno.h>
#include <stdarg.h>

// What an argument does: it sets a flag, or gives a number from min to max, or a text. An option takes number and text
// from the argument after it.
typedef struct {
  const char *name;  // null: an operand; several of them stand in the order in which they are expected
  bool *flag;
  int *number;
  int min, max;
  const char **text;
} Option;

// What there is to read, and how far reading has come.
typedef struct {
  const char *program, *usage;
  const Option *options;
  size_t nbOptions, nbOperands;
  char **next;  // the argument list ends with a null pointer
} CommandLine;

// Say what is wrong with the arguments and leave.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3), noreturn))
#endif
static inline void
complain(const char *program, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  fprintf(stderr, "%s: ", program);
  vfprintf(stderr, format, arguments);
  fprintf(stderr, "\nTry %s --help.\n", program);
  va_end(arguments);
  exit(EXIT_TROUBLE);
}

static inline int parseNumber(const CommandLine *line, const Option *option, const char *text) {
  char *end = NULL;
  errno = 0;
  long number = strtol(text, &end, 10);
  if (errno != 0 || end == text || *end != '\0' || number < option->min || number > option->max)
    complain(line->program, "%s is no number from %d to %d", text, option->min, option->max);
  return (int)number;
}

// text: the operand itself, or the argument after an option.
static inline void take(const CommandLine *line, const Option *option, const char *text) {
  if (option->number != NULL)
    *option->number = parseNumber(line, option, text);
  else
    *option->text = text;
}

static inline void readOption(CommandLine *line, const char *name) {
  if (strcmp(name, "--help") == 0) {
    fputs(line->usage, stdout);
    exit(finish(line->program, EXIT_AS_HOPED));
  }
  for (size_t i = 0; i < line->nbOptions; i++) {
    const Option *option = &line->options[i];
    if (option->name == NULL || strcmp(name, option->name) != 0) continue;
    if (option->flag != NULL)
      *option->flag = true;
    else if (*line->next == NULL)
      complain(line->program, "%s needs an argument", name);
    else
      take(line, option, *line->next++);
    return;
  }
  complain(line->program, "unknown option %s", name);
}

static inline void readOperand(CommandLine *line, const char *text) {
  size_t toSkip = line->nbOperands++;
  const Option *last = NULL;
  for (size_t i = 0; i < line->nbOptions; i++) {
    const Option *option = &line->options[i];
    if (option->name != NULL) continue;
    last = option;
    if (toSkip-- > 0) continue;
    take(line, option, text);
    return;
  }
  if (last == NULL) complain(line->program, "%s is not expected", text);
  complain(line->program, "more than one %s", last->number != NULL ? "number" : "file");
}

static inline bool isOption(const char *argument) {
  return argument[0] == '-' && argument[1] != '\0' && (argument[1] < '0' || argument[1] > '9');
}

static inline void readArguments(const char *program, const char *usage, const Option *options, size_t nbOptions,
                                 char **argv) {
  CommandLine line = {program, usage, options, nbOptions, 0, argv};
  bool optionsEnded = false;
  if (*line.next != NULL) line.next++;
  while (*line.next != NULL) {
    const char *argument = *line.next++;
    if (!optionsEnded && strcmp(argument, "--") == 0)
      optionsEnded = true;
    else if (!optionsEnded && isOption(argument))
      readOption(&line, argument);
    else
      readOperand(&line, argument);
  }
}

#endif  // KORU_EXAMPLE_ARGUMENTS_H
