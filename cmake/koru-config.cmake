# SPDX-License-Identifier: MIT
# find_package(koru): defines koru::koru (shared) and koru::koru_static.
include("${CMAKE_CURRENT_LIST_DIR}/koru-targets.cmake")
