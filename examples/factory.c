// SPDX-License-Identifier: MIT
// A factory: orders of tasks, one after the other, each task on one of several machines, set-up times between kinds of
// tasks, breaks, due dates. What is done where and when so that little is late? And when an order comes in while others
// are under way, what moves?
//
// A task has one start, a duration, and for each machine that may do it a truth value (cs_Alternative). On each machine
// cs_DisjunctiveTransitions keeps tasks and breaks apart, and a truth value for each pair tells which comes first
// (cs_EitherBefore). The search decides machines, then orders, then starts, and looks into neighbourhoods of the best
// plan in between: orders around some moment are let go, and the choice of machines. Whether a task comes before a
// break is left to its start.
#include "arguments.h"
#include "chart.h"
#include "factory_input.h"
#include "factory_page.h"

#include <koru_extras.h>

static char program[] = "factory";

static const char usage[] =
    "usage: factory [--lateness] [--fails N] [--html FILE] [--quiet] [--change FILE] [--fixed-until T] [FACTORY]\n"
    "\n"
    "Plans the orders of the file FACTORY (standard input without one, or for -) and draws the plan. Lines of the "
    "file:\n"
    "\n"
    "  machine,NAME[,FROM-TO...]            a machine, with breaks in which it does not work\n"
    "  setup,KIND,KIND,TIME                 between a task of one kind and a task of the other on a machine\n"
    "  order,NAME,DUE[,RELEASE]\n"
    "  task,ORDER,KIND,MACHINE:TIME[,...]   on one of these machines; the tasks of an order follow one another\n"
    "\n"
    "  --lateness       make the latest order as little late as can be, not the sum of what orders are late\n"
    "  --fails N        stop after N fails of the search with the best plan found by then (20000)\n"
    "  --change FILE    then read more lines, plan again, and say what has moved\n"
    "  --fixed-until T  what has begun by then stays, and nothing else begins before (0)\n"
    "  --html FILE      write the plan as a page for a browser\n"
    "  --quiet          print only the summary and what has moved\n"
    "  --help           print this text\n"
    "\n"
    "Exit status: 0 when the last plan was proved to be the best, 1 when it was not, 2 on bad input or bad "
    "arguments.\n";

typedef struct {
  bool lateness, quiet;
  int fails, fixedUntil;
  const char *html, *change, *file;
} Options;

typedef struct {
  bool found, proved;
  int starts[MOST_TASKS], ways[MOST_TASKS];  // ways: which of its machines a task is on
  long long fails;
} Plan;

enum { MOST_ITEMS = MOST_TASKS + MOST_BREAKS, MOST_PAIRS = 20000 };

// What a machine may have to do: tasks that may be there, and breaks that are.
typedef struct {
  int count;
  CSint *starts[MOST_ITEMS], *durations[MOST_ITEMS], *present[MOST_ITEMS];
  int kinds[MOST_ITEMS];
} Machinery;

typedef struct {
  CSint *starts[MOST_TASKS], *durations[MOST_TASKS];
  CSint *present[MOST_TASKS][MOST_WAYS];
  CSint *choices[MOST_TASKS * MOST_WAYS];
  int nbChoices;
  Machinery machines[MOST_MACHINES];
  int times[(MOST_KINDS + 1) * (MOST_KINDS + 1)];
  CSorder orders[MOST_PAIRS];
  int nbOrders;
  CSint *late[MOST_ORDERS];
  CSint *cost;
} Model;

static Factory factory;
static Model model;

// --- What plans come to ---

static int durationOf(const Plan *plan, int task) { return factory.tasks[task].durations[plan->ways[task]]; }
static int machineOf(const Plan *plan, int task) { return factory.tasks[task].machines[plan->ways[task]]; }
static int endOf(const Plan *plan, int task) { return plan->starts[task] + durationOf(plan, task); }

static int endOfOrder(const Plan *plan, int order) {
  int end = 0;
  for (int i = 0; i < factory.nbTasks; i++)
    if (factory.tasks[i].order == order && endOf(plan, i) > end) end = endOf(plan, i);
  return end;
}

static int endOfPlan(const Plan *plan) {
  int end = 1;
  for (int i = 0; i < factory.nbTasks; i++)
    if (endOf(plan, i) > end) end = endOf(plan, i);
  return end;
}

// --- Model ---

static int larger(int a, int b) { return a > b ? a : b; }

