// SPDX-License-Identifier: MIT
// A timetable for a school: when each lesson takes place, with as few lessons as possible at hours that are disliked.
//
// The value of a lesson is its hour of the week. The lessons of a class, and those of a teacher, are at different
// hours; there are so many rooms; the lessons of a class in one subject are on different days, in order; each teacher
// is away at some hours. What an hour costs a lesson is an element of its teacher's table, and the sum of all costs is
// minimised: neighbourhoods of the best timetable are looked into, of lessons that are linked by constraints.
// An interrupt (ctrl-C) ends the search; the best timetable stays.
#include "arguments.h"
#include "made_up.h"
#include "progress.h"

#include <koru_extras.h>
#include <signal.h>

static char program[] = "timetable";

static const char usage[] =
    "usage: timetable [OPTION ...]\n"
    "\n"
    "Makes up a school and searches for the timetable with the fewest lessons at disliked hours. Interrupt it "
    "(ctrl-C)\n"
    "to have the best one so far.\n"
    "\n"
    "  --classes N   how many classes, of 20 lessons a week (1 to 12, default 8)\n"
    "  --rooms N     how many rooms (1 to 12, default so many that each is free once a day)\n"
    "  --seed N      for what teachers like (default 1)\n"
    "  --seconds N   end the search after N seconds (1 to 3600, default 5)\n"
    "  --quiet       print only the summary\n"
    "  --help        print this text\n"
    "\n"
    "Exit status: 0 when there is a timetable, 1 when there is none or none was found in time, 2 on bad arguments.\n";

enum { DAYS = 5, HOURS = 6, SLOTS = DAYS * HOURS, SUBJECTS = 7, LESSONS = 20 };
enum { MAX_CLASSES = 12, MAX_LESSONS = MAX_CLASSES * LESSONS, CLASSES_OF_A_TEACHER = 5 };
enum { MAX_TEACHERS = SUBJECTS * (MAX_CLASSES / CLASSES_OF_A_TEACHER + 1), AWAY = 4, DISLIKED = 8 };

static const int lessonsOf[SUBJECTS] = {4, 4, 3, 3, 2, 2, 2};
static const char letterOf[] = "MENHGAS";  // mathematics, English, nature, history, geography, art, sport

typedef struct {
  int classes, rooms, seed, seconds;
  bool quiet;
} Options;

// The arrays stay with the constraints until cs_end.
typedef struct {
  const Options *options;
  CSint *lessons[MAX_LESSONS];  // class by class, subject by subject
  CSint *days[MAX_LESSONS];
  CSint *costs[MAX_LESSONS];
  CSint *ofTeacher[MAX_TEACHERS][CLASSES_OF_A_TEACHER * 4];
  int nbOfTeacher[MAX_TEACHERS];
  int table[MAX_TEACHERS][SLOTS];  // what an hour costs; negative: away
  CSint *cost;
} Timetable;

static CSsearch *running;  // for the signal handler

// --- The made-up school ---

static int teacherOf(int class, int subject) { return class / CLASSES_OF_A_TEACHER * SUBJECTS + subject; }

// Nobody likes the last hour of a day.
static void makeTables(Timetable *timetable) {
  unsigned state = (unsigned)timetable->options->seed * 7919u;
  for (int teacher = 0; teacher < MAX_TEACHERS; teacher++) {
    int *table = timetable->table[teacher];
    for (int slot = 0; slot < SLOTS; slot++) table[slot] = slot % HOURS == HOURS - 1 ? 2 : 0;
    for (int i = 0; i < DISLIKED; i++) table[randomBelow(&state, SLOTS)] = 1;
    for (int i = 0; i < AWAY; i++) table[randomBelow(&state, SLOTS)] = -1;
  }
}

// --- Model ---

// Makes the lesson, what it costs, and its day. After `previous`, when that is a lesson of the same subject.
static bool postLesson(Timetable *timetable, int i, int teacher, bool follows) {
  static int dayOf[SLOTS];
  const int *table = timetable->table[teacher];
  CSint *lesson = timetable->lessons[i] = cs_createCSint(0, SLOTS - 1);
  timetable->days[i] = cs_createCSint(0, DAYS - 1);
  timetable->costs[i] = cs_createCSint(0, 2);
  for (int slot = 0; slot < SLOTS; slot++) {
    dayOf[slot] = slot / HOURS;
    if (table[slot] < 0 && !cs_NEQ(lesson, slot)) return false;
  }
  timetable->ofTeacher[teacher][timetable->nbOfTeacher[teacher]++] = lesson;
  return cs_ElementOf(lesson, dayOf, SLOTS, timetable->days[i]) &&
         cs_ElementOf(lesson, table, SLOTS, timetable->costs[i]) &&
         (!follows || cs_Lt(timetable->days[i - 1], timetable->days[i]));
}

static bool postClass(Timetable *timetable, int class) {
  int first = class * LESSONS, i = first;
  for (int subject = 0; subject < SUBJECTS; subject++) {
    for (int k = 0; k < lessonsOf[subject]; k++, i++)
      if (!postLesson(timetable, i, teacherOf(class, subject), k > 0)) return false;
  }
  return cs_AllNeqDomain(&timetable->lessons[first], LESSONS);
}

