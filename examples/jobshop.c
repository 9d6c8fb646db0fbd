// SPDX-License-Identifier: MIT
// Job-shop scheduling: each job is a chain of operations, each on a machine of its own for a given time; a machine
// works at one operation at a time. When can all be done?
//
// A start per operation, and for any two operations on a machine a truth value that tells which comes first
// (cs_EitherBefore). A search object decides these, those first that have little room and have failed often, as in the
// best schedule so far; when all are decided, every start can take its minimum. cs_DisjunctiveTasks prunes each
// machine, and refuses nothing that is feasible, so the last schedule is the best. With --fast, cs_Disjunctive takes
// its place: it may refuse a feasible schedule, so that what it leaves is not always the best.
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
    "  --stats      print what the search has done, too\n"
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
  CSint *start;
} Operation;

// Arrays that cs_Disjunctive keeps stay here until cs_end.
typedef struct {
  Operation operations[MAX_OPERATIONS];
  CSint *starts[MAX_OPERATIONS];
  int nbOperations;
  CSorder orders[MAX_PAIRS];
  int nbOrders;
  CSint *machineStarts[MAX_MACHINES][MAX_JOBS];
  CSint *machineDurations[MAX_MACHINES][MAX_JOBS];
  CSint *makespan;
} Model;

typedef struct {
  int starts[MAX_OPERATIONS];
  int makespan;  // -1 before the first schedule
  double begun;
  bool proved;
  CSsearchStats stats;
} Result;

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

static bool postPrecedence(const Operation *operation, CSint *next) {
  return cs_PrecedenceIf(NULL, operation->start, CSINT(operation->duration), 0, next);
}

static bool postJob(const Instance *instance, int job, int horizon) {
  for (int k = 0; k < instance->nbMachines; k++) {
    int number = model.nbOperations++, duration = instance->durations[job][k];
    CSint *start = cs_createCSint(0, horizon);
    model.operations[number] = (Operation){job, instance->machines[job][k], duration, start};
    model.starts[number] = start;
    if (k > 0 && !postPrecedence(&model.operations[number - 1], start)) return false;
  }
  return postPrecedence(&model.operations[model.nbOperations - 1], model.makespan);
}

// Two operations of one job are in order anyway, and one that takes no time is in nobody's way.
static bool inConflict(const Operation *a, const Operation *b) {
  return a->machine == b->machine && a->job != b->job && a->duration > 0 && b->duration > 0;
}

static bool postOrder(const Operation *a, const Operation *b) {
  CSint *first = cs_createCSint(0, 1), *durationA = CSINT(a->duration), *durationB = CSINT(b->duration);
  model.orders[model.nbOrders++] = (CSorder){first, {a->start, b->start}, {durationA, durationB}, a->machine};
  return cs_EitherBefore(first, a->start, durationA, NULL, b->start, durationB, NULL);
}

static bool postOrders(void) {
  for (int i = 0; i < model.nbOperations; i++) {
    for (int j = i + 1; j < model.nbOperations; j++) {
      const Operation *a = &model.operations[i], *b = &model.operations[j];
      if (inConflict(a, b) && !postOrder(a, b)) return false;
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
    int latestEnd = cs_getMax(operation->start) + operation->duration;
    if (cs_getMin(operation->start) < head) head = cs_getMin(operation->start);
    if (horizon - latestEnd < tail) tail = horizon - latestEnd;
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
  if (!postOrders()) return false;
  for (int machine = 0; machine < instance->nbMachines; machine++) {
    if (!boundByLoad(machine) || !postMachine(machine, options->fast)) return false;
  }
  return true;
}

// --- Search ---

static CSsearch *createSearch(const Options *options) {
  const CSsearchOptions how = {.size = sizeof how,
                               .minimize = model.makespan,
                               .guided = true,
                               .restarts = CS_RESTARTS_GEOMETRIC,
                               .milliseconds = 1000LL * options->seconds};
  CSsearch *search = cs_createSearch(NULL, 0);
  bool told = cs_setSearchOptions(search, &how) &&
              cs_addSearchOrders(search, model.orders, model.nbOrders, CS_ORDER_SLACK_WDEG, CS_VALUE_SLACK) &&
              cs_addSearchPhase(search, model.starts, model.nbOperations, CS_ORDER_SMALLEST_MIN, CS_VALUE_MIN);
  return told ? search : NULL;
}

static void keepSchedule(bool isQuiet) {
  for (int i = 0; i < model.nbOperations; i++) result.starts[i] = cs_getValue(model.starts[i]);
  result.makespan = cs_getValue(model.makespan);
  if (isQuiet) return;
  printf("Makespan %d after %.2f s\n", result.makespan, secondsNow() - result.begun);
  fflush(stdout);
}

// Each schedule is shorter than the one before.
static void searchAll(const Options *options) {
  CSsearch *search = createSearch(options);
  while (cs_nextSolution(search) == CS_STATUS_SOLUTION) keepSchedule(options->quiet);
  result.proved = cs_getSearchStatus(search) == CS_STATUS_OPTIMAL && !options->fast;
  cs_getSearchStats(search, &result.stats, sizeof result.stats);
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

static void printSummary(const Instance *instance) {
  printf("%d job%s, %d machine%s: ", instance->nbJobs, instance->nbJobs == 1 ? "" : "s", instance->nbMachines,
         instance->nbMachines == 1 ? "" : "s");
  if (result.makespan < 0)
    printf("no schedule found");
  else
    printf("makespan %d, %s", result.makespan, result.proved ? "proved shortest" : "not proved shortest");
  printf(" | %lld fails | %.2f s\n", result.stats.fails, secondsNow() - result.begun);
}

static void printStats(void) {
  const CSsearchStats *stats = &result.stats;
  printf("%lld choice points, %lld restarts, %lld no-goods, %lld calls of propagators; the best after %.2f s\n",
         stats->choicePoints, stats->restarts, stats->noGoods, stats->wakings, stats->secondsToBest);
}

// --- The run ---

static int report(const Instance *instance, const Options *options) {
  if (result.makespan >= 0 && !options->quiet) printChart(instance);
  printSummary(instance);
  if (options->stats) printStats();
  if (result.makespan >= 0 && options->svg != NULL && drawChart(instance, options->svg) != EXIT_AS_HOPED)
    return EXIT_TROUBLE;
  return result.proved ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

static int run(const Instance *instance, const Options *options) {
  result.makespan = -1;
  result.begun = secondsNow();
  startSolver(program);
  int status = EXIT_TROUBLE;
  if (postModel(instance, options)) {
    searchAll(options);
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
