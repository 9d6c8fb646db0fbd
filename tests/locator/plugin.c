/* SPDX-License-Identifier: MIT */
/* A module that is loaded while the program runs, and posts. Built twice, with the function on different lines. */
#include "koru.h"

bool postFromPlugin(CSint *x, CSint *y);

#ifdef SECOND_PLUGIN
enum { kLine = __LINE__ + 2 };
bool postFromPlugin(CSint *x, CSint *y) {
  const bool posted = cs_Neq(x, y);
  return posted && cs_getMin(x) <= cs_getMax(x);
}
#else
enum { kLine = __LINE__ + 2 };
bool postFromPlugin(CSint *x, CSint *y) {
  const bool posted = cs_Neq(x, y);
  return posted && cs_getMin(x) <= cs_getMax(x);
}
#endif

int lineOfPlugin(void);
int lineOfPlugin(void) { return kLine; }