static bool postTeachers(Timetable *timetable) {
  for (int teacher = 0; teacher < MAX_TEACHERS; teacher++) {
    int count = timetable->nbOfTeacher[teacher];
    if (count > 0 && !cs_AllNeqDomain(timetable->ofTeacher[teacher], count)) return false;
  }
  return true;
}

static bool postRooms(Timetable *timetable, int lessons) {
  for (int slot = 0; slot < SLOTS; slot++) {
    CSint *used = cs_OccurDomain(slot, timetable->lessons, lessons);
    if (used == NULL || !cs_LE(used, timetable->options->rooms)) return false;
  }
  return true;
}

static bool postModel(Timetable *timetable) {
  int lessons = timetable->options->classes * LESSONS;
  makeTables(timetable);
  for (int class = 0; class < timetable->options->classes; class ++)
    if (!postClass(timetable, class)) return false;
  if (!postTeachers(timetable) || !postRooms(timetable, lessons)) return false;
  timetable->cost = cs_Sigma(timetable->costs, lessons);
  return timetable->cost != NULL;
}

// --- Search ---

static void interrupted(int signalNumber) {
  (void)signalNumber;
  cs_stopSearch(running);
}

static void tellProgress(CSsearch *search, const CSsearchStats *stats, void *extra) {
  (void)search, (void)extra;
  if (stats->solutions == 0)
    showProgress(false, "no timetable yet | %lld fails | %.1f s", stats->fails, stats->seconds);
  else
    showProgress(false, "cost: %d, at least %d | %lld timetables, %lld fails | %.1f s", stats->objective, stats->bound,
                 stats->solutions, stats->fails, stats->seconds);
}

static CSsearch *search(Timetable *timetable) {
  const Options *options = timetable->options;
  CSsearchOptions how = {.size = sizeof how,
                         .order = CS_ORDER_DOM_WDEG,
                         .value = CS_VALUE_RANDOM,
                         .guided = true,
                         .minimize = timetable->cost,
                         .restarts = CS_RESTARTS_LUBY,
                         .restartFails = 100,
                         .neighbours = CS_NEIGHBOURS_LINKED,
                         .milliseconds = 1000LL * options->seconds,
                         .progressMilliseconds = 200};
  if (!options->quiet) how.progress = tellProgress;
  running = cs_createSearch(timetable->lessons, options->classes * LESSONS);
  if (!cs_setSearchOptions(running, &how)) return NULL;
  signal(SIGINT, interrupted);
  while (cs_nextSolution(running) == CS_STATUS_SOLUTION) continue;
  signal(SIGINT, SIG_DFL);
  if (!options->quiet) clearProgress();
  return running;
}

// --- Output ---

// The subject that the class has at that hour.
static char subjectAt(const int *slots, int class, int slot) {
  int i = class * LESSONS;
  for (int subject = 0; subject < SUBJECTS; subject++) {
    for (int k = 0; k < lessonsOf[subject]; k++, i++)
      if (slots[i] == slot) return letterOf[subject];
  }
  return '.';
}

static void printClass(const int *slots, int class) {
  printf("class %2d  ", class + 1);
  for (int slot = 0; slot < SLOTS; slot++)
    printf("%s%c", slot > 0 && slot % HOURS == 0 ? " " : "", subjectAt(slots, class, slot));
  putchar('\n');
}

static void printResult(const Timetable *timetable, const CSsearch *found) {
  CSsearchStats stats;
  cs_getSearchStats(found, &stats, sizeof stats);
  const int *slots = cs_getBestSolution(found);
  const char *status = cs_getStatusName(cs_getSearchStatus(found));
  if (slots == NULL) {
    printf("no timetable: %s", status);
  } else {
    for (int class = 0; class < timetable->options->classes && !timetable->options->quiet; class ++)
      printClass(slots, class);
    printf("disliked hours cost %d, at least %d (%s)", stats.objective, stats.bound, status);
  }
  printf(" | %lld fails, %lld restarts, %lld neighbourhoods | best after %.3f s of %.3f s\n", stats.fails,
         stats.restarts, stats.neighbourhoods, stats.secondsToBest, stats.seconds);
}

// --- The run ---

static int run(const Options *options) {
  static Timetable timetable;
  timetable.options = options;
  startSolver(program);
  int status = EXIT_OTHERWISE;
  if (!postModel(&timetable)) {
    puts("no timetable: there are not hours or rooms enough");
  } else {
    CSsearch *done = search(&timetable);
    printResult(&timetable, done);
    if (cs_getBestSolution(done) != NULL) status = EXIT_AS_HOPED;
  }
  cs_end();
  return status;
}

// --- Arguments ---

int main(int argc, char **argv) {
  (void)argc;
  Options options = {.classes = 8, .seed = 1, .seconds = 5};
  const Option known[] = {
      {.name = "--classes", .number = &options.classes, .min = 1, .max = MAX_CLASSES},
      {.name = "--rooms", .number = &options.rooms, .min = 1, .max = 12},
      {.name = "--seed", .number = &options.seed, .min = 0, .max = 1000000},
      {.name = "--seconds", .number = &options.seconds, .min = 1, .max = 3600},
      {.name = "--quiet", .flag = &options.quiet},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  if (options.rooms == 0) options.rooms = options.classes * LESSONS / (SLOTS - DAYS) + 1;
  return finish(program, run(&options));
}
