// SPDX-License-Identifier: MIT
// A bicycle put together by its buyer: after each choice the parts that still fit are shown, and a choice can be
// undone.
//
// Each kind of part is a variable whose values are the parts on offer. A table of pairs says which parts fit together,
// a part's price is an element of a list, and the sum of prices stays below the buyer's limit. A choice is a
// relation in a context of its own, so to undo it is to restore the context. Propagation alone shows what is left: each
// part shown fits with each single rule. "check" looks for a whole bicycle with each of them, and so shows the truth;
// "cheapest" completes the bicycle at the least price.
#include "arguments.h"

#include <koru_extras.h>

static char program[] = "configurator";

static const char usage[] =
    "usage: configurator < COMMANDS\n"
    "\n"
    "Put a bicycle together. Commands, one a line:\n"
    "\n"
    "  show             what can still be chosen\n"
    "  PART CHOICE      choose, as in: frame touring\n"
    "  limit PRICE      spend no more than that\n"
    "  check            leave out what no whole bicycle can have\n"
    "  cheapest         the cheapest bicycle with all choices made\n"
    "  undo             take the last choice or limit back\n"
    "  quit\n"
    "\n"
    "Exit status: 0, or 2 when there were commands that could not be understood.\n";

enum { FRAME, WHEELS, TYRES, GEARS, BRAKES, RACK, PARTS, MOST = 4 };

static const char *const partNames[PARTS] = {"frame", "wheels", "tyres", "gears", "brakes", "rack"};
static const char *const names[PARTS][MOST] = {
    {"city", "touring", "race", "mountain"},    {"26", "28", "28-light"}, {"slick", "road", "knobby", "studded"},
    {"hub-3", "hub-8", "chain-20", "chain-27"}, {"rim", "drum", "disc"},  {"none", "light", "heavy"}};
static int prices[PARTS][MOST] = {{250, 400, 900, 700}, {80, 90, 260}, {20, 30, 40, 70},
                                  {60, 180, 220, 340},  {30, 60, 110}, {0, 30, 60}};
static const int counts[PARTS] = {4, 3, 4, 4, 3, 3};

// Which choices fit together: for a pair of parts the letters of a row say with which the choice of the first goes.
typedef struct {
  int first, second;
  const char *fits[MOST];
} Rule;

static const Rule rules[] = {
    {FRAME, WHEELS, {".x.", ".x.", ".xx", "x.."}}, {FRAME, GEARS, {"xx..", ".xxx", "..xx", "..xx"}},
    {FRAME, RACK, {"xxx", "xxx", "x..", "xx."}},   {WHEELS, TYRES, {"..xx", "xxxx", "x..."}},
    {GEARS, BRAKES, {"xx.", "xxx", "x.x", "x.x"}}, {TYRES, BRAKES, {"xxx", "xxx", ".xx", ".xx"}},
    {RACK, WHEELS, {"xxx", "xx.", "xx."}},
};

static CSint *parts[PARTS];
static CSint *total;

// --- Model ---

static bool postRule(const Rule *rule) {
  int rows[2 * MOST * MOST], count = 0;
  for (int i = 0; i < counts[rule->first]; i++) {
    for (int j = 0; j < counts[rule->second]; j++) {
      if (rule->fits[i][j] != 'x') continue;
      rows[2 * count] = i;
      rows[2 * count++ + 1] = j;
    }
  }
  CSint *pair[] = {parts[rule->first], parts[rule->second]};
  return cs_Table(pair, 2, rows, count);
}

static bool postModel(void) {
  static CSint *priceOf[PARTS];
  bool posted = true;
  for (int part = 0; part < PARTS; part++) {
    parts[part] = cs_createNamedCSint(0, counts[part] - 1, partNames[part]);
    priceOf[part] = cs_Element(parts[part], prices[part], counts[part]);
    posted = posted && priceOf[part] != NULL;
  }
  for (size_t i = 0; i < sizeof rules / sizeof rules[0]; i++) posted = posted && postRule(&rules[i]);
  total = posted ? cs_Sigma(priceOf, PARTS) : NULL;
  return total != NULL;
}

// --- Output ---

