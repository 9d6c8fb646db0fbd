// SPDX-License-Identifier: MIT
// Job-shop scheduling: each job is a chain of operations, each on a machine of its own for a given time; a machine
// works at one operation at a time. When can all be done?
//
// A start per operation, and for any two operations on a machine two 0/1 variables, one per order, of which exactly one
// holds (cs_ReifLe, cs_Neq). The search decides orders, those with the least room first; when all are decided, every
// start can take its minimum. cs_DisjunctiveTasks prunes each machine, and refuses nothing that is feasible, so the
// last schedule is the best. With --fast, cs_Disjunctive takes its place: it may refuse a feasible schedule, so that
// what it leaves is not always the best; for la03 that is 602 instead of 597.
#include "arguments.h"
#include "chart.h"
#include "jobshop_input.h"

#include <koru_extras.h>

static char program[] = "jobshop";

static const char usage[] =
    "usage: jobshop [--fast] [--seconds N] [--svg FILE] [--quiet] [--stats] [INSTANCE]\n"
    "\n"
    "Finds a schedule of least makespan for the job shop of the file INSTANCE (standard input without one, or for -),\n"
    "proves that none is shorter, and draws it. The file holds the number of jobs and of machines (1 to 50 each), "
    "then\n"
    "for each job the machines it visits in order, counted from 0, each with a duration (0 to 100000). Anything from a "
    "# to the\n"
    "end of its line is skipped.\n"
    "\n"
    "  --fast       prune with cs_Disjunctive, which may miss the best schedule now and then: no proof\n"
    "  --seconds N  stop after N seconds with the best schedule found by then\n"
    "  --svg FILE   draw the schedule into FILE as a picture\n"
    "  --quiet      print only the summary\n"
    "  --stats      print the solver's statistics, too\n"
    "  --help       print this text\n"
    "\n"
    "Exit status: 0 when the schedule was proved to be shortest, 1 when it was not, 2 on bad input or bad arguments.\n";

enum { MAX_OPERATIONS = MAX_JOBS * MAX_MACHINES, MAX_PAIRS = MAX_MACHINES * MAX_JOBS * (MAX_JOBS - 1) / 2 };

typedef struct {
  bool fast, quiet, stats;
  int seconds;
  const char *svg, *file;
} Options;

typedef struct {
  int job, machine, duration;
  CSint *start, *end;
} Operation;

// Two operations on a machine, and whether the first comes before the second and the other way round.
typedef struct {
  const Operation *first, *second;
  CSint *forward, *backward;
} Pair;

// Arrays that cs_Disjunctive keeps stay here until cs_end.
typedef struct {
  Operation operations[MAX_OPERATIONS];
  CSint *starts[MAX_OPERATIONS];
  int nbOperations;
  Pair pairs[MAX_PAIRS];
  int nbPairs;
  CSint *machineStarts[MAX_MACHINES][MAX_JOBS];
  CSint *machineDurations[MAX_MACHINES][MAX_JOBS];
  CSint *makespan;
} Model;

typedef struct {
  int starts[MAX_OPERATIONS];
  int makespan;  // -1 before the first schedule
  double begun, deadline;
  bool isQuiet, outOfTime;
} Result;

// Global because the callbacks of a search are given nothing but the variables that are labelled.
static Model model;
static Result result;

// --- Model ---

static int totalDuration(const Instance *instance) {
  int total = 0;
  for (int job = 0; job < instance->nbJobs; job++) {
    for (int k = 0; k < instance->nbMachines; k++) total += instance->durations[job][k];
  }
  return total;
}

static bool postJob(const Instance *instance, int job, int horizon) {
  CSint *previous = CSINT(0);
  for (int k = 0; k < instance->nbMachines; k++) {
    int number = model.nbOperations++, duration = instance->durations[job][k];
    CSint *start = cs_createCSint(0, horizon);
    Operation *operation = &model.operations[number];
    *operation = (Operation){job, instance->machines[job][k], duration, start, cs_Add(start, CSINT(duration))};
    model.starts[number] = start;
    if (!cs_Le(previous, start)) return false;
    previous = operation->end;
  }
  return cs_Le(previous, model.makespan);
}

// Two operations of one job are in order anyway, and one that takes no time is in nobody's way.
static bool inConflict(const Operation *a, const Operation *b) {
  return a->machine == b->machine && a->job != b->job && a->duration > 0 && b->duration > 0;
}

