// SPDX-License-Identifier: MIT
// SEND + MORE = MONEY: each letter stands for a digit of its own, and no number begins with 0.
//
// The words are built by Horner's rule from additions alone: ((S * 10 + E) * 10 + N) * 10 + D. All solutions are asked
// for, which proves that the one found is the only one.
#include "arguments.h"

static char program[] = "send_more_money";

static const char usage[] =
    "usage: send_more_money\n"
    "\n"
    "Solves SEND + MORE = MONEY and proves that the solution is unique.\n"
    "Exit status: 0 when it is, 1 when there are several solutions or none, 2 on bad arguments.\n";

static const char letterNames[] = "SENDMORY";

enum { NB_LETTERS = sizeof letterNames - 1 };

// Global because a CSfoundCallback is given nothing but the variables.
static int nbSolutions;

static int indexOf(char letter) { return (int)(strchr(letterNames, letter) - letterNames); }

// x * 10 as 2x + 8x. A null x, from a step that failed, goes through as null.
static CSint *times10(CSint *x) {
  CSint *x2 = cs_Add(x, x);
  CSint *x4 = cs_Add(x2, x2);
  CSint *x8 = cs_Add(x4, x4);
  return cs_Add(x8, x2);
}

// The number that the word spells.
static CSint *spell(CSint **letters, const char *word) {
  CSint *number = letters[indexOf(word[0])];
  for (int i = 1; word[i] != '\0'; i++) number = cs_Add(times10(number), letters[indexOf(word[i])]);
  return number;
}

static bool createLetters(CSint **letters) {
  for (int i = 0; i < NB_LETTERS; i++) {
    char name[] = {letterNames[i], '\0'};
    letters[i] = cs_createNamedCSint(0, 9, name);
    if (letters[i] == NULL) return false;
  }
  return true;
}

// One after the other, so that every compiler posts in the same order. A null variable makes cs_Eq false, so the
// numbers need no test of their own.
static bool postSum(CSint **letters) {
  CSint *send = spell(letters, "SEND");
  CSint *more = spell(letters, "MORE");
  CSint *money = spell(letters, "MONEY");
  return cs_Eq(cs_Add(send, more), money);
}

static bool postModel(CSint **letters) {
  return createLetters(letters) && cs_NEQ(letters[indexOf('S')], 0) && cs_NEQ(letters[indexOf('M')], 0) &&
         cs_AllNeq(letters, NB_LETTERS) && postSum(letters);
}

static void printWord(CSint **letters, const char *prefix, const char *word) {
  fputs(prefix, stdout);
  for (int i = 0; word[i] != '\0'; i++) printf(" %c", word[i]);
  printf("     %s", prefix);
  for (int i = 0; word[i] != '\0'; i++) printf(" %d", cs_getValue(letters[indexOf(word[i])]));
  putchar('\n');
}

static void solutionFound(CSint **letters, int nbLetters) {
  nbSolutions++;
  printWord(letters, "     ", "SEND");
  printWord(letters, "    +", "MORE");
  puts("    ---------         ---------");
  printWord(letters, "   ", "MONEY");
  cs_printf("\n   %A\n\n", letters, nbLetters);
}

int main(int argc, char **argv) {
  (void)argc;
  readArguments(program, usage, NULL, 0, argv);
  CSint *letters[NB_LETTERS];
  startSolver(program);
  if (postModel(letters)) cs_findAll(letters, NB_LETTERS, cs_findFreeVarNbElements, solutionFound);
  printf("%s | %d fails, %d choice points\n",
         nbSolutions == 1   ? "unique solution"
         : nbSolutions == 0 ? "no solution"
                            : "several solutions",
         cs_getNbFails(), cs_getNbChoicePoints());
  cs_end();
  return finish(program, nbSolutions == 1 ? EXIT_AS_HOPED : EXIT_OTHERWISE);
}
