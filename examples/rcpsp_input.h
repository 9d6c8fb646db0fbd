// SPDX-License-Identifier: MIT
// Reading of project scheduling instances in PSPLIB's single-mode format: activities with successors, a duration and
// requests of resources, and how much there is of each. The sections are found by their names; what else the format
// holds is skipped.
#ifndef KORU_EXAMPLE_RCPSP_INPUT_H
#define KORU_EXAMPLE_RCPSP_INPUT_H

#include "input.h"

enum { MAX_ACTIVITIES = 200, MAX_RESOURCES = 8, MAX_AMOUNT = 10000 };

// Activities are counted from 0 here, from 1 in the file.
typedef struct {
  int nbActivities, nbResources;
  bool precedes[MAX_ACTIVITIES][MAX_ACTIVITIES];  // as given, not closed
  int durations[MAX_ACTIVITIES];
  int requests[MAX_ACTIVITIES][MAX_RESOURCES];
  int capacities[MAX_RESOURCES];
} Instance;

// Skip words up to one that begins with the text.
static inline bool skipTo(Input *input, const char *text) {
  char word[60];
  while (readWord(input, word, sizeof word))
    if (strncmp(word, text, strlen(text)) == 0) return true;
  snprintf(input->error, sizeof input->error, ferror(input->file) ? "cannot read on" : "\"%s\" is missing", text);
  return false;
}

// The number and the mode that begin a row.
static inline bool readActivity(Input *input, int activity) {
  int number = 0;
  return readNumber(input, activity + 1, activity + 1, "activity", &number) && readNumber(input, 1, 1, "mode", &number);
}

static inline bool readSuccessors(Input *input, Instance *instance, int activity) {
  int count = 0, n = instance->nbActivities;
  char what[60];
  snprintf(what, sizeof what, "activity %d: number of successors", activity + 1);
  if (!readNumber(input, 0, n, what, &count)) return false;
  for (int k = 0; k < count; k++) {
    int successor = 0;
    snprintf(what, sizeof what, "activity %d: successor %d", activity + 1, k + 1);
    // From the next one on: activities are numbered so that none precedes itself by way of others.
    if (!readNumber(input, activity + 2, n, what, &successor)) return false;
    instance->precedes[activity][successor - 1] = true;
  }
  return true;
}

static inline bool readPrecedences(Input *input, Instance *instance) {
  // What follows "jobnr." in the line begins with a #.
  if (!skipTo(input, "PRECEDENCE") || !skipTo(input, "jobnr.")) return false;
  for (int i = 0; i < instance->nbActivities; i++)
    if (!readActivity(input, i) || !readSuccessors(input, instance, i)) return false;
  return true;
}

static inline bool readRequests(Input *input, Instance *instance) {
  if (!skipTo(input, "REQUESTS/DURATIONS") || !skipTo(input, "---")) return false;
  for (int i = 0; i < instance->nbActivities; i++) {
    char what[40];
    snprintf(what, sizeof what, "activity %d: request", i + 1);
    if (!readActivity(input, i) || !readNumber(input, 0, MAX_AMOUNT, "duration", &instance->durations[i]) ||
        !readNumbers(input, instance->nbResources, 0, MAX_AMOUNT, what, instance->requests[i]))
      return false;
  }
  return true;
}

static inline bool readCapacities(Input *input, Instance *instance) {
  if (!skipTo(input, "RESOURCEAVAILABILITIES")) return false;
  // The names of the resources: two words each.
  char word[60];
  for (int k = 0; k < 2 * instance->nbResources; k++) readWord(input, word, sizeof word);
  return readNumbers(input, instance->nbResources, 0, MAX_AMOUNT, "availability of resource", instance->capacities);
}

static inline bool checkRequests(Input *input, const Instance *instance) {
  for (int i = 0; i < instance->nbActivities; i++) {
    for (int r = 0; r < instance->nbResources; r++) {
      if (instance->durations[i] == 0 || instance->requests[i][r] <= instance->capacities[r]) continue;
      snprintf(input->error, sizeof input->error, "activity %d needs %d of resource %d, and there are %d", i + 1,
               instance->requests[i][r], r + 1, instance->capacities[r]);
      return false;
    }
  }
  return true;
}

// Read an instance. When the input holds none, its line and error say where and why.
static inline bool readInstance(Input *input, Instance *instance) {
  return skipTo(input, "jobs") && skipTo(input, "):") &&
         readNumber(input, 1, MAX_ACTIVITIES, "number of jobs", &instance->nbActivities) &&
         skipTo(input, "renewable") && skipTo(input, ":") &&
         readNumber(input, 1, MAX_RESOURCES, "number of renewable resources", &instance->nbResources) &&
         readPrecedences(input, instance) && readRequests(input, instance) && readCapacities(input, instance) &&
         checkRequests(input, instance);
}

#endif  // KORU_EXAMPLE_RCPSP_INPUT_H
