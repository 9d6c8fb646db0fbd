// SPDX-License-Identifier: MIT
// Project scheduling: activities that follow one another take up renewable resources while they run. How soon can the
// project be done?
//
// A start per activity, cs_Le for the precedences, and one cs_CumulativeTasks per resource, which refuses nothing that
// is feasible. A first search sets times: the activity that can be earliest starts then, or else waits until another
// one has moved it; that soon gives good schedules. After some fails another one takes over, which labels the starts,
// those first whose constraints have failed often, at their values in the best schedule: it proves more. With --fast,
// cs_Cumulative takes the place of the resources: it may refuse a feasible schedule now and then, so that a shorter one
// may exist.
#include "arguments.h"
#include "chart.h"
#include "rcpsp_input.h"

#include <koru_extras.h>

static char program[] = "rcpsp";

static const char usage[] =
    "usage: rcpsp [--fast] [--seconds N] [--svg FILE] [--quiet] [--stats] [INSTANCE]\n"
    "\n"
    "Finds a schedule of least makespan for the project of the file INSTANCE (standard input without one, or for -), "
    "in\n"
    "PSPLIB's single-mode format (.sm), and draws it.\n"
    "\n"
    "  --fast       prune with cs_Cumulative, which may miss the best schedule now and then: no proof\n"
    "  --seconds N  stop after N seconds with the best schedule found by then\n"
    "  --svg FILE   draw the schedule into FILE as a picture\n"
    "  --quiet      print only the summary\n"
    "  --stats      print what the search has done, too\n"
    "  --help       print this text\n"
    "\n"
    "Exit status: 0 when the search found no shorter schedule to the end, 1 when it was stopped, 2 on bad input or "
    "bad\n"
    "arguments.\n";

typedef struct {
  bool fast, quiet, stats;
  int seconds;
  const char *svg, *file;
} Options;

// The activities that take up a resource. Arrays that cs_Cumulative keeps stay here until cs_end.
typedef struct {
  int nbUsers;
  CSint *starts[MAX_ACTIVITIES], *durations[MAX_ACTIVITIES], *requests[MAX_ACTIVITIES];
} Users;

typedef struct {
  CSint *starts[MAX_ACTIVITIES], *ends[MAX_ACTIVITIES];
  int nbActivities;
  Users users[MAX_RESOURCES];
  CSint *makespan;
} Model;

typedef struct {
  int starts[MAX_ACTIVITIES];
  int makespan;  // -1 before the first schedule
  double begun;
  bool ended;                              // everything has been looked at
  long long fails, choicePoints, wakings;  // of both searches
} Result;

static Model model;
static Result result;

// --- Model ---

static int totalDuration(const Instance *instance) {
  int total = 0;
  for (int i = 0; i < instance->nbActivities; i++) total += instance->durations[i];
  return total;
}

static bool postPrecedences(const Instance *instance) {
  for (int i = instance->nbActivities - 1; i >= 0; i--) {
    if (!cs_Le(model.ends[i], model.makespan)) return false;
    for (int j = i + 1; j < instance->nbActivities; j++) {
      if (!instance->precedes[i][j]) continue;
      if (!cs_Le(model.ends[i], model.starts[j])) return false;
    }
  }
  return true;
}

static bool uses(const Instance *instance, int activity, int resource) {
  return instance->durations[activity] > 0 && instance->requests[activity][resource] > 0;
}

static bool postResource(const Instance *instance, int resource, bool fast) {
  Users *users = &model.users[resource];
  for (int i = 0; i < instance->nbActivities; i++) {
    if (!uses(instance, i, resource)) continue;
    int k = users->nbUsers++;
    users->starts[k] = model.starts[i];
    users->durations[k] = CSINT(instance->durations[i]);
    users->requests[k] = CSINT(instance->requests[i][resource]);
  }
  CSint *capacity = CSINT(instance->capacities[resource]);
  if (fast) return cs_Cumulative(users->starts, users->durations, users->requests, users->nbUsers, capacity);
  return cs_CumulativeTasks(users->starts, users->durations, users->requests, NULL, users->nbUsers, capacity);
}

// What all activities take of a resource, time times request, must fit.
static bool boundByEnergy(const Instance *instance, int resource) {
  int capacity = instance->capacities[resource];
  long long energy = 0;
  for (int i = 0; i < instance->nbActivities; i++)
    energy += (long long)instance->durations[i] * instance->requests[i][resource];
  return capacity == 0 || cs_GE(model.makespan, (int)((energy + capacity - 1) / capacity));
}

static bool postModel(const Instance *instance, const Options *options) {
  int horizon = totalDuration(instance);
  model.makespan = cs_createCSint(0, horizon);
  model.nbActivities = instance->nbActivities;
  for (int i = 0; i < instance->nbActivities; i++) {
    model.starts[i] = cs_createCSint(0, horizon);
    model.ends[i] = cs_Add(model.starts[i], CSINT(instance->durations[i]));
  }
  if (!postPrecedences(instance)) return false;
  for (int r = 0; r < instance->nbResources; r++) {
    if (!boundByEnergy(instance, r) || !postResource(instance, r, options->fast)) return false;
  }
  return true;
}

