// SPDX-License-Identifier: MIT
// Profiling: which constraints of a model cost the most propagation.
//
// The two lines that a program needs are marked below; the rest is a magic square of 4 x 4 and a locator, which tells
// the sites of the model apart by the part of the model that is being posted.
#include "arguments.h"

#include <koru_extras.h>

static char program[] = "profile_demo";

static const char usage[] =
    "usage: profile_demo [--places] [--details] [REPORT]\n"
    "\n"
    "Finds all magic squares of 4 x 4 and writes a profile of the search to REPORT (standard output without one):\n"
    "how often the constraints of each site ran, and how often they failed. Show it with koru-profile.\n"
    "\n"
    "  --places   name the parts of the model as places, by a locator of the program's own\n"
    "  --details  count also the time, the runs in vain and the narrowings of each site\n"
    "  --help     print this text\n"
    "\n"
    "Exit status: 0 when all squares were found, 1 when not, 2 on bad arguments.\n";

enum { SIDE = 4, CELLS = SIDE * SIDE, SUM = SIDE * (CELLS + 1) / 2, SQUARES = 880 };

// The locator's text: the part of the model that is being posted.
static const char *part = "";

static const char *tellPart(void *unused) {
  (void)unused;
  return part;
}

static bool postLine(CSint **line) { return cs_EQ(cs_Sigma(line, SIDE), SUM); }

// The arrays stay with the sums until cs_end.
static bool postLines(CSint **cells) {
  static CSint *columns[SIDE][SIDE], *diagonals[2][SIDE];
  for (int i = 0; i < SIDE; i++) {
    for (int k = 0; k < SIDE; k++) columns[i][k] = cells[k * SIDE + i];
    diagonals[0][i] = cells[i * (SIDE + 1)];
    diagonals[1][i] = cells[(i + 1) * (SIDE - 1)];
    part = "rows";
    if (!postLine(cells + i * SIDE)) return false;
    part = "columns";
    if (!postLine(columns[i])) return false;
  }
  part = "diagonals";
  return postLine(diagonals[0]) && postLine(diagonals[1]);
}

// One of the eight squares that turning and reflecting makes of one.
static bool breakSymmetry(CSint **cells) {
  part = "symmetry";
  CSint *topRight = cells[SIDE - 1], *bottomLeft = cells[CELLS - SIDE];
  return cs_Lt(cells[0], topRight) && cs_Lt(topRight, bottomLeft) && cs_Lt(cells[0], cells[CELLS - 1]);
}

static int nbSquares;

static void countSquare(CSint **cells, int nbCells) {
  (void)cells, (void)nbCells;
  nbSquares++;
}

static bool findSquares(void) {
  static CSint *cells[CELLS];
  for (int i = 0; i < CELLS; i++) cells[i] = cs_createCSint(1, CELLS);
  part = "cells";
  return cs_AllNeq(cells, CELLS) && postLines(cells) && breakSymmetry(cells) &&
         cs_findAll(cells, CELLS, cs_findFreeVar, countSquare);
}

int main(int argc, char **argv) {
  (void)argc;
  bool places = false, details = false;
  const char *report = NULL;
  const Option known[] = {
      {.name = "--places", .flag = &places}, {.name = "--details", .flag = &details}, {.text = &report}};
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  startSolver(program);
  if (places) cs_setProfilerLocator("part_of_model", tellPart, NULL);

  CSprofiler *profiler = cs_createProfiler(0);  // the first line, and
  cs_setProfilerDetails(profiler, details);
  cs_enableProfiler(profiler);
  bool found = findSquares();
  cs_disableProfiler(profiler);

  if (report == NULL)
    (details ? cs_profilerWriteDetails : cs_profilerWrite)(profiler, stdout);
  else
    (details ? cs_profilerWriteDetailsFile : cs_profilerWriteFile)(profiler, report);  // the second
  if (report != NULL) printf("%d squares, profile in %s\n", nbSquares, report);
  cs_end();
  return finish(program, found && nbSquares == SQUARES ? EXIT_AS_HOPED : EXIT_OTHERWISE);
}
