# SPDX-License-Identifier: MIT
# Runs an example and checks its exit status and output:
#   cmake -DPROGRAM=... -DSTATUS=0 [-DARGUMENTS=a|b] [-DINPUT=file] [-DEXPECT=regex] [-DEXPECT_ERROR=regex]
#         [-DWRITES=file -DEXPECT_WRITTEN=regex] -P check_example.cmake
# The standard error stream must match EXPECT_ERROR; without it, nothing may appear there.
string(REPLACE "|" ";" arguments "${ARGUMENTS}")
if(NOT INPUT)
  set(INPUT /dev/null)
endif()
if(WRITES)
  file(REMOVE "${WRITES}")
endif()
execute_process(
  COMMAND "${PROGRAM}" ${arguments}
  INPUT_FILE "${INPUT}"
  RESULT_VARIABLE status
  OUTPUT_VARIABLE output
  ERROR_VARIABLE error)

set(faults "")
if(NOT status STREQUAL STATUS)
  string(APPEND faults "exit status is ${status}, not ${STATUS}\n")
endif()
if(NOT output MATCHES "${EXPECT}")
  string(APPEND faults "standard output does not match ${EXPECT}\n")
endif()
if(EXPECT_ERROR)
  if(NOT error MATCHES "${EXPECT_ERROR}")
    string(APPEND faults "standard error does not match ${EXPECT_ERROR}\n")
  endif()
elseif(NOT error STREQUAL "")
  string(APPEND faults "standard error is not empty\n")
endif()
if(WRITES)
  file(READ "${WRITES}" written)
  if(NOT written MATCHES "${EXPECT_WRITTEN}")
    string(APPEND faults "${WRITES} does not match ${EXPECT_WRITTEN}\n")
  endif()
endif()
if(faults)
  message(FATAL_ERROR "${faults}--- output\n${output}--- error\n${error}---")
endif()