// One after the other, all tasks fit behind the last break and release.
static int horizonOf(int fixedUntil) {
  int horizon = fixedUntil, setup = 0;
  for (int m = 0; m < factory.nbMachines; m++)
    for (int k = 0; k < factory.machines[m].nbBreaks; k++) horizon = larger(horizon, factory.machines[m].to[k]);
  for (int o = 0; o < factory.nbOrders; o++) horizon = larger(horizon, factory.orders[o].release);
  for (int a = 0; a < factory.nbKinds; a++)
    for (int b = 0; b < factory.nbKinds; b++) setup = larger(setup, factory.setups[a][b]);
  for (int i = 0; i < factory.nbTasks; i++) {
    int longest = 0;
    for (int w = 0; w < factory.tasks[i].nbWays; w++) longest = larger(longest, factory.tasks[i].durations[w]);
    horizon += longest + setup;
  }
  return horizon;
}

static void addItem(int machine, CSint *start, int duration, CSint *present, int kind) {
  Machinery *m = &model.machines[machine];
  m->starts[m->count] = start;
  m->durations[m->count] = CSINT(duration);
  m->present[m->count] = present;
  m->kinds[m->count++] = kind;
}

static void addBreaks(void) {
  for (int m = 0; m < factory.nbMachines; m++) {
    const Machine *machine = &factory.machines[m];
    model.machines[m].count = 0;
    for (int k = 0; k < machine->nbBreaks; k++)
      addItem(m, CSINT(machine->from[k]), machine->to[k] - machine->from[k], CSINT(1), factory.nbKinds);
  }
}

// Wherever a task is, it has the same start.
static bool postTask(int i, int horizon) {
  const Task *task = &factory.tasks[i];
  CSint *starts[MOST_WAYS], *durations[MOST_WAYS];
  CSint *start = model.starts[i] = cs_createCSint(factory.orders[task->order].release, horizon);
  model.durations[i] = cs_createCSint(0, horizon);
  for (int w = 0; w < task->nbWays; w++) {
    CSint *present = model.present[i][w] = cs_createCSint(0, 1);
    starts[w] = start;
    durations[w] = CSINT(task->durations[w]);
    model.choices[model.nbChoices++] = present;
    addItem(task->machines[w], start, task->durations[w], present, task->kind);
  }
  return cs_Alternative(start, model.durations[i], NULL, starts, durations, model.present[i], task->nbWays);
}

// The task before it in the order, and the end of the order.
static bool postPlaceInOrder(int i) {
  int order = factory.tasks[i].order;
  for (int before = i - 1; before >= 0; before--) {
    if (factory.tasks[before].order != order) continue;
    if (!cs_PrecedenceIf(NULL, model.starts[before], model.durations[before], 0, model.starts[i])) return false;
    break;
  }
  return cs_PrecedenceIf(NULL, model.starts[i], model.durations[i], -factory.orders[order].due, model.late[order]);
}

// Breaks follow anything, and are followed by anything, at once.
static bool postMachine(int machine) {
  Machinery *m = &model.machines[machine];
  int states = factory.nbKinds + 1;
  for (int a = 0; a < states; a++)
    for (int b = 0; b < states; b++)
      model.times[a * states + b] = a < factory.nbKinds && b < factory.nbKinds ? factory.setups[a][b] : 0;
  return cs_DisjunctiveTransitions(m->starts, m->durations, m->present, m->kinds, m->kinds, m->count, model.times,
                                   states, states);
}

// Of tasks. Where there are too many, starts decide the others.
static bool postOrdersOf(int machine) {
  const Machinery *m = &model.machines[machine];
  int nbBreaks = factory.machines[machine].nbBreaks;
  for (int j = nbBreaks; j < m->count; j++) {
    for (int i = nbBreaks; i < j && model.nbOrders < MOST_PAIRS; i++) {
      CSint *first = cs_createCSint(0, 1);
      model.orders[model.nbOrders++] =
          (CSorder){first, {m->starts[i], m->starts[j]}, {m->durations[i], m->durations[j]}, machine};
      if (!cs_EitherBefore(first, m->starts[i], m->durations[i], m->present[i], m->starts[j], m->durations[j],
                           m->present[j]))
        return false;
    }
  }
  return true;
}

// What has begun stays where it is.
static bool postFixed(const Plan *old, int nbOld, int until) {
  for (int i = 0; i < factory.nbTasks; i++) {
    if (i >= nbOld || old->starts[i] >= until) {
      if (!cs_GE(model.starts[i], until)) return false;
    } else if (!cs_EQ(model.starts[i], old->starts[i]) || !cs_EQ(model.present[i][old->ways[i]], 1)) {
      return false;
    }
  }
  return true;
}

