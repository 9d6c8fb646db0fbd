# SPDX-License-Identifier: MIT
# Tests of the examples: each run is checked for its exit status, its output and its messages.

# koru_example_test(NAME TARGET STATUS [ARGS ...] [INPUT file] [EXPECT regex] [EXPECT_ERROR regex])
# Without EXPECT_ERROR nothing may be written to the standard error stream.
function(koru_example_test name target status)
  cmake_parse_arguments(PARSE_ARGV 3 T "" "INPUT;EXPECT;EXPECT_ERROR" "ARGS")
  string(REPLACE ";" "|" arguments "${T_ARGS}")
  add_test(
    NAME example.${name}
    COMMAND
      ${CMAKE_COMMAND} "-DPROGRAM=$<TARGET_FILE:${target}>" "-DSTATUS=${status}" "-DARGUMENTS=${arguments}"
      "-DINPUT=${T_INPUT}" "-DEXPECT=${T_EXPECT}" "-DEXPECT_ERROR=${T_EXPECT_ERROR}" -P
      "${CMAKE_CURRENT_SOURCE_DIR}/check_example.cmake")
  set_tests_properties(example.${name} PROPERTIES LABELS examples TIMEOUT 120)
endfunction()

# koru_example_input(VARIABLE file-name text): write an input file and put its path into VARIABLE.
function(koru_example_input variable file text)
  set(path "${CMAKE_CURRENT_BINARY_DIR}/inputs/${file}")
  file(WRITE "${path}" "${text}")
  set(${variable} "${path}" PARENT_SCOPE)
endfunction()

set(puzzles "${CMAKE_CURRENT_SOURCE_DIR}/puzzles")
set(easy "53..7....6..195....98....6.8...6...34..8.3..17...2...6.6....28....419..5....8..79")
set(easy_solution "534678912672195348198342567859761423426853791713924856961537284287419635345286179")
string(REPEAT "." 81 empty)
string(REPEAT "." 79 nearly_empty)

# --- sudoku: outcomes ---
koru_example_input(easy_file easy.txt "# a comment\n\n \t\n  ${easy} \t # An easy one\t\r\n")
koru_example_test(sudoku.grid sudoku 0 ARGS "${easy_file}"
  EXPECT "Puzzle 1: An easy one\n[^5]*\\| 5 3 4 \\| 6 7 8 \\| 9 1 2 \\|.*unique solution.*1 puzzle: 1 unique, 0 several, 0 none")
koru_example_test(sudoku.line sudoku 0 ARGS --line "${easy_file}"
  EXPECT "^${easy_solution}  An easy one\n# 1 puzzle: 1 unique")
koru_example_test(sudoku.stats sudoku 0 ARGS --stats "${easy_file}"
  EXPECT "unique solution, 0 fails, 0 choice points\n.*[|] 0 fails, 0 choice points [|]")
koru_example_test(sudoku.stdin sudoku 0 ARGS --quiet INPUT "${easy_file}" EXPECT "^1 puzzle: 1 unique")
koru_example_test(sudoku.dash sudoku 0 ARGS --quiet - INPUT "${easy_file}" EXPECT "^1 puzzle: 1 unique")
koru_example_test(sudoku.no_puzzle sudoku 0 EXPECT "^0 puzzles: 0 unique, 0 several, 0 none")
koru_example_test(sudoku.hard9 sudoku 0 ARGS --quiet "${puzzles}/hard9.txt"
  EXPECT "^18 puzzles: 18 unique, 0 several, 0 none")
koru_example_test(sudoku.hard9_first sudoku 0 ARGS --quiet --first "${puzzles}/hard9.txt"
  EXPECT "^18 puzzles: 18 solved, 0 none")
koru_example_test(sudoku.big sudoku 0 ARGS --quiet "${puzzles}/big.txt" EXPECT "^2 puzzles: 2 unique, 0 several, 0 none")

koru_example_input(several_file several.txt "${empty}\n${easy}\n")
koru_example_test(sudoku.several sudoku 1 ARGS "${several_file}"
  EXPECT "several solutions, this is the first\n.*2 puzzles: 1 unique, 1 several, 0 none")
koru_example_test(sudoku.several_first sudoku 0 ARGS --quiet --first "${several_file}" EXPECT "^2 puzzles: 2 solved, 0 none")
koru_example_input(none_file none.txt "11${nearly_empty}\n${easy}\n")
koru_example_test(sudoku.none sudoku 1 ARGS --line "${none_file}"
  EXPECT "^# 11[.]+  # no solution\n${easy_solution}\n# 2 puzzles: 1 unique, 0 several, 1 none")
koru_example_test(sudoku.none_first sudoku 1 ARGS --quiet --first "${none_file}" EXPECT "^2 puzzles: 1 solved, 1 none")

# --- sudoku: bad input and arguments ---
koru_example_input(length_file length.txt "${easy}\n${easy}.\n")
koru_example_test(sudoku.bad_length sudoku 2 ARGS --quiet "${length_file}"
  EXPECT "^1 puzzle: 1 unique, 0 several, 0 none, 1 malformed"
  EXPECT_ERROR "^sudoku: [^\n]*length.txt:2: 82 cells where 81, 256 or 625 are expected\n$")
