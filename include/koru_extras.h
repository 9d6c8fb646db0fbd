/* SPDX-License-Identifier: MIT */
/* Copyright (c) The Koru authors */
/**
 * @file koru_extras.h
 * @brief What Koru offers beyond koru.h, in the same library.
 *
 * What koru.h says in its introduction holds here as well: one solver, failure values, null arguments, callbacks,
 * undoing. Two habits differ. A function of this header copies the arrays that it is given, unless it says otherwise:
 * the caller may free or change them as soon as the call returns. And a callback is always handed a pointer of the
 * host's.
 *
 * The header reads as a table of contents:
 *
 *   1. Order of arrays
 */
#ifndef KORU_EXTRAS_H
#define KORU_EXTRAS_H

#include "koru.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==================================================================================================================
 * 1. Order of arrays
 * ================================================================================================================ */

#ifdef __cplusplus
}
#endif

#endif /* KORU_EXTRAS_H */