static bool postPair(const Operation *a, const Operation *b) {
  Pair *pair = &model.pairs[model.nbPairs++];
  *pair = (Pair){a, b, cs_ReifLe(a->end, b->start), cs_ReifLe(b->end, a->start)};
  return cs_Neq(pair->forward, pair->backward);
}

static bool postPairs(void) {
  for (int i = 0; i < model.nbOperations; i++) {
    for (int j = i + 1; j < model.nbOperations; j++) {
      const Operation *a = &model.operations[i], *b = &model.operations[j];
      if (inConflict(a, b) && !postPair(a, b)) return false;
    }
  }
  return true;
}

// All the work of a machine lies between the earliest start and the shortest way out of any of its operations.
static bool boundByLoad(int machine) {
  int head = INT_MAX, tail = INT_MAX, load = 0, horizon = cs_getMax(model.makespan);
  for (int i = 0; i < model.nbOperations; i++) {
    const Operation *operation = &model.operations[i];
    if (operation->machine != machine) continue;
    if (cs_getMin(operation->start) < head) head = cs_getMin(operation->start);
    if (horizon - cs_getMax(operation->end) < tail) tail = horizon - cs_getMax(operation->end);
    load += operation->duration;
  }
  return load == 0 || cs_GE(model.makespan, head + load + tail);
}

static bool postMachine(int machine, bool fast) {
  int n = 0;
  for (int i = 0; i < model.nbOperations; i++) {
    const Operation *operation = &model.operations[i];
    if (operation->machine != machine) continue;
    model.machineStarts[machine][n] = operation->start;
    model.machineDurations[machine][n++] = CSINT(operation->duration);
  }
  CSint **starts = model.machineStarts[machine], **durations = model.machineDurations[machine];
  return fast ? cs_Disjunctive(starts, durations, n) : cs_DisjunctiveTasks(starts, durations, NULL, n);
}

static bool postModel(const Instance *instance, const Options *options) {
  int horizon = totalDuration(instance);
  model.makespan = cs_createCSint(0, horizon);
  for (int job = 0; job < instance->nbJobs; job++)
    if (!postJob(instance, job, horizon)) return false;
  if (!postPairs()) return false;
  for (int machine = 0; machine < instance->nbMachines; machine++) {
    if (!boundByLoad(machine) || !postMachine(machine, options->fast)) return false;
  }
  return true;
}

// --- Search ---

// How much time is left around two operations when the first comes before the second.
static int room(const Operation *first, const Operation *second) {
  return cs_getMax(second->start) - cs_getMin(first->end);
}

// The room of the tighter order, larger when the other order has much more (after Smith and Cheng, 1993).
static double urgency(int one, int other) {
  double least = one < other ? one : other, most = one < other ? other : one;
  return least * least * (most + 1) / (least + 1);
}

// The pair whose order is decided next, and of it the order with less room: the search tries 0, its negation, first.
static CSint *selectOrder(void) {
  CSint *selected = NULL;
  double best = 0;
  for (int i = 0; i < model.nbPairs; i++) {
    const Pair *pair = &model.pairs[i];
    if (!cs_isFree(pair->forward)) continue;
    int forward = room(pair->first, pair->second), backward = room(pair->second, pair->first);
    double value = urgency(forward, backward);
    if (selected != NULL && value >= best) continue;
    best = value;
    selected = forward >= backward ? pair->backward : pair->forward;
  }
  return selected;
}

// With all orders decided, the start that can be earliest: its minimum fits.
static CSint *selectStart(CSint **starts, int nbStarts) {
  CSint *selected = NULL;
  for (int i = 0; i < nbStarts; i++) {
    if (cs_isFree(starts[i]) && (selected == NULL || cs_getMin(starts[i]) < cs_getMin(selected))) selected = starts[i];
  }
  if (selected == NULL && cs_isFree(model.makespan)) return model.makespan;
  return selected;
}

static CSint *selectNext(CSint **starts, int nbStarts) {
  if (result.deadline > 0 && secondsNow() > result.deadline) {
    result.outOfTime = true;
    cs_cancelSearch();
  }
  CSint *order = selectOrder();
  return order != NULL ? order : selectStart(starts, nbStarts);
}

// Each schedule is shorter than the one before.
static void keepSchedule(CSint **starts, int nbStarts, CSint *makespan) {
  for (int i = 0; i < nbStarts; i++) result.starts[i] = cs_getValue(starts[i]);
  result.makespan = cs_getValue(makespan);
  if (result.isQuiet) return;
  printf("Makespan %d after %.2f s\n", result.makespan, secondsNow() - result.begun);
  fflush(stdout);
}