koru_example_input(letter_file letter.txt "A${nearly_empty}.\n")
koru_example_test(sudoku.bad_digit sudoku 2 ARGS "${letter_file}"
  EXPECT_ERROR "^sudoku: [^\n]*letter.txt:1: 'A' in cell 1 is no digit of a 9x9 puzzle\n$")
string(REPEAT "." 255 blanks255)
koru_example_input(letter16_file letter16.txt "${blanks255}h\n")
koru_example_test(sudoku.bad_digit_16 sudoku 2 INPUT "${letter16_file}"
  EXPECT_ERROR "^sudoku: stdin:1: 'h' in cell 256 is no digit of a 16x16 puzzle\n$")
string(REPEAT "123456789." 20000 long_text)
koru_example_input(long_file long.txt "${long_text}\n${easy} ${long_text}")
koru_example_test(sudoku.long_lines sudoku 2 ARGS --quiet "${long_file}"
  EXPECT "^1 puzzle: 1 unique" EXPECT_ERROR "^sudoku: [^\n]*long.txt:1: 200000 cells where")
koru_example_test(sudoku.missing_file sudoku 2 ARGS "${CMAKE_CURRENT_BINARY_DIR}/inputs/missing.txt"
  EXPECT_ERROR "^sudoku: [^\n]*missing.txt: ")
koru_example_test(sudoku.directory sudoku 2 ARGS "${CMAKE_CURRENT_BINARY_DIR}" EXPECT_ERROR "^sudoku: [^\n]*:1: cannot read on\n$")
koru_example_test(sudoku.bad_option sudoku 2 ARGS --fast EXPECT_ERROR "^sudoku: unknown option --fast\n")
koru_example_test(sudoku.two_files sudoku 2 ARGS a b EXPECT_ERROR "^sudoku: more than one file\n")
koru_example_test(sudoku.help sudoku 0 ARGS --help EXPECT "^usage: sudoku ")

# --- queens ---
koru_example_test(queens.board queens 0 ARGS 8 EXPECT "\\| Q [. ]*\\|\n.*8 queens: solved [|] ")
koru_example_test(queens.list queens 0 ARGS 41 EXPECT "^1 [0-9 ]*\n41 queens: solved [|] ")
koru_example_test(queens.one queens 0 ARGS 1 EXPECT "\\| Q \\|\n.*1 queen: solved [|] ")
koru_example_test(queens.quiet queens 0 ARGS --quiet 8 EXPECT "^8 queens: solved [|] ")
koru_example_test(queens.stats queens 0 ARGS --quiet --stats 8
  EXPECT "^8 queens: [^\n]*\n\nNb Fails = [0-9]+\nNb Choice Points = [0-9]+\nHeap Size = [0-9]+\n$")
koru_example_test(queens.print queens 0 ARGS 6 --all --print
  EXPECT "^2 4 6 1 3 5\n3 6 2 5 1 4\n4 1 5 2 6 3\n5 3 1 6 4 2\n6 queens: 4 solutions [|] ")
foreach(pair "1:1" "4:2" "5:10" "7:40" "8:92" "9:352")
  string(REPLACE ":" ";" pair "${pair}")
  list(GET pair 0 size)
  list(GET pair 1 solutions)
  koru_example_test(queens.all_${size} queens 0 ARGS --all ${size}
    EXPECT "^${size} queens?: ${solutions} solutions? [|] ")
endforeach()
foreach(size 2 3)
  koru_example_test(queens.none_${size} queens 1 ARGS ${size} EXPECT "^${size} queens: no solution [|] ")
  koru_example_test(queens.all_none_${size} queens 1 ARGS ${size} --all EXPECT "^${size} queens: no solution [|] ")
endforeach()
foreach(bad 0 -4 8x eight 10001 99999999999999999999)
  koru_example_test(queens.bad_${bad} queens 2 ARGS ${bad} EXPECT_ERROR "^queens: ${bad} is no number from 1 to 10000\n")
endforeach()
koru_example_test(queens.no_number queens 2 EXPECT_ERROR "^queens: how many queens")
koru_example_test(queens.two_numbers queens 2 ARGS 8 9 EXPECT_ERROR "^queens: more than one number\n")
koru_example_test(queens.bad_option queens 2 ARGS 8 --board EXPECT_ERROR "^queens: unknown option --board\n")
koru_example_test(queens.help queens 0 ARGS --help EXPECT "^usage: queens ")

# --- send_more_money ---
koru_example_test(send_more_money.unique send_more_money 0
  EXPECT "9 5 6 7\n.* 1 0 8 5\n.* 1 0 6 5 2\n.*S: 9, E: 5, N: 6, D: 7, M: 1, O: 0, R: 8, Y: 2\n\nunique solution [|] ")
koru_example_test(send_more_money.argument send_more_money 2 ARGS 1 EXPECT_ERROR "^usage: send_more_money\n")
koru_example_test(send_more_money.help send_more_money 0 ARGS --help EXPECT "^usage: send_more_money\n")
