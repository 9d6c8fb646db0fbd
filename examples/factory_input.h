// SPDX-License-Identifier: MIT
// Reading of factories: lines of fields between commas, of which the first says what the line is.
//
//   machine,NAME[,FROM-TO...]               with breaks, in which it does not work
//   setup,KIND,KIND,TIME                    on any machine between a task of one kind and one of the other
//   order,NAME,DUE[,RELEASE]
//   task,ORDER,KIND,MACHINE:TIME[,...]      one of these machines does it; tasks of an order follow one another
#ifndef KORU_EXAMPLE_FACTORY_INPUT_H
#define KORU_EXAMPLE_FACTORY_INPUT_H

#include "input.h"

#include <stdarg.h>

enum {
  MOST_MACHINES = 40,
  MOST_KINDS = 20,
  MOST_ORDERS = 100,
  MOST_TASKS = 300,
  MOST_WAYS = 8,
  MOST_BREAKS = 12,
  NAME_SIZE = 24,
  LATEST = 10000
};

typedef char Name[NAME_SIZE];

typedef struct {
  Name name;
  int nbBreaks, from[MOST_BREAKS], to[MOST_BREAKS];
} Machine;

typedef struct {
  Name name;
  int due, release;
} Order;

typedef struct {
  int order, kind, nbWays;
  int machines[MOST_WAYS], durations[MOST_WAYS];
} Task;

typedef struct {
  int nbMachines, nbKinds, nbOrders, nbTasks;
  Machine machines[MOST_MACHINES];
  Name kinds[MOST_KINDS];
  int setups[MOST_KINDS][MOST_KINDS];
  Order orders[MOST_ORDERS];
  Task tasks[MOST_TASKS];
} Factory;

// The fields of a line.
typedef struct {
  char text[512];
  char *fields[MOST_BREAKS + 2];
  int count;
} Line;

#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
static inline bool
fail(Input *input, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(input->error, sizeof input->error, format, arguments);
  va_end(arguments);
  return false;
}

// A line without comment, white space and line end; longer ones are cut off, and refused. False at the end of the file.
static inline bool readLine(Input *input, Line *line, bool *isWhole) {
  size_t length = 0;
  int c = nextCharacter(input);
  if (c == EOF) return false;
  for (; c != '\n' && c != EOF; c = nextCharacter(input))
    if (!isspace(c) && length < sizeof line->text) line->text[length++] = (char)c;
  *isWhole = length < sizeof line->text;
  line->text[*isWhole ? length : length - 1] = '\0';
  return true;
}

static inline bool split(Input *input, Line *line) {
  line->count = 0;
  for (char *field = line->text; field != NULL;) {
    if (line->count == MOST_BREAKS + 2) return fail(input, "too many fields");
    line->fields[line->count++] = field;
    field = strchr(field, ',');
    if (field != NULL) *field++ = '\0';
  }
  return true;
}

static inline bool takeNumber(Input *input, const char *text, int least, int *number) {
  if (text[0] != '\0' && isNumberWithin(text, least, LATEST, number)) return true;
  return fail(input, "%.40s is no number from %d to %d", text, least, LATEST);
}

// Names stand in pages as they are.
static inline bool takeName(Input *input, const char *text, char *name) {
  bool isName = text[0] != '\0' && strlen(text) < NAME_SIZE;
  for (const char *c = text; isName && *c != '\0'; c++) isName = isalnum((unsigned char)*c) || *c == '_' || *c == '-';
  if (!isName) return fail(input, "%.40s is no name of at most %d letters, digits, _ and -", text, NAME_SIZE - 1);
  memcpy(name, text, strlen(text) + 1);
  return true;
}

static inline int findMachine(const Factory *f, const char *name) {
  for (int m = 0; m < f->nbMachines; m++)
    if (strcmp(f->machines[m].name, name) == 0) return m;
  return -1;
}

static inline int findOrder(const Factory *f, const char *name) {
  for (int o = 0; o < f->nbOrders; o++)
    if (strcmp(f->orders[o].name, name) == 0) return o;
  return -1;
}

// A kind is known once it is named.
static inline bool takeKind(Input *input, Factory *f, const char *name, int *kind) {
  for (*kind = 0; *kind < f->nbKinds; ++*kind)
    if (strcmp(f->kinds[*kind], name) == 0) return true;
  if (f->nbKinds == MOST_KINDS) return fail(input, "more than %d kinds", MOST_KINDS);
  return takeName(input, name, f->kinds[f->nbKinds++]);
}

// "A-B" or "A:B", cut in two at the sign.
static inline bool cut(Input *input, char *text, char sign, char **second) {
  *second = strchr(text, sign);
  if (*second == NULL) return fail(input, "%.40s: %c is missing", text, sign);
  *(*second)++ = '\0';
  return true;
}