// --- Search ---

enum { FIRST_FAILS = 1000 };

// Milliseconds until the time is up; 0 for ever.
static long long timeLeft(const Options *options) {
  if (options->seconds == 0) return 0;
  long long left = (long long)(1000 * (result.begun + options->seconds - secondsNow()));
  return left > 1 ? left : 1;
}

static CSsearch *searchByTimes(const Options *options) {
  const CSsearchOptions how = {
      .size = sizeof how, .minimize = model.makespan, .milliseconds = timeLeft(options), .fails = FIRST_FAILS};
  CSsearch *search = cs_createSearch(NULL, 0);
  bool told = cs_setSearchOptions(search, &how) &&
              cs_addSearchPhase(search, model.starts, model.nbActivities, CS_ORDER_SET_TIMES, CS_VALUE_MIN);
  return told ? search : NULL;
}

static CSsearch *searchByFailures(const Options *options) {
  const CSsearchOptions how = {.size = sizeof how,
                               .order = CS_ORDER_DOM_WDEG,
                               .lastConflict = true,
                               .guided = true,
                               .minimize = model.makespan,
                               .restarts = CS_RESTARTS_GEOMETRIC,
                               .neighbours = CS_NEIGHBOURS_LINKED,
                               .milliseconds = timeLeft(options)};
  CSsearch *search = cs_createSearch(model.starts, model.nbActivities);
  bool told = cs_setSearchOptions(search, &how);
  for (int i = 0; told && result.makespan >= 0 && i < model.nbActivities; i++)
    told = cs_setSearchHint(search, i, result.starts[i]);
  return told ? search : NULL;
}

static void keepSchedule(bool isQuiet) {
  for (int i = 0; i < model.nbActivities; i++) result.starts[i] = cs_getValue(model.starts[i]);
  result.makespan = cs_getValue(model.makespan);
  if (isQuiet) return;
  printf("Makespan %d after %.2f s\n", result.makespan, secondsNow() - result.begun);
  fflush(stdout);
}

// Each schedule is shorter than the one before.
static void follow(CSsearch *search, bool isQuiet) {
  while (cs_nextSolution(search) == CS_STATUS_SOLUTION) keepSchedule(isQuiet);
  CSstatus status = cs_getSearchStatus(search);
  result.ended = status == CS_STATUS_OPTIMAL || status == CS_STATUS_EXHAUSTED;
  CSsearchStats stats = {0};
  cs_getSearchStats(search, &stats, sizeof stats);
  result.fails += stats.fails;
  result.choicePoints += stats.choicePoints;
  result.wakings += stats.wakings;
  cs_freeSearch(search);
}

static void searchAll(const Options *options) {
  follow(searchByTimes(options), options->quiet);
  if (result.ended) return;
  if (result.makespan >= 0 && !cs_LT(model.makespan, result.makespan))
    result.ended = true;  // nothing shorter is left
  else
    follow(searchByFailures(options), options->quiet);
}

// --- Output ---

typedef struct {
  int activity, start;
} Place;

static int comparePlaces(const void *left, const void *right) {
  const Place *a = left, *b = right;
  return a->start != b->start ? (a->start > b->start) - (a->start < b->start) : a->activity - b->activity;
}

// The activities that take time, in the order of their starts.
static int arrange(const Instance *instance, Place *places) {
  int n = 0;
  for (int i = 0; i < instance->nbActivities; i++)
    if (instance->durations[i] > 0) places[n++] = (Place){i, result.starts[i]};
  qsort(places, (size_t)n, sizeof places[0], comparePlaces);
  return n;
}

static bool runsAt(const Instance *instance, int activity, int time) {
  return result.starts[activity] <= time && time < result.starts[activity] + instance->durations[activity];
}

static int loadAt(const Instance *instance, int resource, int time) {
  int load = 0;
  for (int i = 0; i < instance->nbActivities; i++)
    if (runsAt(instance, i, time)) load += instance->requests[i][resource];
  return load;
}

// How full a resource is at each time, in tenths: '0' to '9', and '#' when there is nothing left.
static void printLoad(const Instance *instance, int resource, bool coloured) {
  ChartRow row = {{0}, {0}};
  int capacity = instance->capacities[resource];
  for (int time = 0; time < result.makespan; time++) {
    int load = loadAt(instance, resource, time), column = chartColumn(time, result.makespan);
    if (load == 0) continue;
    char tenths = (char)('0' + 10 * load / capacity);
    row.symbols[column] = load == capacity ? '#' : tenths;
    row.colours[column] = load == capacity ? 3 : 2;
  }
  char label[16];
  snprintf(label, sizeof label, "R%d", resource + 1);
  printRow(label, &row, result.makespan, coloured);
}