static void show(void) {
  for (int part = 0; part < PARTS; part++) {
    printf("  %-7s", partNames[part]);
    for (int i = 0; i < counts[part]; i++)
      if (cs_isIn(parts[part], i)) printf(" %s", names[part][i]);
    putchar('\n');
  }
  printf("  price   %d to %d\n", cs_getMin(total), cs_getMax(total));
}

// --- Searches, which leave everything as it was ---

// The least price of a whole bicycle, or -1; what it is made of goes to `best`.
static int findCheapest(int *best) {
  CSsearchOptions how = {.size = sizeof how, .order = CS_ORDER_SMALLEST, .minimize = total};
  CSsearch *search = cs_createSearch(parts, PARTS);
  int price = -1;
  if (cs_setSearchOptions(search, &how)) {
    while (cs_nextSolution(search) == CS_STATUS_SOLUTION) price = cs_getMin(total);
    if (price >= 0) memcpy(best, cs_getBestSolution(search), PARTS * sizeof *best);
  }
  cs_freeSearch(search);
  return price;
}

static bool isPossible(int part, int choice) {
  cs_saveContext();
  CSsearch *search = cs_EQ(parts[part], choice) ? cs_createSearch(parts, PARTS) : NULL;
  bool possible = search != NULL && cs_nextSolution(search) == CS_STATUS_SOLUTION;
  cs_freeSearch(search);
  cs_restoreContext();
  return possible;
}

// --- Commands ---

static int nbChoices;  // each has a context of its own

// What no whole bicycle has is left out until the last choice is undone.
static void check(void) {
  int gone = 0;
  for (int part = 0; part < PARTS; part++) {
    for (int i = 0; i < counts[part]; i++) {
      if (cs_isIn(parts[part], i) && !isPossible(part, i) && cs_NEQ(parts[part], i)) gone++;
    }
  }
  printf("%d choice%s left out\n", gone, gone == 1 ? "" : "s");
  show();
}

static void cheapest(void) {
  int best[PARTS];
  int price = findCheapest(best);
  if (price < 0) {
    puts("there is no such bicycle");
    return;
  }
  printf("%d:", price);
  for (int part = 0; part < PARTS; part++) printf(" %s", names[part][best[part]]);
  putchar('\n');
}

static void choose(CSint *v, int method, int value) {
  const CSvalueSelection choice = {method, value};
  cs_saveContext();
  if (cs_selectValue(v, &choice)) {
    nbChoices++;
    show();
  } else {
    cs_restoreContext();
    puts("that does not fit what was chosen");
  }
}

static void undo(void) {
  if (nbChoices == 0) {
    puts("nothing has been chosen");
    return;
  }
  nbChoices--;
  cs_restoreContext();
  show();
}

static bool choosePart(const char *word, const char *argument) {
  for (int part = 0; part < PARTS; part++) {
    for (int i = 0; i < counts[part]; i++) {
      if (strcmp(word, partNames[part]) != 0 || strcmp(argument, names[part][i]) != 0) continue;
      choose(parts[part], CS_METHOD_EQ, i);
      return true;
    }
  }
  return false;
}

// False for a command that is none.
static bool follow(const char *word, const char *argument) {
  if (strcmp(word, "show") == 0)
    show();
  else if (strcmp(word, "undo") == 0)
    undo();
  else if (strcmp(word, "check") == 0)
    check();
  else if (strcmp(word, "cheapest") == 0)
    cheapest();
  else if (strcmp(word, "limit") == 0 && argument[0] != '\0')
    choose(total, CS_METHOD_LE, atoi(argument));
  else
    return choosePart(word, argument);
  return true;
}

// --- The run ---

static int followAll(void) {
  char line[200], word[40], argument[40];
  int status = EXIT_AS_HOPED;
  while (fgets(line, sizeof line, stdin) != NULL) {
    word[0] = argument[0] = '\0';
    if (sscanf(line, "%39s %39s", word, argument) < 1) continue;
    if (strcmp(word, "quit") == 0) break;
    if (follow(word, argument)) continue;
    fprintf(stderr, "%s: %s %s: not understood\n", program, word, argument);
    status = EXIT_TROUBLE;
  }
  return status;
}

int main(int argc, char **argv) {
  (void)argc;
  readArguments(program, usage, NULL, 0, argv);
  startSolver(program);
  int status = EXIT_OTHERWISE;
  if (postModel()) {
    show();
    status = followAll();
  }
  cs_end();
  return finish(program, status);
}