static inline bool takeMachine(Input *input, Factory *f, const Line *line) {
  if (f->nbMachines == MOST_MACHINES) return fail(input, "more than %d machines", MOST_MACHINES);
  if (line->count < 2) return fail(input, "machine: a name is missing");
  if (findMachine(f, line->fields[1]) >= 0) return fail(input, "machine %s a second time", line->fields[1]);
  Machine *machine = &f->machines[f->nbMachines];
  *machine = (Machine){.nbBreaks = 0};
  if (!takeName(input, line->fields[1], machine->name)) return false;
  for (int k = 2; k < line->count; k++) {
    int n = machine->nbBreaks++;
    char *end;
    if (!cut(input, line->fields[k], '-', &end) || !takeNumber(input, line->fields[k], 0, &machine->from[n]) ||
        !takeNumber(input, end, machine->from[n] + 1, &machine->to[n]))
      return false;
    if (n > 0 && machine->from[n] < machine->to[n - 1]) return fail(input, "breaks must come one after the other");
  }
  f->nbMachines++;
  return true;
}

static inline bool takeSetup(Input *input, Factory *f, const Line *line) {
  int from, to;
  if (line->count != 4) return fail(input, "setup: two kinds and a time are expected");
  return takeKind(input, f, line->fields[1], &from) && takeKind(input, f, line->fields[2], &to) &&
         takeNumber(input, line->fields[3], 0, &f->setups[from][to]);
}

static inline bool takeOrder(Input *input, Factory *f, const Line *line) {
  if (f->nbOrders == MOST_ORDERS) return fail(input, "more than %d orders", MOST_ORDERS);
  if (line->count != 3 && line->count != 4) return fail(input, "order: a name and a due date are expected");
  if (findOrder(f, line->fields[1]) >= 0) return fail(input, "order %s a second time", line->fields[1]);
  Order *order = &f->orders[f->nbOrders];
  *order = (Order){.release = 0};
  if (!takeName(input, line->fields[1], order->name) || !takeNumber(input, line->fields[2], 0, &order->due))
    return false;
  if (line->count == 4 && !takeNumber(input, line->fields[3], 0, &order->release)) return false;
  f->nbOrders++;
  return true;
}

static inline bool takeWay(Input *input, const Factory *f, char *text, Task *task) {
  char *duration;
  if (task->nbWays == MOST_WAYS) return fail(input, "task: more than %d machines", MOST_WAYS);
  if (!cut(input, text, ':', &duration)) return false;
  int n = task->nbWays++;
  task->machines[n] = findMachine(f, text);
  if (task->machines[n] < 0) return fail(input, "there is no machine %.40s", text);
  for (int w = 0; w < n; w++)
    if (task->machines[w] == task->machines[n]) return fail(input, "machine %s a second time", text);
  return takeNumber(input, duration, 1, &task->durations[n]);
}

static inline bool takeTask(Input *input, Factory *f, const Line *line) {
  if (f->nbTasks == MOST_TASKS) return fail(input, "more than %d tasks", MOST_TASKS);
  if (line->count < 4) return fail(input, "task: an order, a kind and a machine with a time are expected");
  Task task = {.order = findOrder(f, line->fields[1]), .nbWays = 0};
  if (task.order < 0) return fail(input, "there is no order %.40s", line->fields[1]);
  if (!takeKind(input, f, line->fields[2], &task.kind)) return false;
  for (int k = 3; k < line->count; k++)
    if (!takeWay(input, f, line->fields[k], &task)) return false;
  f->tasks[f->nbTasks++] = task;
  return true;
}

static inline bool takeLine(Input *input, Factory *f, Line *line) {
  if (line->text[0] == '\0') return true;
  if (!split(input, line)) return false;
  const char *what = line->fields[0];
  if (strcmp(what, "machine") == 0) return takeMachine(input, f, line);
  if (strcmp(what, "setup") == 0) return takeSetup(input, f, line);
  if (strcmp(what, "order") == 0) return takeOrder(input, f, line);
  if (strcmp(what, "task") == 0) return takeTask(input, f, line);
  return fail(input, "%.40s is none of machine, setup, order and task", what);
}

// Adds what the input says to the factory. When it makes no sense, line and error say where and why.
static inline bool readFactory(Input *input, Factory *f) {
  Line line;
  bool isWhole;
  for (; readLine(input, &line, &isWhole); input->line++) {
    if (!isWhole) return fail(input, "the line is too long");
    if (!takeLine(input, f, &line)) return false;
  }
  if (ferror(input->file)) return fail(input, "cannot read on");
  return f->nbTasks > 0 || fail(input, "there is no task");
}

#endif  // KORU_EXAMPLE_FACTORY_INPUT_H
