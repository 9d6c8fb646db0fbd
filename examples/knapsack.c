// SPDX-License-Identifier: MIT
// The knapsack problem: choose items of greatest total profit whose weights stay within a capacity, or within several:
// an item may take up weight, room and money.
//
// One 0/1 variable per item, one scalar product per row of weights, and one for the profit. Branch and bound: as long
// as there is a solution, ask for one of greater profit. The search that finds none proves the last one optimal.
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
    "  --stats   print the solver's statistics of the last search, too\n"
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
  CSint *profit;
} Model;

typedef struct {
  bool taken[MAX_ITEMS];
  int profit;
  long long nbSolutions, nbFails, nbChoicePoints;
} Result;

// --- Model ---

// Item number of an instance and how much it is worth trying.
typedef struct {
  int item;
  double worth;
} Rank;

static bool createItems(Model *model, int nbItems) {
  for (int i = 0; i < nbItems; i++) {
    model->taken[i] = cs_createCSint(0, 1);
    model->leftOut[i] = cs_Sub(CSINT(1), model->taken[i]);
    if (model->leftOut[i] == NULL) return false;
  }
  return true;
}

static bool postCapacities(Model *model, Instance *instance) {
  for (int row = 0; row < instance->nbRows; row++) {
    CSint *load = cs_ScalProd(model->taken, instance->weights[row], instance->nbItems);
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
static void arrangeItems(Model *model, const Instance *instance) {
  Rank ranks[MAX_ITEMS];
  for (int i = 0; i < instance->nbItems; i++) ranks[i] = (Rank){i, worthOf(instance, i)};
  qsort(ranks, (size_t)instance->nbItems, sizeof ranks[0], compareRanks);
  for (int i = 0; i < instance->nbItems; i++) model->branching[i] = model->leftOut[ranks[i].item];
}

static bool postModel(Model *model, Instance *instance) {
  if (!createItems(model, instance->nbItems) || !postCapacities(model, instance)) return false;
  arrangeItems(model, instance);
  model->profit = cs_ScalProd(model->taken, instance->profits, instance->nbItems);
  return model->profit != NULL;
}

// --- Search ---

static void keepSolution(Model *model, int nbItems, Result *result) {
  for (int i = 0; i < nbItems; i++) result->taken[i] = cs_getValue(model->taken[i]) == 1;
  result->profit = cs_getValue(model->profit);
  result->nbSolutions++;
}

// Look for a solution of greater profit than the last one. Values are tried in increasing order, and 0 for leftOut
// means that the item is taken.
static bool improve(Model *model, int nbItems, Result *result) {
  int label = cs_saveContext();
  bool isBetter = false;
  if (result->nbSolutions == 0 || cs_GT(model->profit, result->profit)) {
    isBetter = cs_search(model->branching, nbItems, cs_findFreeVar);
    result->nbFails += cs_getNbFails();
    result->nbChoicePoints += cs_getNbChoicePoints();
  }
  if (isBetter) keepSolution(model, nbItems, result);
  // A search that succeeded has left contexts open: the label takes them all back.
  cs_restoreContextUntil(label);
  return isBetter;
}

// --- Output ---

static void printItems(const Instance *instance, const Result *result) {
  fputs("Items ", stdout);
  for (int i = 0; i < instance->nbItems; i++) {
    if (result->taken[i]) printf(" %d", i + 1);
  }
  putchar('\n');
}

static void printLoads(const Instance *instance, const Result *result) {
  for (int row = 0; row < instance->nbRows; row++) {
    long long load = 0;
    for (int i = 0; i < instance->nbItems; i++) {
      if (result->taken[i]) load += instance->weights[row][i];
    }
    printf("Row %d  %lld of %d\n", row + 1, load, instance->capacities[row]);
  }
}

static void printSummary(const Instance *instance, const Result *result, double seconds) {
  printf("%d item%s, %d row%s: ", instance->nbItems, instance->nbItems == 1 ? "" : "s", instance->nbRows,
         instance->nbRows == 1 ? "" : "s");
  printf("greatest profit %d, proved after %lld solution%s", result->profit, result->nbSolutions,
         result->nbSolutions == 1 ? "" : "s");
  printf(" | %lld fails, %lld choice points | %.3f s\n", result->nbFails, result->nbChoicePoints, seconds);
}

// --- The run ---

static void solve(Model *model, const Instance *instance, const Options *options, Result *result) {
  while (improve(model, instance->nbItems, result)) {
    if (options->steps) printf("Profit %d\n", result->profit);
  }
}

static void printResult(const Instance *instance, const Options *options, const Result *result, double seconds) {
  if (!options->quiet) {
    printItems(instance, result);
    printLoads(instance, result);
  }
  printSummary(instance, result, seconds);
  if (options->stats) cs_printStats();
}

static int run(Instance *instance, const Options *options) {
  static Model model;
  static Result result;
  double start = secondsNow();
  startSolver(program);
  if (postModel(&model, instance)) solve(&model, instance, options, &result);
  bool solved = result.nbSolutions > 0;
  if (solved) printResult(instance, options, &result, secondsNow() - start);
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