static bool postModel(const Options *options, const Plan *old, int nbOld) {
  int until = nbOld > 0 ? options->fixedUntil : 0, horizon = horizonOf(options->fixedUntil);
  model.nbChoices = model.nbOrders = 0;
  model.cost = cs_createCSint(-LATEST, horizon * larger(factory.nbOrders, 1));
  for (int o = 0; o < factory.nbOrders; o++)
    model.late[o] = options->lateness ? model.cost : cs_createCSint(0, horizon);
  if (!options->lateness && !cs_Eq(model.cost, cs_Sigma(model.late, factory.nbOrders))) return false;
  addBreaks();
  for (int i = 0; i < factory.nbTasks; i++)
    if (!postTask(i, horizon) || !postPlaceInOrder(i)) return false;
  for (int m = 0; m < factory.nbMachines; m++)
    if (!postMachine(m) || !postOrdersOf(m)) return false;
  return postFixed(old, nbOld, until);
}

// --- Search ---

static CSsearch *createSearch(const Options *options) {
  const CSsearchOptions how = {.size = sizeof how,
                               .minimize = model.cost,
                               .restarts = CS_RESTARTS_GEOMETRIC,
                               .neighbours = CS_NEIGHBOURS_WINDOW,
                               .fails = options->fails};
  CSsearch *search = cs_createSearch(NULL, 0);
  bool told = cs_setSearchOptions(search, &how) &&
              cs_addSearchPhase(search, model.choices, model.nbChoices, CS_ORDER_DOM_WDEG, CS_VALUE_RANDOM) &&
              cs_addSearchOrders(search, model.orders, model.nbOrders, CS_ORDER_SLACK_WDEG, CS_VALUE_SLACK) &&
              cs_addSearchPhase(search, model.starts, factory.nbTasks, CS_ORDER_SMALLEST_MIN, CS_VALUE_MIN);
  return told ? search : NULL;
}

static void keepPlan(Plan *plan) {
  plan->found = true;
  for (int i = 0; i < factory.nbTasks; i++) {
    plan->starts[i] = cs_getValue(model.starts[i]);
    for (int w = 0; w < factory.tasks[i].nbWays; w++)
      if (cs_getMin(model.present[i][w]) == 1) plan->ways[i] = w;
  }
}

// Each plan is better than the one before. False when there is no model.
static bool makePlan(const Options *options, const Plan *old, int nbOld, Plan *plan) {
  plan->found = plan->proved = false;
  startSolver(program);
  bool posted = postModel(options, old, nbOld);
  if (posted) {
    CSsearch *search = createSearch(options);
    CSsearchStats stats;
    while (cs_nextSolution(search) == CS_STATUS_SOLUTION) keepPlan(plan);
    plan->proved = cs_getSearchStatus(search) == CS_STATUS_OPTIMAL;
    if (cs_getSearchStats(search, &stats, sizeof stats)) plan->fails = stats.fails;
  }
  cs_end();
  return posted;
}

// --- Output ---

