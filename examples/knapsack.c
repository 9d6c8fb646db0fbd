// SPDX-License-Identifier: MIT
// The knapsack problem: choose items of greatest total profit whose weights stay within a capacity, or within several:
// an item may take up weight, room and money.
//
// One 0/1 variable per item, one scalar product per row of weights, and one for the negated profit, which is minimised:
// cs_minimize asks for one better solution after the other, and when there is none the last one is proved optimal.
#include "arguments.h"
#include "knapsack_input.h"

static char program[] = "knapsack";

static const char usage[] =
    "usage: knapsack [--steps] [--quiet] [--stats] [FILE]\n"
    "\n"
    "Finds the items of greatest profit that the capacities of FILE (standard input without one, or for -) allow,\n"
    "and proves that no others are better. The file holds numbers from 0 to 2147483647, in lines as you like:\n"
    "\n"
    "  the number of items (1 to 1000) and the number of rows of weights (1 to 50),\n"
    "  the capacity of each row, the profit of each item, and, row by row, the weight of each item.\n"
    "\n"
    "Anything from a # to the end of its line is skipped.\n"
    "\n"
    "  --steps   print the profit of each solution on the way to the best\n"
    "  --quiet   print only the summary\n"
    "  --stats   print the solver's statistics, too\n"
    "  --help    print this text\n"
    "\n"
    "Exit status: 0 when the best solution was found, 2 on bad input or bad arguments.\n";

typedef struct {
  bool steps, quiet, stats;
  const char *file;
} Options;

// What the search labels and bounds. The arrays, and the instance's coefficients, stay with the constraints until
// cs_end.
typedef struct {
  CSint *taken[MAX_ITEMS];      // 1 when the item is taken, 0 when not
  CSint *leftOut[MAX_ITEMS];    // the opposite
  CSint *branching[MAX_ITEMS];  // leftOut, the most worthwhile item first
  int negatedProfits[MAX_ITEMS];
  CSint *cost;
} Model;

typedef struct {
  bool taken[MAX_ITEMS];
  int profit;
  long long nbSolutions;
  bool printsSteps;
} Result;

// Global because a CSfoundCostCallback is given nothing but the variables that are labelled.
static Model model;
static Result result;

// --- Model ---

// Item number of an instance and how much it is worth trying.
typedef struct {
  int item;
  double worth;
} Rank;

static bool createItems(int nbItems) {
  for (int i = 0; i < nbItems; i++) {
    model.taken[i] = cs_createCSint(0, 1);
    model.leftOut[i] = cs_Sub(CSINT(1), model.taken[i]);
    if (model.leftOut[i] == NULL) return false;
  }
  return true;
}

static bool postCapacities(Instance *instance) {
  for (int row = 0; row < instance->nbRows; row++) {
    CSint *load = cs_ScalProd(model.taken, instance->weights[row], instance->nbItems);
    if (!cs_LE(load, instance->capacities[row])) return false;
  }
  return true;
}

// Profit for the share of the capacities that the item takes up. The small numbers keep 0 from dividing.
static double worthOf(const Instance *instance, int item) {
  double share = 1e-9;
  for (int row = 0; row < instance->nbRows; row++)
    share += instance->weights[row][item] / (instance->capacities[row] + 1e-9);
  return instance->profits[item] / share;
}

static int compareRanks(const void *left, const void *right) {
  const Rank *a = left, *b = right;
  if (a->worth != b->worth) return a->worth > b->worth ? -1 : 1;
  return a->item - b->item;
}

// Put the most worthwhile items first: good solutions found early leave less to search.
static void arrangeItems(const Instance *instance) {
  Rank ranks[MAX_ITEMS];
  for (int i = 0; i < instance->nbItems; i++) ranks[i] = (Rank){i, worthOf(instance, i)};
  qsort(ranks, (size_t)instance->nbItems, sizeof ranks[0], compareRanks);
  for (int i = 0; i < instance->nbItems; i++) model.branching[i] = model.leftOut[ranks[i].item];
}

static bool postModel(Instance *instance) {
  int n = instance->nbItems;
  if (!createItems(n) || !postCapacities(instance)) return false;
  arrangeItems(instance);
  for (int i = 0; i < n; i++) model.negatedProfits[i] = -instance->profits[i];
  model.cost = cs_ScalProd(model.taken, model.negatedProfits, n);
  return model.cost != NULL;
}

// --- Search ---

// Each solution is better than the one before. Values are tried in increasing order, and 0 for leftOut means that the
// item is taken.
static void keepSolution(CSint **leftOut, int nbItems, CSint *cost) {
  (void)leftOut;
  for (int i = 0; i < nbItems; i++) result.taken[i] = cs_getValue(model.taken[i]) == 1;
  result.profit = -cs_getValue(cost);
  result.nbSolutions++;
  if (result.printsSteps) printf("Profit %d\n", result.profit);
}

// --- Output ---

static void printItems(const Instance *instance) {
  fputs("Items ", stdout);
  for (int i = 0; i < instance->nbItems; i++) {
    if (result.taken[i]) printf(" %d", i + 1);
  }
  putchar('\n');
}

static void printLoads(const Instance *instance) {
  for (int row = 0; row < instance->nbRows; row++) {
    long long load = 0;
    for (int i = 0; i < instance->nbItems; i++) {
      if (result.taken[i]) load += instance->weights[row][i];
    }
    printf("Row %d  %lld of %d\n", row + 1, load, instance->capacities[row]);
  }
}

static void printSummary(const Instance *instance, double seconds) {
  printf("%d item%s, %d row%s: ", instance->nbItems, instance->nbItems == 1 ? "" : "s", instance->nbRows,
         instance->nbRows == 1 ? "" : "s");
  printf("greatest profit %d, proved after %lld solution%s", result.profit, result.nbSolutions,
         result.nbSolutions == 1 ? "" : "s");
  printf(" | %d fails, %d choice points | %.3f s\n", cs_getNbFails(), cs_getNbChoicePoints(), seconds);
}

static void printResult(const Instance *instance, const Options *options, double seconds) {
  if (!options->quiet) {
    printItems(instance);
    printLoads(instance);
  }
  printSummary(instance, seconds);
  if (options->stats) cs_printStats();
}

// --- The run ---

static int run(Instance *instance, const Options *options) {
  double start = secondsNow();
  result.printsSteps = options->steps;
  startSolver(program);
  bool solved =
      postModel(instance) && cs_minimize(model.branching, instance->nbItems, cs_findFreeVar, model.cost, keepSolution);
  if (solved) printResult(instance, options, secondsNow() - start);
  cs_end();
  if (solved) return EXIT_AS_HOPED;
  // The empty knapsack is always a solution, so this is not a matter of the instance.
  fprintf(stderr, "%s: cannot create the model\n", program);
  return EXIT_TROUBLE;
}

static int readAndRun(Input *input, const Options *options) {
  static Instance instance;
  return readInstance(input, &instance) ? run(&instance, options) : reportInput(program, input);
}

// --- Arguments ---

int main(int argc, char **argv) {
  (void)argc;
  Options options = {0};
  const Option known[] = {
      {.name = "--steps", .flag = &options.steps},
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