// --- Output ---

static char symbolOf(int job) { return "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"[job]; }

static void printChart(const Instance *instance) {
  bool coloured = wantsColour(stdout);
  putchar('\n');
  for (int machine = 0; machine < instance->nbMachines; machine++) {
    ChartRow row = {{0}, {0}};
    for (int i = 0; i < model.nbOperations; i++) {
      const Operation *o = &model.operations[i];
      if (o->machine == machine) addBar(&row, result.starts[i], o->duration, result.makespan, symbolOf(o->job), o->job);
    }
    char label[16];
    snprintf(label, sizeof label, "m%d", machine);
    printRow(label, &row, result.makespan, coloured);
  }
  printTimes(result.makespan);
  puts("A row for each machine; a digit or letter is the job that it works at.\n");
}

static int drawChart(const Instance *instance, const char *path) {
  enum { ROW = 34 };
  char label[64];
  snprintf(label, sizeof label, "Job shop: %d jobs, %d machines, makespan %d", instance->nbJobs, instance->nbMachines,
           result.makespan);
  Picture picture = openPicture(program, path, result.makespan, instance->nbMachines * ROW, label);
  drawAxis(&picture);
  double x = picture.left;
  for (int job = 0; job < instance->nbJobs && x < picture.left + picture.width - 60; job++) {
    snprintf(label, sizeof label, "job %d", job);
    x = drawLegend(&picture, x, job, label);
  }
  for (int machine = 0; machine < instance->nbMachines; machine++)
    drawText(&picture, picture.left - 10, picture.top + machine * ROW + 21, "row", "machine %d", machine);
  for (int i = 0; i < model.nbOperations; i++) {
    const Operation *o = &model.operations[i];
    snprintf(label, sizeof label, "%d", o->job);
    drawBar(&picture, result.starts[i], o->duration, picture.top + o->machine * ROW + 4, ROW - 8, o->job, label);
  }
  return closePicture(program, path, &picture);
}

static void printSummary(const Instance *instance, bool proved) {
  printf("%d job%s, %d machine%s: ", instance->nbJobs, instance->nbJobs == 1 ? "" : "s", instance->nbMachines,
         instance->nbMachines == 1 ? "" : "s");
  if (result.makespan < 0)
    printf("no schedule found");
  else
    printf("makespan %d, %s", result.makespan, proved ? "proved shortest" : "not proved shortest");
  printf(" | %d fails, %d choice points | %.2f s\n", cs_getNbFails(), cs_getNbChoicePoints(),
         secondsNow() - result.begun);
}

// --- The run ---

static int report(const Instance *instance, const Options *options) {
  bool proved = result.makespan >= 0 && !result.outOfTime && !options->fast;
  if (result.makespan >= 0 && !options->quiet) printChart(instance);
  printSummary(instance, proved);
  if (options->stats) cs_printStats();
  if (result.makespan >= 0 && options->svg != NULL && drawChart(instance, options->svg) != EXIT_AS_HOPED)
    return EXIT_TROUBLE;
  return proved ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

static int run(const Instance *instance, const Options *options) {
  result.makespan = -1;
  result.isQuiet = options->quiet;
  result.begun = secondsNow();
  if (options->seconds > 0) result.deadline = result.begun + options->seconds;
  startSolver(program);
  int status = EXIT_TROUBLE;
  if (postModel(instance, options)) {
    cs_minimize(model.starts, model.nbOperations, selectNext, model.makespan, keepSchedule);
    status = report(instance, options);
  } else {
    // There is always a schedule, so this is not a matter of the instance.
    fprintf(stderr, "%s: cannot create the model\n", program);
  }
  cs_end();
  return status;
}

static int readAndRun(Input *input, const Options *options) {
  static Instance instance;
  return readInstance(input, &instance) ? run(&instance, options) : reportInput(program, input);
}

int main(int argc, char **argv) {
  (void)argc;
  Options options = {0};
  const Option known[] = {
      {.name = "--fast", .flag = &options.fast},
      {.name = "--seconds", .number = &options.seconds, .min = 1, .max = 1000000},
      {.name = "--svg", .text = &options.svg},
      {.name = "--quiet", .flag = &options.quiet},
      {.name = "--stats", .flag = &options.stats},
      {.text = &options.file},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  Input input = openInput(program, options.file);
  int status = readAndRun(&input, &options);
  closeInput(&input);
  return finish(program, status);
}