static char symbolOf(int order) {
  static const char symbols[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  return symbols[order % (int)(sizeof symbols - 1)];
}

static void printChart(const Plan *plan) {
  bool coloured = wantsColour(stdout);
  int end = endOfPlan(plan);
  putchar('\n');
  for (int m = 0; m < factory.nbMachines; m++) {
    const Machine *machine = &factory.machines[m];
    ChartRow row = {{0}, {0}};
    for (int k = 0; k < machine->nbBreaks && machine->from[k] < end; k++)
      addBar(&row, machine->from[k], (machine->to[k] < end ? machine->to[k] : end) - machine->from[k], end, '/', 7);
    for (int i = 0; i < factory.nbTasks; i++) {
      int order = factory.tasks[i].order;
      if (machineOf(plan, i) == m) addBar(&row, plan->starts[i], durationOf(plan, i), end, symbolOf(order), order);
    }
    printRow(machine->name, &row, end, coloured);
  }
  printTimes(end);
  puts("A row for each machine; a letter is the order that it works at, / a break.\n");
}

static void printOrders(const Plan *plan) {
  for (int o = 0; o < factory.nbOrders; o++) {
    int end = endOfOrder(plan, o), due = factory.orders[o].due;
    printf("%c %s: due %d, ends %d, %d %s\n", symbolOf(o), factory.orders[o].name, due, end,
           end > due ? end - due : due - end, end > due ? "late" : "early");
  }
}

static void printSummary(const Plan *plan) {
  printf("%d orders, %d tasks, %d machines: ", factory.nbOrders, factory.nbTasks, factory.nbMachines);
  if (!plan->found) {
    puts("no plan found");
    return;
  }
  long long total = 0;
  int most = -LATEST;
  for (int o = 0; o < factory.nbOrders; o++) {
    int late = endOfOrder(plan, o) - factory.orders[o].due;
    total += late > 0 ? late : 0;
    most = larger(most, late);
  }
  printf("total tardiness %lld, maximal lateness %d, %s | %lld fails\n", total, most,
         plan->proved ? "proved best" : "not proved best", plan->fails);
}

// The number of a task in its order, from 1.
static int stepOf(int task) {
  int step = 1;
  for (int i = 0; i < task; i++) step += factory.tasks[i].order == factory.tasks[task].order;
  return step;
}

static void printMoves(const Plan *old, int nbOld, const Plan *plan) {
  int moved = 0;
  for (int i = 0; i < nbOld; i++) {
    int from = machineOf(old, i), to = machineOf(plan, i);
    if (from == to && old->starts[i] == plan->starts[i]) continue;
    moved++;
    printf("moved: task %d of %s, %s %d -> %s %d\n", stepOf(i), factory.orders[factory.tasks[i].order].name,
           factory.machines[from].name, old->starts[i], factory.machines[to].name, plan->starts[i]);
  }
  printf("%d of %d tasks moved, %d new\n", moved, nbOld, factory.nbTasks - nbOld);
}

static void writeData(FILE *file, const Plan *plan) {
  fprintf(file, "const plan = {title: 'Plan of %d orders', end: %d,\n  machines: [", factory.nbOrders, endOfPlan(plan));
  for (int m = 0; m < factory.nbMachines; m++) {
    const Machine *machine = &factory.machines[m];
    fprintf(file, "\n    {name: '%s', breaks: [", machine->name);
    for (int k = 0; k < machine->nbBreaks; k++) fprintf(file, "[%d, %d],", machine->from[k], machine->to[k]);
    fputs("]},", file);
  }
  fputs("],\n  orders: [", file);
  for (int o = 0; o < factory.nbOrders; o++)
    fprintf(file, "\n    {name: '%s', due: %d, end: %d},", factory.orders[o].name, factory.orders[o].due,
            endOfOrder(plan, o));
  fputs("],\n  tasks: [", file);
  for (int i = 0; i < factory.nbTasks; i++)
    fprintf(file, "\n    {order: %d, step: %d, kind: '%s', machine: %d, start: %d, time: %d},", factory.tasks[i].order,
            stepOf(i), factory.kinds[factory.tasks[i].kind], machineOf(plan, i), plan->starts[i], durationOf(plan, i));
  fputs("]};\n", file);
}

static int writePage(const char *path, const Plan *plan) {
  FILE *file = fopen(path, "w");
  if (file == NULL) {
    fprintf(stderr, "%s: %s: %s\n", program, path, strerror(errno));
    return EXIT_TROUBLE;
  }
  fputs(pageHead, file);
  writeData(file, plan);
  fputs(pageParts, file);
  fputs(pageTail, file);
  bool failed = ferror(file) != 0;
  if (fclose(file) == 0 && !failed) return EXIT_AS_HOPED;
  fprintf(stderr, "%s: %s: cannot write on\n", program, path);
  return EXIT_TROUBLE;
}

// --- The run ---

static int report(const Options *options, const Plan *plan) {
  if (plan->found && !options->quiet) {
    printChart(plan);
    printOrders(plan);
  }
  printSummary(plan);
  if (plan->found && options->html != NULL && writePage(options->html, plan) != EXIT_AS_HOPED) return EXIT_TROUBLE;
  return plan->proved ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

static int readInto(const char *path) {
  Input input = openInput(program, path);
  int status = readFactory(&input, &factory) ? EXIT_AS_HOPED : reportInput(program, &input);
  closeInput(&input);
  return status;
}

static int noModel(void) {
  fprintf(stderr, "%s: there is no plan: what is fixed leaves no room\n", program);
  return EXIT_TROUBLE;
}

static int planAgain(const Options *options, const Plan *old) {
  static Plan plan;
  int nbOld = factory.nbTasks;
  if (readInto(options->change) != EXIT_AS_HOPED) return EXIT_TROUBLE;
  if (!makePlan(options, old, nbOld, &plan)) return noModel();
  int status = report(options, &plan);
  if (plan.found) printMoves(old, nbOld, &plan);
  return status;
}

static int run(const Options *options) {
  static Plan plan;
  if (readInto(options->file) != EXIT_AS_HOPED) return EXIT_TROUBLE;
  if (!makePlan(options, NULL, 0, &plan)) return noModel();
  if (options->change == NULL || !plan.found) return report(options, &plan);
  printSummary(&plan);
  return planAgain(options, &plan);
}

int main(int argc, char **argv) {
  (void)argc;
  Options options = {.fails = 20000};
  const Option known[] = {
      {.name = "--lateness", .flag = &options.lateness},
      {.name = "--fails", .number = &options.fails, .min = 1, .max = INT_MAX},
      {.name = "--html", .text = &options.html},
      {.name = "--quiet", .flag = &options.quiet},
      {.name = "--change", .text = &options.change},
      {.name = "--fixed-until", .number = &options.fixedUntil, .min = 0, .max = LATEST},
      {.text = &options.file},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  return finish(program, run(&options));
}
