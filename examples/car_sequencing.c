// SPDX-License-Identifier: MIT
// Car sequencing: put cars on an assembly line so that no station is overrun. Of any `block` cars in a row, at most
// `capacity` may have an option; the cars of a class have the same options.
//
// One variable per slot for the class of its car, and for each option one that says whether the car has it, read from a
// table by cs_Element. An occurrence constraint per class; an automaton per option, whose state is what the last cars
// had; and sums over the first slots, since what the last ones cannot take must be done before them.
//
// The search goes along the line. It drives contexts by hand, so that it can try the most critical classes first and
// begin anew, a little differently, when it has failed too often.
#include "arguments.h"
#include "car_sequencing_input.h"

static char program[] = "car_sequencing";

static const char usage[] =
    "usage: car_sequencing [--fails N] [--tries N] [--quiet] [FILE]\n"
    "\n"
    "Sequences the cars of each instance of FILE (standard input without one, or for -), in the form of the CSPLib\n"
    "collection (prob001), with up to 1000 cars of 100 classes and 20 options.\n"
    "\n"
    "  --fails N   begin anew after N fails (default 1000)\n"
    "  --tries N   give up after N beginnings (default 100)\n"
    "  --quiet     print only a line per instance\n"
    "  --help      print this text\n"
    "\n"
    "Exit status: 0 when all instances were sequenced, 1 when some were not, 2 on bad input or bad arguments.\n";

enum { MAX_STATES = 1 << (MAX_BLOCK - 1) };

typedef struct {
  bool quiet;
  int fails, tries;
  const char *file;
} Options;

// Arrays stay with the constraints until cs_end.
typedef struct {
  const Instance *instance;
  CSint *classes[MAX_CARS];
  CSint *options[MAX_OPTIONS][MAX_CARS];
  int demands[MAX_OPTIONS];
} Model;

typedef struct {
  int fails, limit;
  unsigned random;
} Search;

typedef enum { SEQUENCED, IMPOSSIBLE, GIVEN_UP } Outcome;

static Model model;

// --- Model ---

static int max(int a, int b) { return a > b ? a : b; }
static int min(int a, int b) { return a < b ? a : b; }

static bool createSlots(void) {
  const Instance *instance = model.instance;
  for (int slot = 0; slot < instance->nbCars; slot++) {
    model.classes[slot] = cs_createCSint(0, instance->nbClasses - 1);
    for (int option = 0; option < instance->nbOptions; option++) {
      model.options[option][slot] = cs_Element(model.classes[slot], instance->has[option], instance->nbClasses);
      if (model.options[option][slot] == NULL) return false;
    }
  }
  return true;
}

static bool postClasses(void) {
  const Instance *instance = model.instance;
  for (int class = 0; class < instance->nbClasses; class ++) {
    CSint *demand = CSINT(instance->demands[class]);
    if (!cs_OccurConstraints(demand, class, model.classes, instance->nbCars)) return false;
  }
  return true;
}

static int countBits(int set) {
  int count = 0;
  for (; set != 0; set &= set - 1) count++;
  return count;
}

// A state is the set of those among the last cars that have the option, the newest one being bit 0.
static bool postStation(int option) {
  static int table[MAX_STATES][2], finals[MAX_STATES];
  int capacity = model.instance->capacities[option];
  int nbStates = 1 << (model.instance->blocks[option] - 1);
  for (int state = 0; state < nbStates; state++) {
    finals[state] = state;
    for (int has = 0; has < 2; has++)
      table[state][has] = countBits(state) + has <= capacity ? (2 * state + has) % nbStates : -1;
  }
  return cs_Regular(model.options[option], model.instance->nbCars, table[0], nbStates, 2, 0, finals, nbStates) == 1;
}

// What a number of slots in a row can take at most.
static int capacityOf(int option, int nbSlots) {
  int block = model.instance->blocks[option], capacity = model.instance->capacities[option];
  return nbSlots / block * capacity + min(nbSlots % block, capacity);
}

// The cars with the option among the first slots, added up block by block: no more than these slots take, and no fewer
// than the slots after them leave.
static bool postPace(int option) {
  int nbCars = model.instance->nbCars, block = model.instance->blocks[option];
  int demand = model.demands[option];
  CSint *total = CSINT(0);
  for (int from = 0, to = max(nbCars % block, 1); from < nbCars; from = to, to = min(to + block, nbCars)) {
    total = cs_Add(total, cs_Sigma(&model.options[option][from], to - from));
    if (total == NULL || !cs_LE(total, min(demand, capacityOf(option, to))) ||
        !cs_GE(total, demand - capacityOf(option, nbCars - to)))
      return false;
  }
  return cs_EQ(total, demand);
}

static int demandFor(const Instance *instance, int option) {
  int demand = 0;
  for (int class = 0; class < instance->nbClasses; class ++)
    demand += instance->has[option][class] * instance->demands[class];
  return demand;
}

static bool postModel(void) {
  if (!createSlots() || !postClasses()) return false;
  for (int option = 0; option < model.instance->nbOptions; option++) {
    model.demands[option] = demandFor(model.instance, option);
    if (!postStation(option) || !postPace(option)) return false;
  }
  return true;
}

// --- Search ---

// Uniform in [0, 1), the same on every machine.
static double nextRandom(Search *search) {
  search->random = search->random * 1664525U + 1013904223U;
  return (search->random >> 8) / 16777216.0;
}

