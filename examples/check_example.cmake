# SPDX-License-Identifier: MIT
# Runs an example and checks its exit status and output:
#   cmake -DPROGRAM=... -DSTATUS=0 [-DARGUMENTS=a|b] [-DINPUT=file] [-DEXPECT=regex] [-DEXPECT_ERROR=regex]
#         [-DWRITES=file -DEXPECT_WRITTEN=regex] [-DEMULATOR=command|argument] [-DRECORD=file] -P check_example.cmake
# The standard error stream must match EXPECT_ERROR; without it, nothing may appear there. What the run gave is kept in
# RECORD, for comparisons between platforms. Line ends of Windows are taken for plain ones.
string(REPLACE "|" ";" arguments "${ARGUMENTS}")
string(REPLACE "|" ";" emulator "${EMULATOR}")
if(NOT INPUT)
  set(INPUT /dev/null)
endif()
if(WRITES)
  file(REMOVE "${WRITES}")
endif()
execute_process(
  COMMAND ${emulator} "${PROGRAM}" ${arguments}
  INPUT_FILE "${INPUT}"
  RESULT_VARIABLE status
  OUTPUT_VARIABLE output
  ERROR_VARIABLE error)
string(REPLACE "\r\n" "\n" output "${output}")
string(REPLACE "\r\n" "\n" error "${error}")

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
  string(REPLACE "\r\n" "\n" written "${written}")
  if(NOT written MATCHES "${EXPECT_WRITTEN}")
    string(APPEND faults "${WRITES} does not match ${EXPECT_WRITTEN}\n")
  endif()
endif()
if(RECORD)
  file(WRITE "${RECORD}" "status ${status}\n--- output\n${output}--- error\n${error}--- written\n${written}")
endif()
if(faults)
  message(FATAL_ERROR "${faults}--- output\n${output}--- error\n${error}---")
endif()
