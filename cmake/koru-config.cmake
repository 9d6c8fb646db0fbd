# SPDX-License-Identifier: MIT
# find_package(koru): defines koru::koru (shared) and koru::koru_static, and where they were installed
# koru::koru_threads and koru::koru_threads_static, in which each thread has a solver of its own, and koru::koru_mpi.
include("${CMAKE_CURRENT_LIST_DIR}/koru-targets.cmake")