// How much of the remaining capacity of each station the cars still to come need.
static void computeLoads(int slot, double loads[MAX_OPTIONS]) {
  const Instance *instance = model.instance;
  for (int option = 0; option < instance->nbOptions; option++) {
    int demand = model.demands[option];
    for (int before = 0; before < slot; before++) demand -= cs_getValue(model.options[option][before]);
    loads[option] = (double)demand / max(capacityOf(option, instance->nbCars - slot), 1);
  }
}

typedef struct {
  int class;
  double worth;
} Candidate;

static int compareCandidates(const void *left, const void *right) {
  const Candidate *a = left, *b = right;
  if (a->worth != b->worth) return a->worth > b->worth ? -1 : 1;
  return a->class - b->class;
}

// The classes that a slot can take, those with the most loaded options first.
static int rankClasses(Search *search, int slot, Candidate candidates[MAX_CLASSES]) {
  double loads[MAX_OPTIONS];
  int count = 0;
  computeLoads(slot, loads);
  for (int class = 0; class < model.instance->nbClasses; class ++) {
    if (!cs_isIn(model.classes[slot], class)) continue;
    double worth = 0.1 * nextRandom(search);
    for (int option = 0; option < model.instance->nbOptions; option++)
      worth += model.instance->has[option][class] * loads[option] * loads[option];
    candidates[count++] = (Candidate){class, worth};
  }
  qsort(candidates, (size_t)count, sizeof candidates[0], compareCandidates);
  return count;
}

// Fill the slots from this one on. True when a sequence is in place, with its contexts open.
static bool fillFrom(Search *search, int slot) {
  while (slot < model.instance->nbCars && cs_isInstantiated(model.classes[slot])) slot++;
  if (slot == model.instance->nbCars) return true;
  Candidate candidates[MAX_CLASSES];
  int count = rankClasses(search, slot, candidates);
  for (int i = 0; i < count && search->fails < search->limit; i++) {
    int label = cs_saveContext();
    if (cs_EQ(model.classes[slot], candidates[i].class) && fillFrom(search, slot + 1)) return true;
    cs_restoreContextUntil(label);
    search->fails++;
  }
  return false;
}

// A search that ends within its limit has seen everything.
static Outcome sequence(const Options *options, int *nbTries) {
  Search search = {0, options->fails, 1};
  for (*nbTries = 1;; ++*nbTries) {
    search.fails = 0;
    if (fillFrom(&search, 0)) return SEQUENCED;
    if (search.fails < search.limit) return IMPOSSIBLE;
    if (*nbTries == options->tries) return GIVEN_UP;
  }
}

// --- Output ---

static void printSequence(void) {
  enum { PER_LINE = 20 };
  for (int slot = 0; slot < model.instance->nbCars; slot++) {
    bool isLast = slot % PER_LINE == PER_LINE - 1 || slot + 1 == model.instance->nbCars;
    printf("%4d%s", cs_getValue(model.classes[slot]), isLast ? "\n" : "");
  }
}

static const char *plural(int count) { return count == 1 ? "" : "s"; }

static void printSummary(const Instance *instance, Outcome outcome, int nbTries, double seconds) {
  static const char *const outcomes[] = {"sequenced", "no sequence", "given up"};
  if (instance->name[0] != '\0') printf("%s: ", instance->name);
  printf("%d car%s, ", instance->nbCars, plural(instance->nbCars));
  printf("%d class%s, ", instance->nbClasses, instance->nbClasses == 1 ? "" : "es");
  printf("%d option%s: %s", instance->nbOptions, plural(instance->nbOptions), outcomes[outcome]);
  printf(" | %d %s | %.3f s\n", nbTries, nbTries == 1 ? "try" : "tries", seconds);
}

// --- The run ---

static Outcome run(const Instance *instance, const Options *options) {
  double start = secondsNow();
  int nbTries = 0;
  startSolver(program);
  model.instance = instance;
  Outcome outcome = postModel() ? sequence(options, &nbTries) : IMPOSSIBLE;
  if (outcome == SEQUENCED && !options->quiet) printSequence();
  printSummary(instance, outcome, nbTries, secondsNow() - start);
  cs_end();
  return outcome;
}

static int readAndRun(Input *input, const Options *options) {
  static Instance instance;
  bool allSequenced = true;
  input->line = 0;
  for (;;) {
    switch (readInstance(input, &instance)) {
      case NO_MORE:
        return allSequenced ? EXIT_AS_HOPED : EXIT_OTHERWISE;
      case MALFORMED:
        return reportInput(program, input);
      case READ:
        allSequenced = run(&instance, options) == SEQUENCED && allSequenced;
        fflush(stdout);
    }
  }
}

int main(int argc, char **argv) {
  (void)argc;
  Options options = {.fails = 1000, .tries = 100};
  const Option known[] = {
      {.name = "--fails", .number = &options.fails, .min = 1, .max = INT_MAX},
      {.name = "--tries", .number = &options.tries, .min = 1, .max = INT_MAX},
      {.name = "--quiet", .flag = &options.quiet},
      {.text = &options.file},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  Input input = openInput(program, options.file);
  int status = readAndRun(&input, &options);
  closeInput(&input);
  return finish(program, status);
}
