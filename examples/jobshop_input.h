// SPDX-License-Identifier: MIT
// Reading of job-shop instances in the usual text format: the numbers of jobs and machines, then for each job its
// operations in order, each a machine (counted from 0) and a duration; it visits each machine once.
#ifndef KORU_EXAMPLE_JOBSHOP_INPUT_H
#define KORU_EXAMPLE_JOBSHOP_INPUT_H

#include "input.h"

enum { MAX_JOBS = 50, MAX_MACHINES = 50, MAX_DURATION = 100000 };

typedef struct {
  int nbJobs, nbMachines;
  int machines[MAX_JOBS][MAX_MACHINES];
  int durations[MAX_JOBS][MAX_MACHINES];
} Instance;

static inline bool checkVisit(Input *input, const Instance *instance, int job, int k) {
  for (int before = 0; before < k; before++) {
    if (instance->machines[job][before] != instance->machines[job][k]) continue;
    snprintf(input->error, sizeof input->error, "job %d: machine %d a second time", job, instance->machines[job][k]);
    return false;
  }
  return true;
}

static inline bool readJob(Input *input, Instance *instance, int job) {
  for (int k = 0; k < instance->nbMachines; k++) {
    char what[60];
    snprintf(what, sizeof what, "job %d: machine %d", job, k + 1);
    if (!readNumber(input, 0, instance->nbMachines - 1, what, &instance->machines[job][k])) return false;
    if (!checkVisit(input, instance, job, k)) return false;
    snprintf(what, sizeof what, "job %d: duration %d", job, k + 1);
    if (!readNumber(input, 0, MAX_DURATION, what, &instance->durations[job][k])) return false;
  }
  return true;
}

// Read an instance. When the input holds none, its line and error say where and why.
static inline bool readInstance(Input *input, Instance *instance) {
  if (!readNumber(input, 1, MAX_JOBS, "number of jobs", &instance->nbJobs)) return false;
  if (!readNumber(input, 1, MAX_MACHINES, "number of machines", &instance->nbMachines)) return false;
  for (int job = 0; job < instance->nbJobs; job++)
    if (!readJob(input, instance, job)) return false;
  return expectEnd(input);
}

#endif  // KORU_EXAMPLE_JOBSHOP_INPUT_H
