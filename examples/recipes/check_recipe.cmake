# SPDX-License-Identifier: MIT
# Runs PROGRAM, made from SOURCE, and compares: PAGE has the source behind its first line, and what it prints, as blocks.
separate_arguments(EMULATOR)
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" RESULT_VARIABLE status OUTPUT_VARIABLE output)
string(REPLACE "\r\n" "\n" output "${output}")
file(READ "${SOURCE}" source)
string(FIND "${source}" "\n" end)
math(EXPR begin "${end} + 1")
string(SUBSTRING "${source}" ${begin} -1 source)
file(READ "${PAGE}" page)
string(FIND "${page}" "```c\n${source}```\n\n```\n${output}```\n" place)
if(NOT status EQUAL 0 OR place EQUAL -1)
  message(FATAL_ERROR "${PROGRAM}: exit status ${status}; ${PAGE} is to show ${SOURCE} and\n${output}")
endif()