static void printChart(const Instance *instance) {
  bool coloured = wantsColour(stdout);
  Place places[MAX_ACTIVITIES];
  int n = arrange(instance, places);
  putchar('\n');
  for (int k = 0; k < n; k++) {
    int activity = places[k].activity;
    ChartRow row = {{0}, {0}};
    addBar(&row, places[k].start, instance->durations[activity], result.makespan, '=', activity);
    char label[16];
    snprintf(label, sizeof label, "%d", activity + 1);
    printRow(label, &row, result.makespan, coloured);
  }
  printTimes(result.makespan);
  for (int r = 0; r < instance->nbResources; r++) printLoad(instance, r, coloured);
  puts("A row for each activity; below, how full the resources are: tenths, # when nothing is left.\n");
}

enum { ROW = 20, BAND = 100 };  // heights in the picture

// The next time after `time` at which an activity starts or ends.
static int nextChange(const Instance *instance, int time) {
  int next = result.makespan;
  for (int i = 0; i < instance->nbActivities; i++) {
    int start = result.starts[i], end = start + instance->durations[i];
    if (start > time && start < next) next = start;
    if (end > time && end < next) next = end;
  }
  return next;
}

// What runs on a resource, piled up, from one start or end to the next.
static void drawPile(const Instance *instance, const Picture *picture, int resource, const Place *places, int n) {
  int capacity = instance->capacities[resource];
  double bottom = picture->top + n * ROW + (resource + 1) * BAND;
  double unit = (BAND - 24.0) / (capacity > 0 ? capacity : 1);
  for (int time = 0, next = 0; time < result.makespan; time = next) {
    double y = bottom;
    next = nextChange(instance, time);
    for (int k = 0; k < n; k++) {
      int i = places[k].activity, request = instance->requests[i][resource];
      if (request == 0 || !runsAt(instance, i, time)) continue;
      y -= request * unit;
      drawBox(picture, time, next - time, y, request * unit, i);
    }
  }
  double limit = bottom - capacity * unit;
  drawLine(picture, picture->left, bottom, picture->left + picture->width, bottom, "stroke=\"#888\"");
  drawLine(picture, picture->left, limit, picture->left + picture->width, limit, "stroke=\"#c0392b\"");
  drawText(picture, picture->left - 10, bottom - 30, "row", "resource %d", resource + 1);
  drawText(picture, picture->left - 10, limit + 4, "limit", "%d", capacity);
}

static int drawChart(const Instance *instance, const char *path) {
  Place places[MAX_ACTIVITIES];
  int n = arrange(instance, places);
  char label[64];
  snprintf(label, sizeof label, "Project: %d activities, makespan %d", n, result.makespan);
  Picture picture = openPicture(program, path, result.makespan, n * ROW + instance->nbResources * BAND, label);
  drawText(&picture, picture.left, 52, "note",
           "activities in the order of their starts, and what they take of each resource");
  drawAxis(&picture);
  for (int k = 0; k < n; k++) {
    int activity = places[k].activity;
    double y = picture.top + k * ROW;
    snprintf(label, sizeof label, "%d", activity + 1);
    drawText(&picture, picture.left - 10, y + 14, "row", "%s", label);
    drawBar(&picture, places[k].start, instance->durations[activity], y + 2, ROW - 4, activity, label);
  }
  for (int r = 0; r < instance->nbResources; r++) drawPile(instance, &picture, r, places, n);
  return closePicture(program, path, &picture);
}

static const char *verdict(const Options *options) {
  if (!result.ended) return "not proved shortest";
  return options->fast ? "nothing shorter found" : "proved shortest";
}

static void printSummary(const Instance *instance, const Options *options) {
  printf("%d activities, %d resource%s: ", instance->nbActivities, instance->nbResources,
         instance->nbResources == 1 ? "" : "s");
  if (result.makespan < 0)
    printf("no schedule found");
  else
    printf("makespan %d, %s", result.makespan, verdict(options));
  printf(" | %lld fails, %lld choice points | %.2f s\n", result.fails, result.choicePoints,
         secondsNow() - result.begun);
}

static void printStats(void) { printf("%lld calls of propagators\n", result.wakings); }

// --- The run ---

static int report(const Instance *instance, const Options *options) {
  bool found = result.makespan >= 0;
  if (found && !options->quiet) printChart(instance);
  printSummary(instance, options);
  if (options->stats) printStats();
  if (found && options->svg != NULL && drawChart(instance, options->svg) != EXIT_AS_HOPED) return EXIT_TROUBLE;
  return found && result.ended ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

static int run(const Instance *instance, const Options *options) {
  result.makespan = -1;
  result.begun = secondsNow();
  startSolver(program);
  // Without a model there is no schedule: the resources have refused all.
  if (postModel(instance, options)) {
    searchAll(options);
  } else {
    result.ended = true;
  }
  int status = report(instance, options);
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
