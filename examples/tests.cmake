# SPDX-License-Identifier: MIT
# Tests of the examples: each run is checked for its exit status, its output and its messages.

# koru_example_test(NAME TARGET STATUS [ARGS ...] [INPUT file] [EXPECT regex] [EXPECT_ERROR regex]
#                   [WRITES file EXPECT_WRITTEN regex])
# Without EXPECT_ERROR nothing may be written to the standard error stream.
function(koru_example_test name target status)
  cmake_parse_arguments(PARSE_ARGV 3 T "" "INPUT;EXPECT;EXPECT_ERROR;WRITES;EXPECT_WRITTEN" "ARGS")
  string(REPLACE ";" "|" arguments "${T_ARGS}")
  string(REPLACE ";" "|" emulator "${CMAKE_CROSSCOMPILING_EMULATOR}")
  add_test(
    NAME example.${name}
    COMMAND
      ${CMAKE_COMMAND} "-DEMULATOR=${emulator}" "-DPROGRAM=$<TARGET_FILE:${target}>" "-DSTATUS=${status}"
      "-DARGUMENTS=${arguments}" "-DRECORD=${CMAKE_CURRENT_BINARY_DIR}/records/${name}.txt"
      "-DINPUT=${T_INPUT}" "-DEXPECT=${T_EXPECT}" "-DEXPECT_ERROR=${T_EXPECT_ERROR}"
      "-DWRITES=${T_WRITES}" "-DEXPECT_WRITTEN=${T_EXPECT_WRITTEN}" -P
      "${CMAKE_CURRENT_SOURCE_DIR}/check_example.cmake")
  set_tests_properties(example.${name} PROPERTIES LABELS examples TIMEOUT 120)
endfunction()

# koru_example_input(VARIABLE file-name text): write an input file and put its path into VARIABLE.
function(koru_example_input variable file text)
  set(path "${CMAKE_CURRENT_BINARY_DIR}/inputs/${file}")
  file(WRITE "${path}" "${text}")
  set(${variable} "${path}" PARENT_SCOPE)
endfunction()

# Linux opens a folder and cannot read it, Windows does not open it.
set(no_folder ":[01]: cannot read on")
if(WIN32)
  set(no_folder ": Permission denied")
endif()

# koru_example_fault(program name text line message): an input file is refused at that line, with exit status 2.
function(koru_example_fault program name text line message)
  koru_example_input(file "${program}_${name}.txt" "${text}")
  koru_example_test(${program}.${name} ${program} 2 ARGS "${file}"
    EXPECT "^$" EXPECT_ERROR "^${program}: [^\n]*${program}_${name}.txt:${line}: ${message}\n$")
endfunction()

# koru_example_arguments(program file|number): what all programs make of a command line, the operand being one of these.
function(koru_example_arguments program operand)
  koru_example_test(${program}.help ${program} 0 ARGS --help EXPECT "^usage: ${program} ")
  koru_example_test(${program}.bad_option ${program} 2 ARGS --nonsense EXPECT_ERROR "^${program}: unknown option --nonsense\n")
  koru_example_test(${program}.two_${operand}s ${program} 2 ARGS 8 9 EXPECT_ERROR "^${program}: more than one ${operand}\n")
  if(operand STREQUAL "file")
    koru_example_test(${program}.missing_file ${program} 2 ARGS "${CMAKE_CURRENT_BINARY_DIR}/inputs/missing.txt"
      EXPECT_ERROR "^${program}: [^\n]*missing.txt: ")
    koru_example_test(${program}.directory ${program} 2 ARGS "${CMAKE_CURRENT_BINARY_DIR}"
      EXPECT_ERROR "^${program}: [^\n]*${no_folder}\n$")
  endif()
endfunction()

# The page shows each recipe and what it prints.
file(GLOB recipes CONFIGURE_DEPENDS recipes/*.c)
foreach(source IN LISTS recipes)
  get_filename_component(name "${source}" NAME_WE)
  string(REPLACE ";" " " emulator "${CMAKE_CROSSCOMPILING_EMULATOR}")
  add_test(
    NAME example.recipe.${name}
    COMMAND
      ${CMAKE_COMMAND} "-DEMULATOR=${emulator}" "-DPROGRAM=$<TARGET_FILE:recipe_${name}>" "-DSOURCE=${source}"
      "-DPAGE=${PROJECT_SOURCE_DIR}/docs/recipes.md" -P "${CMAKE_CURRENT_SOURCE_DIR}/recipes/check_recipe.cmake")
  set_tests_properties(example.recipe.${name} PROPERTIES LABELS examples TIMEOUT 60)
endforeach()

# --- in C++ ---
koru_example_test(cpp.ward cpp_ward 0 EXPECT "^optimal: 3 wishes not met\n( [-ELN])+\n")
koru_example_test(cpp.workshop cpp_workshop 0 EXPECT "^optimal: all done after 17\n  [.A-D]+\n")
koru_example_test(cpp.packing cpp_packing 0 EXPECT "^optimal: 6 vans\n(van [1-6], [0-9]+ full:( [0-9]+)+\n)+$")
koru_example_test(cpp.configurator cpp_configurator 0
  EXPECT "^graphics twin:\n.*case small: fits nothing\nprocessor sixteen:\n  case: tower\n.*optimal, 980: tower mini four twin 500 W\n$")

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
koru_example_arguments(sudoku file)

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
koru_example_test(queens.options_ended queens 2 ARGS -- --all EXPECT_ERROR "^queens: --all is no number from 1 to 10000\n")
foreach(bad 0 -4 8x eight 10001 99999999999999999999)
  koru_example_test(queens.bad_${bad} queens 2 ARGS ${bad} EXPECT_ERROR "^queens: ${bad} is no number from 1 to 10000\n")
endforeach()
koru_example_test(queens.no_number queens 2 EXPECT_ERROR "^queens: how many queens")
koru_example_arguments(queens number)

# --- send_more_money ---
koru_example_test(send_more_money.unique send_more_money 0
  EXPECT "9 5 6 7\n.* 1 0 8 5\n.* 1 0 6 5 2\n.*S: 9, E: 5, N: 6, D: 7, M: 1, O: 0, R: 8, Y: 2\n\nunique solution [|] ")
koru_example_test(send_more_money.argument send_more_money 2 ARGS 1 EXPECT_ERROR "^send_more_money: 1 is not expected\nTry send_more_money --help.\n$")
koru_example_test(send_more_money.help send_more_money 0 ARGS --help EXPECT "^usage: send_more_money\n")

# --- magic_square ---
koru_example_test(magic_square.drawn magic_square 0 ARGS 3
  EXPECT "\\| 2 \\| 9 \\| 4 \\|\n.*\\| 7 \\| 5 \\| 3 \\|\n.*\\| 6 \\| 1 \\| 8 \\|\n.*3x3, sum 15: solved [|] ")
koru_example_test(magic_square.wide magic_square 0 ARGS 4 EXPECT "\\|  1 \\|[^\n]*\n.*\n4x4, sum 34: solved [|] ")
koru_example_test(magic_square.one magic_square 0 ARGS 1 EXPECT "\\| 1 \\|\n.*1x1, sum 1: solved [|] ")
koru_example_test(magic_square.five magic_square 0 ARGS --quiet 5 EXPECT "^5x5, sum 65: solved [|] ")
koru_example_test(magic_square.stats magic_square 0 ARGS --quiet --stats 3
  EXPECT "^3x3, [^\n]*\n\nNb Fails = [0-9]+\nNb Choice Points = [0-9]+\nHeap Size = [0-9]+\n$")
foreach(pair "1:1" "3:1" "4:880")
  string(REPLACE ":" ";" pair "${pair}")
  list(GET pair 0 side)
  list(GET pair 1 solutions)
  koru_example_test(magic_square.all_${side} magic_square 0 ARGS --all ${side}
    EXPECT "^${side}x${side}, sum [0-9]+: ${solutions} solutions? [|] ")
endforeach()
koru_example_test(magic_square.none magic_square 1 ARGS 2 EXPECT "^2x2, sum 5: no solution [|] ")
koru_example_test(magic_square.all_none magic_square 1 ARGS 2 --all EXPECT "^2x2, sum 5: no solution [|] ")
foreach(bad 0 -4 4x four 21 99999999999999999999)
  koru_example_test(magic_square.bad_${bad} magic_square 2 ARGS ${bad}
    EXPECT_ERROR "^magic_square: ${bad} is no number from 1 to 20\n")
endforeach()
koru_example_test(magic_square.no_number magic_square 2 EXPECT_ERROR "^magic_square: how many rows")
koru_example_arguments(magic_square number)

# --- knapsack: outcomes ---
set(data "${CMAKE_CURRENT_SOURCE_DIR}/data")
koru_example_test(knapsack.p01 knapsack 0 ARGS "${data}/knapsack_p01.txt"
  EXPECT "^Items  1 2 3 4 6\nRow 1  165 of 165\n10 items, 1 row: greatest profit 309, proved after [0-9]+ solutions? [|] ")
koru_example_test(knapsack.p07 knapsack 0 ARGS --quiet "${data}/knapsack_p07.txt"
  EXPECT "^15 items, 1 row: greatest profit 1458, proved ")
koru_example_test(knapsack.p08 knapsack 0 ARGS --quiet "${data}/knapsack_p08.txt"
  EXPECT "^24 items, 1 row: greatest profit 13549094, proved ")
koru_example_test(knapsack.hut knapsack 0 ARGS "${data}/knapsack_hut.txt"
  EXPECT "^Items [ 0-9]+\nRow 1  [0-9]+ of 203\nRow 2  [0-9]+ of 187\nRow 3  [0-9]+ of 119\n18 items, 3 rows: greatest profit 529, ")
koru_example_test(knapsack.steps knapsack 0 ARGS --steps --quiet "${data}/knapsack_p07.txt"
  EXPECT "^Profit [0-9]+\n(Profit [0-9]+\n)*Profit 1458\n15 items")
koru_example_test(knapsack.stats knapsack 0 ARGS --quiet --stats "${data}/knapsack_p01.txt"
  EXPECT "^10 items, [^\n]*\n\nNb Fails = [0-9]+\nNb Choice Points = [0-9]+\nHeap Size = [0-9]+\n$")
koru_example_test(knapsack.stdin knapsack 0 INPUT "${data}/knapsack_p01.txt" EXPECT "greatest profit 309,")
koru_example_test(knapsack.dash knapsack 0 ARGS - INPUT "${data}/knapsack_p01.txt" EXPECT "greatest profit 309,")
# Comments, blanks and line ends anywhere; a capacity of 0 and loads up to the largest int.
koru_example_input(loose_file loose.txt "#start\n3\t2#counts\r\n0 2147483647 \n\n7 5 9 0 0\n1 2147483646 1 1 # end")
koru_example_test(knapsack.loose knapsack 0 ARGS "${loose_file}"
  EXPECT "^Items  1 2\nRow 1  0 of 0\nRow 2  2147483647 of 2147483647\n3 items, 2 rows: greatest profit 12, ")
koru_example_input(nothing_file nothing.txt "1 1 5 10 6")
koru_example_test(knapsack.takes_nothing knapsack 0 ARGS "${nothing_file}"
  EXPECT "^Items \nRow 1  0 of 5\n1 item, 1 row: greatest profit 0, proved after 1 solution [|] ")
koru_example_input(heavy_file heavy.txt "2 1 2147483647 1 1 2147483647 2147483647")
koru_example_test(knapsack.heavy knapsack 0 ARGS "${heavy_file}"
  EXPECT "Row 1  2147483647 of 2147483647\n2 items, 1 row: greatest profit 1, ")

# --- knapsack: bad input and arguments ---
set(numbers "from 0 to 2147483647")
koru_example_fault(knapsack empty "" 1 "number of items: missing")
koru_example_fault(knapsack only_comment "# nothing\n" 2 "number of items: missing")
koru_example_fault(knapsack no_items "0 1" 1 "number of items: 0 is no number from 1 to 1000")
koru_example_fault(knapsack many_items "\n1001 1" 2 "number of items: 1001 is no number from 1 to 1000")
koru_example_fault(knapsack many_rows "3 51" 1 "number of rows: 51 is no number from 1 to 50")
koru_example_fault(knapsack negative "1 1\n-5\n3 2" 2 "capacity 1: -5 is no number ${numbers}")
koru_example_fault(knapsack letters "2 1 9\n3 4x\n2 2" 2 "profit 2: 4x is no number ${numbers}")
koru_example_fault(knapsack too_large "1 1\n9\n3\n2147483648" 4 "row 1: weight 1: 2147483648 is no number ${numbers}")
koru_example_fault(knapsack profits "2 1 9\n2147483647 1\n2 2" 2 "the profits add up to more than 2147483647")
koru_example_fault(knapsack short "2 2 9 9\n3 4\n1 2\n1" 4 "row 2: weight 2: missing")
koru_example_fault(knapsack long "1 1 9\n3\n1\n8" 4 "8: nothing more is expected")
string(REPEAT "7" 100000 sevens)
koru_example_fault(knapsack long_word "1 1\n${sevens}" 2 "capacity 1: 7+ is no number ${numbers}")
koru_example_arguments(knapsack file)

# --- nonogram: outcomes ---
koru_example_test(nonogram.boat nonogram 0 ARGS "${puzzles}/boat.non"
  EXPECT "\n          15  (###)+\n[^\n]*\n[^\n]*\n[^\n]*\n  2  2  2  1 [^\n]*\nBoat, 15x15: one picture [|] ")
koru_example_test(nonogram.koru nonogram 0 ARGS --quiet "${puzzles}/koru.non" EXPECT "^Koru, 25x25: one picture [|] ")
koru_example_test(nonogram.stats nonogram 0 ARGS --quiet --stats "${puzzles}/boat.non"
  EXPECT "^Boat, [^\n]*\n\nNb Fails = 0\nNb Choice Points = 0\nHeap Size = [0-9]+\n$")
koru_example_test(nonogram.stdin nonogram 0 ARGS --quiet INPUT "${puzzles}/boat.non" EXPECT "^Boat, 15x15: one picture [|] ")
koru_example_test(nonogram.dash nonogram 0 ARGS --quiet - INPUT "${puzzles}/boat.non" EXPECT "^Boat, 15x15: one picture [|] ")
koru_example_input(nonogram_file diagonal.non "width 2\nheight 2\nrows\n1\n1\ncolumns\n1\n1\n")
koru_example_test(nonogram.several nonogram 1 ARGS "${nonogram_file}"
  EXPECT "^       1  1\n  1   . ###\n  1  ### . \n2x2: several pictures [|] ")
koru_example_test(nonogram.several_first nonogram 0 ARGS --first --quiet "${nonogram_file}" EXPECT "^2x2: solved [|] ")
koru_example_input(nonogram_file contradiction.non "width 2\nheight 1\nrows\n2\ncolumns\n1\n0\n")
koru_example_test(nonogram.none nonogram 1 ARGS "${nonogram_file}" EXPECT "^2x1: no picture [|] ")
koru_example_test(nonogram.none_first nonogram 1 ARGS --first "${nonogram_file}" EXPECT "^2x1: no picture [|] ")
koru_example_input(nonogram_file blank.non "height 1\nwidth 2\ncolumns\n0\n0\nrows\n0\n")
koru_example_test(nonogram.blank nonogram 0 ARGS "${nonogram_file}" EXPECT "^   .  . \n2x1: one picture [|] ")
# Columns first, blanks and commas, line ends of other systems, keywords that say nothing, no line end at the end.
koru_example_input(nonogram_file loose.non
  "# loose\r\ncatalogue \"x 1\"\r\ntitle  Loose\n\nwidth\t5\nheight 1\n\ncolumns\n 1\n1 \n0\n\n1\n1\ngoal \"11011\"\nrows\n\n  2 ,\t2")
koru_example_test(nonogram.loose nonogram 0 ARGS "${nonogram_file}"
  EXPECT "\n  2  2  ###### . ######\nLoose, 5x1: one picture [|] ")

# --- nonogram: bad input and arguments ---
set(square "width 2\nheight 2\n")
koru_example_fault(nonogram empty "" 1 "width: missing")
koru_example_fault(nonogram no_height "width 2\n" 2 "height: missing")
koru_example_fault(nonogram no_number "width two\n" 1 "width: two is no number from 1 to 200")
koru_example_fault(nonogram zero "height 0\n" 1 "height: 0 is no number from 1 to 200")
koru_example_fault(nonogram negative "height -3\n" 1 "height: -3 is no number from 1 to 200")
koru_example_fault(nonogram large "\nwidth 201\n" 2 "width: 201 is no number from 1 to 200")
koru_example_fault(nonogram nothing "width\n" 1 "width:  is no number from 1 to 200")
koru_example_fault(nonogram twice "width 2\nwidth 2\n" 2 "width is given twice")
koru_example_fault(nonogram early "width 2\nrows\n1\n" 2 "width and height must come before rows")
koru_example_fault(nonogram stray "${square}\n1,1\n" 4 "1,1: no clue is expected here")
koru_example_fault(nonogram stray_after "${square}rows\n1\n1\ngoal \"1\"\n1\n" 7 "1: no clue is expected here")
koru_example_fault(nonogram rows_twice "${square}rows\n1\n1\nrows\n" 6 "rows are given twice")
koru_example_fault(nonogram many "${square}rows\n1\n1\n1\n" 6 "there are more clues than the rows, 2")
koru_example_fault(nonogram few_rows "${square}columns\n1\n1\nrows\n1\n" 8 "clue of row 2: missing")
koru_example_fault(nonogram few_columns "${square}rows\n1\n1\ncolumns\n" 7 "clue of column 1: missing")
koru_example_fault(nonogram letters "${square}rows\n1\n1x\n" 5 "1x is no number from 0 to 2")
koru_example_fault(nonogram sign "${square}rows\n-1\n" 4 "-1 is no number from 0 to 2")
koru_example_fault(nonogram long_block "${square}rows\n3\n" 4 "3 is no number from 0 to 2")
koru_example_fault(nonogram crowded "${square}rows\n1\n1,1\n" 5 "the blocks do not fit into a row of 2 cells")
koru_example_fault(nonogram crowded_column "width 1\nheight 3\ncolumns\n2,1\n" 4 "the blocks do not fit into a column of 3 cells")
koru_example_fault(nonogram zero_first "${square}rows\n0,1\n" 4 "0 does not stand alone")
koru_example_fault(nonogram zero_last "${square}rows\n1,0\n" 4 "0 does not stand alone")
string(REPEAT "1," 5000 ones)
koru_example_fault(nonogram long_line "${square}rows\n${ones}\n" 4 "the line is longer than 1999 characters")
koru_example_arguments(nonogram file)
# --- golomb ---
koru_example_test(golomb.drawn golomb 0 ARGS 5
  EXPECT "^Marks  0 1 4 9 11\n       [|][|]__[|]____[|]_[|]\n5 marks: shortest length 11, proved after [0-9]+ rulers [|]")
koru_example_test(golomb.two golomb 0 ARGS --quiet 2 EXPECT "^2 marks: shortest length 1, proved after 1 ruler [|]")
koru_example_test(golomb.three golomb 0 ARGS --quiet 3 EXPECT "^3 marks: shortest length 3,")
koru_example_test(golomb.eight golomb 0 ARGS --quiet 8 EXPECT "^8 marks: shortest length 34,")
koru_example_test(golomb.stats golomb 0 ARGS --quiet --stats 6
  EXPECT "^6 marks: shortest length 17, [^\n]*\n\nNb Fails = [0-9]+\n")
koru_example_test(golomb.progress golomb 0 ARGS --progress --quiet 5 EXPECT "^5 marks: shortest length 11,"
  EXPECT_ERROR "^length [0-9]+ [(]ruler 1[)] [|] 0 fails [|] 0[.][0-9] s\n(length [^\n]*\n)*length 11 [(]ruler [0-9]+[)] [^\n]*\n$")
koru_example_test(golomb.no_number golomb 2 EXPECT "^$" EXPECT_ERROR "^golomb: how many marks[?]\n")
koru_example_test(golomb.one golomb 2 ARGS 1 EXPECT "^$" EXPECT_ERROR "^golomb: 1 is no number from 2 to 20\n")
koru_example_test(golomb.many golomb 2 ARGS 21 EXPECT_ERROR "^golomb: 21 is no number from 2 to 20\n")
koru_example_test(golomb.letters golomb 2 ARGS 8x EXPECT_ERROR "^golomb: 8x is no number from 2 to 20\n")
koru_example_test(golomb.negative golomb 2 ARGS -3 EXPECT_ERROR "^golomb: -3 is no number from 2 to 20\n")
koru_example_arguments(golomb number)
# --- quasigroup: outcomes ---
koru_example_input(quasigroup_3 quasigroup_3.txt "3 # the order\n1 2 3\n2 0 1\n3 1 2\n")
koru_example_test(quasigroup.file quasigroup 0 ARGS "${quasigroup_3}"
  EXPECT "^ 1 2 3\n 2 3 1\n 3 1 2\n\norder 3, 1 hole: filled [|] 1 run, 0 fails, 0 choice points, 0 no-goods [|] ")
koru_example_test(quasigroup.stdin quasigroup 0 ARGS --quiet - INPUT "${quasigroup_3}" EXPECT "^order 3, 1 hole: filled [|] ")
koru_example_input(quasigroup_none quasigroup_none.txt "3\n1 2 0\n0 0 3\n0 0 0\n")
koru_example_test(quasigroup.none quasigroup 1 ARGS "${quasigroup_none}" EXPECT "^order 3, 6 holes: cannot be filled [|] 0 runs, ")
# Propagation alone does not find that out.
koru_example_input(quasigroup_refuted quasigroup_refuted.txt "5\n0 0 2 0 0\n0 5 0 0 4\n2 0 0 0 0\n0 3 0 2 0\n0 0 5 0 0\n")
koru_example_test(quasigroup.refuted quasigroup 1 ARGS --quiet "${quasigroup_refuted}"
  EXPECT "^order 5, 18 holes: cannot be filled [|] 1 run, [1-9][0-9]* fails, ")
koru_example_test(quasigroup.made quasigroup 0 ARGS --order 5 --holes 9
  EXPECT "^( [1-5] [1-5] [1-5] [1-5] [1-5]\n)+\norder 5, 9 holes: filled [|] ")
koru_example_test(quasigroup.whole quasigroup 0 ARGS --order 1 --holes 0 EXPECT "^ 1\n\norder 1, 0 holes: filled [|] 1 run, 0 fails")
koru_example_test(quasigroup.empty quasigroup 0 ARGS --order 12 --holes 144 --quiet EXPECT "^order 12, 144 holes: filled [|] ")
koru_example_test(quasigroup.default quasigroup 0 EXPECT "\norder 20, 160 holes: filled [|] ")
koru_example_test(quasigroup.stats quasigroup 0 ARGS --order 5 --quiet --stats
  EXPECT "^order 5, 10 holes: [^\n]*\n\nNb Fails = [0-9]+\nNb Choice Points = [0-9]+\nHeap Size = [0-9]+\n$")
koru_example_test(quasigroup.given_up quasigroup 1 ARGS --order 30 --total 150 --quiet
  EXPECT "^order 30, 360 holes: given up [|] 2 runs, 150 fails, ")
koru_example_test(quasigroup.forget quasigroup 1 ARGS --order 30 --total 150 --quiet --forget
  EXPECT "given up [|] 2 runs, 150 fails, [0-9]+ choice points, 0 no-goods [|] ")
koru_example_test(quasigroup.keep quasigroup 1 ARGS --order 30 --total 2000 --keep 3 --quiet
  EXPECT "given up [|] [0-9]+ runs, 2000 fails, [0-9]+ choice points, 3 no-goods [|] ")

# --- quasigroup: the sequences of limits, a line for each run when the output is no terminal ---
koru_example_test(quasigroup.geometric quasigroup 1 ARGS --order 30 --total 400 --progress --quiet
  EXPECT_ERROR "^run 1: limit 100, 100 fails, [^\n]*\nrun 2: limit 120, 220 fails, [^\n]*\nrun 3: limit 144, 364 fails, [^\n]*\nrun 4: limit 36, 400 fails, ")
koru_example_test(quasigroup.constant quasigroup 1 ARGS --order 30 --total 20 --limit 10 --geometric 100 --progress --quiet
  EXPECT_ERROR "^run 1: limit 10, 10 fails, [^\n]*\nrun 2: limit 10, 20 fails, ")
set(runs "")
set(number 0)
foreach(limit 5 5 10 5 5 10 20 5)
  math(EXPR number "${number} + 1")
  string(APPEND runs "run ${number}: limit ${limit}, [^\n]*\n")
endforeach()
koru_example_test(quasigroup.luby quasigroup 1 ARGS --order 30 --total 65 --limit 5 --luby --progress --quiet
  EXPECT "^order 30" EXPECT_ERROR "^${runs}$")

# --- quasigroup: bad input and arguments ---
foreach(bad
    "empty||1: order: missing"
    "zero|0|1: order: 0 is no number from 1 to 60"
    "large|61|1: order: 61 is no number from 1 to 60"
    "word|x|1: order: x is no number from 1 to 60"
    "value|2 1 3 2 1|1: row 1: cell 2: 3 is no number from 0 to 2"
    "negative|2 1 -2 2 1|1: row 1: cell 2: -2 is no number from 0 to 2"
    "short|2 1 2 0|1: row 2: cell 2: missing"
    "long|2 1 2 2 1 1|1: 1: nothing more is expected")
  string(REPLACE "|" ";" bad "${bad}")
  list(GET bad 0 name)
  list(GET bad 1 text)
  list(GET bad 2 message)
  koru_example_input(bad_file quasigroup_${name}.txt "${text}")
  koru_example_test(quasigroup.bad_${name} quasigroup 2 ARGS "${bad_file}"
    EXPECT_ERROR "^quasigroup: [^\n]*quasigroup_${name}.txt:${message}\n$")
endforeach()
koru_example_input(quasigroup_line quasigroup_line.txt "2\n# a comment\n\n1 2\n2 9\n")
koru_example_test(quasigroup.bad_line quasigroup 2 ARGS "${quasigroup_line}"
  EXPECT_ERROR "^quasigroup: [^\n]*quasigroup_line.txt:5: row 2: cell 2: 9 is no number from 0 to 2\n$")
koru_example_test(quasigroup.no_file quasigroup 2 ARGS /nowhere/square.txt EXPECT_ERROR "^quasigroup: /nowhere/square.txt: No such file")
koru_example_test(quasigroup.too_many_holes quasigroup 2 ARGS --order 3 --holes 10
  EXPECT_ERROR "^quasigroup: 10 holes are more than the 9 cells\n")
foreach(bad "--order:61:1 to 60" "--holes:-1:0 to 3600" "--limit:0:1 to 1000000" "--geometric:99:100 to 1000" "--keep:0:1 to 2147483647")
  string(REPLACE ":" ";" bad "${bad}")
  list(GET bad 0 option)
  list(GET bad 1 value)
  list(GET bad 2 range)
  koru_example_test(quasigroup.bad${option} quasigroup 2 ARGS ${option} ${value}
    EXPECT_ERROR "^quasigroup: ${value} is no number from ${range}\n")
endforeach()
koru_example_arguments(quasigroup file)
# --- magic sequences ---
koru_example_test(magic_sequence.drawn magic_sequence 0 ARGS 10
  EXPECT "^6 2 1 0 0 0 1 0 0 0\n\n  x.0. = 6  ######\n  x.1. = 2  ##\n  x.2. = 1  #\n  x.6. = 1  #\n  all others are 0\n\nmagic sequence of 10: solved [|] ")
koru_example_test(magic_sequence.long magic_sequence 0 ARGS 100 EXPECT "^  x. 0. = 96  ############################################################\n  x. 1. = 2   #\n")
koru_example_test(magic_sequence.quiet magic_sequence 0 ARGS --quiet 7 EXPECT "^magic sequence of 7: solved [|] 0 fails, 3 choice points [|] ")
koru_example_test(magic_sequence.stats magic_sequence 0 ARGS --quiet --stats 7
  EXPECT "^magic sequence of 7: [^\n]*\n\nNb Fails = 0\nNb Choice Points = 3\nHeap Size = [0-9]+\n$")
koru_example_test(magic_sequence.all magic_sequence 0 ARGS 4 --all EXPECT "^1 2 1 0\n2 0 2 0\nmagic sequence of 4: 2 solutions [|] ")
koru_example_test(magic_sequence.one_of_all magic_sequence 0 ARGS 200 --all --quiet EXPECT "^magic sequence of 200: 1 solution [|] ")
foreach(length 1 2 3 6)
  koru_example_test(magic_sequence.none_${length} magic_sequence 1 ARGS ${length}
    EXPECT "^magic sequence of ${length}: no solution [|] ")
endforeach()
foreach(bad 0 -1 501 7x 99999999999)
  koru_example_test(magic_sequence.bad_${bad} magic_sequence 2 ARGS ${bad}
    EXPECT_ERROR "^magic_sequence: ${bad} is no number from 1 to 500\n")
endforeach()
koru_example_test(magic_sequence.no_number magic_sequence 2 EXPECT_ERROR "^magic_sequence: how many numbers")
koru_example_arguments(magic_sequence number)

# --- profile_demo ---
koru_example_test(profile_demo.stdout profile_demo 0
  EXPECT "^Koru Profiler: Constraint 1.0\n.*\n__DATA__\n(.*\n)*[^\t\n]+\t[0-9]+\t[^\t\n]+\t[^\t\n]+\tcs_AllNeq\t[0-9]+\t[0-9]+\n")
koru_example_test(profile_demo.places profile_demo 0 ARGS --places
  EXPECT "\nformat: part_of_model\n__DATA__\n(.*\n)*columns\tcs_Sigma\t[0-9]+\t[0-9]+\n")
koru_example_test(profile_demo.details profile_demo 0 ARGS --details
  EXPECT "^Koru Profiler: Details 1.0\n.*\n__DATA__\n(.*\n)*[^\t\n]+\t[0-9]+\t[^\t\n]+\t[^\t\n]+\tcs_AllNeq(\t[0-9]+)+\n")
koru_example_test(profile_demo.file profile_demo 0 ARGS "${CMAKE_CURRENT_BINARY_DIR}/inputs/profile.txt"
  EXPECT "^880 squares, profile in [^\n]*profile.txt\n$")
koru_example_test(profile_demo.bad_option profile_demo 2 ARGS --fast EXPECT "^$" EXPECT_ERROR "^profile_demo: unknown option --fast\n")
koru_example_test(profile_demo.two_files profile_demo 2 ARGS a b EXPECT_ERROR "^profile_demo: more than one file\n")
koru_example_test(profile_demo.help profile_demo 0 ARGS --help EXPECT "^usage: profile_demo ")

# --- car_sequencing: outcomes ---
# Classes 1 and 3 have the first option, 2 and 3 the second.
koru_example_test(car_sequencing.ten car_sequencing 0 ARGS "${data}/cars_10.txt"
  EXPECT "^   3   2   1   0   1   2   3   0   1   0\nsunroof and trailer hitch: 10 cars, 4 classes, 2 options: sequenced [|] 1 try [|] ")
koru_example_test(car_sequencing.sixty car_sequencing 0 ARGS --quiet "${data}/cars_60.txt"
  EXPECT "^sixty: 60 cars, 14 classes, 4 options: sequenced [|] ")
koru_example_test(car_sequencing.stdin car_sequencing 0 ARGS --quiet INPUT "${data}/cars_10.txt" EXPECT "^sunroof ")
koru_example_test(car_sequencing.dash car_sequencing 0 ARGS --quiet - INPUT "${data}/cars_10.txt" EXPECT "^sunroof ")
koru_example_test(car_sequencing.no_instance car_sequencing 0 EXPECT "^$")
koru_example_input(cars_file crowded.txt "6 1 2\n1\n2\n0 2 0\n1 4 1\n")
koru_example_test(car_sequencing.none car_sequencing 1 ARGS "${cars_file}"
  EXPECT "^6 cars, 2 classes, 1 option: no sequence [|] 0 tries [|] ")
# Neither option twice in a row.
koru_example_input(cars_file limit.txt "4 2 2\n1 1\n2 2\n0 2 1 0\n1 2 0 1\n")
koru_example_test(car_sequencing.alternating car_sequencing 0 ARGS "${cars_file}"
  EXPECT "^(   0   1   0   1|   1   0   1   0)\n4 cars, 2 classes, 2 options: sequenced ")
koru_example_input(cars_file alone.txt "prose\n1 1 1\n0\n1\n0 1 0")
koru_example_test(car_sequencing.alone car_sequencing 0 ARGS "${cars_file}"
  EXPECT "^   0\n1 car, 1 class, 1 option: sequenced [|] ")
# Two instances, the first one of five options without its capacities.
koru_example_input(cars_file two.txt
  "# Problem a b \r\n 2 5 2\r\n0 1 1 0 0 0 0\r\n1 1 0 1 0 1 0\r\n\n# again\n# Problem: c\n#Problem d\n1 1 1\n1\n1\n0 1 1\n")
koru_example_test(car_sequencing.two car_sequencing 0 ARGS --quiet "${cars_file}"
  EXPECT "^a b: 2 cars, 2 classes, 5 options: sequenced [^\n]*\nc: 1 car, 1 class, 1 option: sequenced [^\n]*\n$")

# --- car_sequencing: bad input and arguments ---
koru_example_fault(car_sequencing no_cars "# x\n0 1 1\n" 2 "number of cars: 0 is no number from 1 to 1000")
koru_example_fault(car_sequencing many_cars "1001 1 1\n" 1 "number of cars: 1001 is no number from 1 to 1000")
koru_example_fault(car_sequencing many_options "9 21 1\n" 1 "number of options: 21 is no number from 1 to 20")
koru_example_fault(car_sequencing no_classes "9 2\n" 1 "number of classes: missing")
koru_example_fault(car_sequencing many_classes "9 2 101\n" 1 "number of classes: 101 is no number from 1 to 100")
koru_example_fault(car_sequencing more_sizes "9 2 3 4\n" 1 "nothing more is expected in this line")
koru_example_fault(car_sequencing no_capacities "9 2 3\n" 1 "capacities: missing")
koru_example_fault(car_sequencing few_capacities "9 2 3\n1\n" 2 "capacity of option 2: missing")
koru_example_fault(car_sequencing more_capacities "9 2 3\n1 1 1\n" 2 "nothing more is expected in this line")
koru_example_fault(car_sequencing capacity "9 2 3\n1 -1\n" 2 "capacity of option 2: -1 is no number from 0 to 10")
koru_example_fault(car_sequencing no_blocks "9 2 3\n1 1\n" 2 "blocks: missing")
koru_example_fault(car_sequencing block "9 2 3\n1 1\n0 2\n" 3 "block of option 1: 0 is no number from 1 to 10")
koru_example_fault(car_sequencing long_block "9 2 3\n1 1\n2 11\n" 3 "block of option 2: 11 is no number from 1 to 10")
koru_example_fault(car_sequencing no_class "9 1 2\n1\n2\n" 3 "class 0: missing")
koru_example_fault(car_sequencing few_classes "9 1 2\n1\n2\n0 9 0\n" 4 "class 1: missing")
koru_example_fault(car_sequencing wrong_class "9 1 2\n1\n2\n1 9 0\n" 4 "class: 1 is no number from 0 to 0")
koru_example_fault(car_sequencing demand "9 1 2\n1\n2\n0 x 0\n" 4 "number of its cars: x is no number from 0 to 1000")
koru_example_fault(car_sequencing option "9 1 2\n1\n2\n0 9 2\n" 4 "option 1: 2 is no number from 0 to 1")
koru_example_fault(car_sequencing more_class "9 1 2\n1\n2\n0 9 1 1\n" 4 "nothing more is expected in this line")
koru_example_fault(car_sequencing sum "9 1 2\n1\n2\n0 3 0\n1 4 1\n" 5 "the classes have 7 cars together, not 9")
koru_example_fault(car_sequencing long_line "${ones}\n9 1 2\n${sevens}\n" 1 "number of cars: 1,1,[1,]* is no number from 1 to 1000")
koru_example_fault(car_sequencing long_word "9 1 2\n${sevens}\n" 2 "capacity of option 1: 7+ is no number from 0 to 10")
koru_example_arguments(car_sequencing file)
koru_example_test(car_sequencing.bad_fails car_sequencing 2 ARGS --fails 0
  EXPECT_ERROR "^car_sequencing: 0 is no number from 1 to 2147483647\n")
# --- jobshop ---
set(data "${CMAKE_CURRENT_SOURCE_DIR}/data")
koru_example_test(jobshop.ft06 jobshop 0 ARGS "${data}/jobshop_ft06.txt"
  EXPECT "Makespan 55 after [0-9.]* s\n.*    m5 [|][ 0-5]*[|]\n +0 +10 .*6 jobs, 6 machines: makespan 55, proved shortest [|] ")
koru_example_test(jobshop.la01 jobshop 0 ARGS --quiet "${data}/jobshop_la01.txt"
  EXPECT "^10 jobs, 5 machines: makespan 666, proved shortest [|] ")
koru_example_test(jobshop.dash jobshop 0 ARGS --quiet - INPUT "${data}/jobshop_ft06.txt"
  EXPECT "^6 jobs, 6 machines: makespan 55, proved shortest [|] ")
koru_example_test(jobshop.fast jobshop 1 ARGS --quiet --fast "${data}/jobshop_ft06.txt"
  EXPECT "^6 jobs, 6 machines: makespan 55, not proved shortest [|] ")
set(shop "13 13")
foreach(job RANGE 12)
  string(APPEND shop "\n")
  foreach(k RANGE 12)
    math(EXPR machine "(${job} + ${k} * (${job} % 12 + 1)) % 13")
    math(EXPR duration "(${job} * ${job} * 31 + ${k} * 47 + ${job} * ${k} * 17) % 89 + 10")
    string(APPEND shop " ${machine} ${duration}")
  endforeach()
endforeach()
koru_example_input(hard_file jobshop_hard.txt "${shop}\n")
koru_example_test(jobshop.stopped jobshop 1 ARGS --quiet --seconds 1 "${hard_file}"
  EXPECT "^13 jobs, 13 machines: makespan [0-9]+, not proved shortest [|] ")
koru_example_test(jobshop.stats jobshop 0 ARGS --quiet --stats "${data}/jobshop_ft06.txt"
  EXPECT "\n[0-9]+ choice points, [0-9]+ restarts, ")
set(jobshop_svg "${CMAKE_CURRENT_BINARY_DIR}/inputs/jobshop.svg")
koru_example_test(jobshop.svg jobshop 0 ARGS --quiet --svg "${jobshop_svg}" "${data}/jobshop_ft06.txt"
  EXPECT "makespan 55" WRITES "${jobshop_svg}" EXPECT_WRITTEN "^<svg .*Job shop: 6 jobs, 6 machines, makespan 55<.*>job 5<.*>machine 0<.*</svg>\n$")
koru_example_test(jobshop.svg_nowhere jobshop 2 ARGS --quiet --svg "${CMAKE_CURRENT_BINARY_DIR}" "${data}/jobshop_ft06.txt"
  EXPECT_ERROR "^jobshop: [^\n]*: ")
koru_example_input(one_file jobshop_one.txt "1 1 # job, machine\n 0 0\n")
koru_example_test(jobshop.nothing_to_do jobshop 0 ARGS --quiet "${one_file}" EXPECT "^1 job, 1 machine: makespan 0, proved shortest [|] ")
foreach(bad
    "no_jobs|0 5|1: number of jobs: 0 is no number from 1 to 50"
    "word|2 x|1: number of machines: x is no number from 1 to 50"
    "machine|1 2\n0 3 2 4|2: job 0: machine 2: 2 is no number from 0 to 1"
    "twice|1 2\n0 3 0 4|2: job 0: machine 0 a second time"
    "negative|1 1\n0 -3|2: job 0: duration 1: -3 is no number from 0 to 100000"
    "short|2 1\n0 3\n|3: job 1: machine 1: missing"
    "long|1 1\n0 3\n7|3: 7: nothing more is expected"
    "empty||1: number of jobs: missing")
  string(REGEX MATCH "^([^|]*)[|]([^|]*)[|](.*)$" _ "${bad}")
  set(name "${CMAKE_MATCH_1}")
  set(message "${CMAKE_MATCH_3}")
  koru_example_input(bad_file jobshop_${name}.txt "${CMAKE_MATCH_2}")
  koru_example_test(jobshop.bad_${name} jobshop 2 ARGS "${bad_file}" EXPECT_ERROR "^jobshop: [^\n]*jobshop_${name}.txt:${message}\n$")
endforeach()
koru_example_arguments(jobshop file)
koru_example_test(jobshop.bad_seconds jobshop 2 ARGS --seconds 0 EXPECT_ERROR "^jobshop: 0 is no number from 1 to 1000000\n")

# --- factory ---
koru_example_test(factory.plan factory 0 ARGS "${data}/factory.csv"
  EXPECT "\n   saw [|][^|]*[|]\n.*\nA table: due 300, ends .*\n5 orders, 17 tasks, 5 machines: total tardiness 30, .*, proved best [|] ")
koru_example_test(factory.lateness factory 0 ARGS --quiet --lateness "${data}/factory.csv"
  EXPECT "^5 orders, 17 tasks, 5 machines: total tardiness [0-9]+, maximal lateness 15, proved best [|] ")
koru_example_test(factory.change factory 0 ARGS --quiet --change "${data}/factory_rush.csv" --fixed-until 100 "${data}/factory.csv"
  EXPECT "total tardiness 30, .*\n6 orders, 20 tasks, 5 machines: total tardiness [0-9]+, .*, proved best [|] .*\nmoved: task [0-9] of [a-z]+, [a-z0-9]+ [0-9]+ -> [a-z0-9]+ [0-9]+\n.*\n[0-9]+ of 17 tasks moved, 3 new\n$")
koru_example_test(factory.stopped factory 1 ARGS --quiet --fails 1 "${data}/factory.csv"
  EXPECT "^5 orders, 17 tasks, 5 machines: [^\n]*not proved best|no plan found")
set(factory_page "${CMAKE_CURRENT_BINARY_DIR}/inputs/factory.html")
koru_example_test(factory.page factory 0 ARGS --quiet --html "${factory_page}" "${data}/factory.csv"
  EXPECT "tardiness 30" WRITES "${factory_page}" EXPECT_WRITTEN "^<!doctype html>.*name: 'saw', breaks: .*name: 'table', due: 300, .*kind: 'oak', machine: .*</html>\n$")
koru_example_test(factory.page_nowhere factory 2 ARGS --quiet --html "${CMAKE_CURRENT_BINARY_DIR}" "${data}/factory.csv"
  EXPECT_ERROR "^factory: [^\n]*: ")
koru_example_input(small_file factory_small.csv "machine,m,3-5 # a break\n\norder,a,2\ntask,a,k,m:2\ntask,a,k,m:2")
koru_example_test(factory.break factory 0 ARGS - INPUT "${small_file}"
  EXPECT "\n +m [|]AA //AA[|]\n.*A a: due 2, ends 7, 5 late\n1 orders, 2 tasks, 1 machines: total tardiness 5, maximal lateness 5, proved best [|] ")
koru_example_input(late_file factory_late.csv "machine,m\norder,a,2\ntask,a,k,m:2\n")
koru_example_input(more_file factory_more.csv "task,a,k,m:1\n")
koru_example_test(factory.fixed factory 0 ARGS --quiet --change "${more_file}" --fixed-until 5 "${late_file}"
  EXPECT "total tardiness 4, maximal lateness 4, proved best [^\n]*\n0 of 1 tasks moved, 1 new\n$")
koru_example_test(factory.change_missing factory 2 ARGS --quiet --change "${CMAKE_CURRENT_BINARY_DIR}/inputs/missing.csv" "${late_file}"
  EXPECT "tardiness 0" EXPECT_ERROR "^factory: [^\n]*missing.csv: ")
set(start "machine,m\norder,a,9\n")
koru_example_fault(factory no_task "${start}" 3 "there is no task")
koru_example_fault(factory word "${start}tusk,a\n" 3 "tusk is none of machine, setup, order and task")
koru_example_fault(factory name "machine,a b'c\n" 1 "ab'c is no name of at most 23 letters, digits, _ and -")
koru_example_fault(factory again "machine,m\nmachine,m\n" 2 "machine m a second time")
koru_example_fault(factory order_again "${start}order,a,3\n" 3 "order a a second time")
koru_example_fault(factory break_order "machine,m,5-7,6-9\n" 1 "breaks must come one after the other")
koru_example_fault(factory break_back "machine,m,5-5\n" 1 "5 is no number from 6 to 10000")
koru_example_fault(factory break_sign "machine,m,5\n" 1 "5: - is missing")
koru_example_fault(factory no_machine "${start}task,a,k,saw:3\n" 3 "there is no machine saw")
koru_example_fault(factory two_ways "${start}task,a,k,m:3,m:4\n" 3 "machine m a second time")
koru_example_fault(factory no_order "${start}task,b,k,m:3\n" 3 "there is no order b")
koru_example_fault(factory no_time "${start}task,a,k,m:0\n" 3 "0 is no number from 1 to 10000")
koru_example_fault(factory empty_time "${start}task,a,k,m:\n" 3 " is no number from 1 to 10000")
koru_example_fault(factory short_task "${start}task,a,k\n" 3 "task: an order, a kind and a machine with a time are expected")
koru_example_fault(factory short_setup "setup,a,b\n" 1 "setup: two kinds and a time are expected")
koru_example_fault(factory short_order "order,a\n" 1 "order: a name and a due date are expected")
koru_example_arguments(factory file)

# --- rcpsp ---
foreach(size_makespan "12:22" "18:39")
  string(REPLACE ":" ";" pair "${size_makespan}")
  list(GET pair 0 size)
  list(GET pair 1 makespan)
  koru_example_test(rcpsp.${size} rcpsp 0 ARGS --quiet "${data}/rcpsp_${size}.sm"
    EXPECT "^[0-9]+ activities, [23] resources: makespan ${makespan}, proved shortest [|] ")
  koru_example_test(rcpsp.${size}_fast rcpsp 0 ARGS --quiet --fast "${data}/rcpsp_${size}.sm"
    EXPECT "^[0-9]+ activities, [23] resources: makespan ${makespan}, nothing shorter found [|] ")
endforeach()
koru_example_test(rcpsp.drawn rcpsp 0 INPUT "${data}/rcpsp_12.sm"
  EXPECT "Makespan 22 after [0-9.]* s\n.*    13 [|][ =]*[|]\n.*    R2 [|][ 0-9#]*[|]\n")
set(rcpsp_svg "${CMAKE_CURRENT_BINARY_DIR}/inputs/rcpsp.svg")
koru_example_test(rcpsp.svg rcpsp 0 ARGS --quiet --svg "${rcpsp_svg}" "${data}/rcpsp_12.sm"
  EXPECT "makespan 22" WRITES "${rcpsp_svg}" EXPECT_WRITTEN "^<svg .*Project: 12 activities, makespan 22<.*>resource 2<.*</svg>\n$")
file(READ "${data}/rcpsp_12.sm" small_project)
foreach(change
    "jobs|jobs \\(incl|tasks (incl|[0-9]+: \"jobs\" is missing"
    "activity|\n   3 |\n   4 |20: activity: 4 is no number from 3 to 3"
    "mode|\n   2        1|\n   2        2|19: mode: 2 is no number from 1 to 1"
    "successor|\n  13        1          1        14|\n  13        1          1        13|30: activity 13: successor 1: 13 is no number from 14 to 14"
    "section|REQUESTS/DURATIONS|REQUESTS|[0-9]+: \"REQUESTS/DURATIONS\" is missing")
  string(REGEX MATCH "^([^|]*)[|]([^|]*)[|]([^|]*)[|](.*)$" _ "${change}")
  set(name "${CMAKE_MATCH_1}")
  set(message "${CMAKE_MATCH_4}")
  string(REGEX REPLACE "${CMAKE_MATCH_2}" "${CMAKE_MATCH_3}" text "${small_project}")
  koru_example_input(bad_file rcpsp_${name}.sm "${text}")
  koru_example_test(rcpsp.bad_${name} rcpsp 2 ARGS "${bad_file}" EXPECT_ERROR "^rcpsp: [^\n]*rcpsp_${name}.sm:${message}\n$")
endforeach()
string(REGEX REPLACE "R 2\n +[0-9]+ +[0-9]+\n" "R 2\n 1 1\n" text "${small_project}")
koru_example_input(bad_file rcpsp_scarce.sm "${text}")
koru_example_test(rcpsp.bad_scarce rcpsp 2 ARGS "${bad_file}"
  EXPECT_ERROR "^rcpsp: [^\n]*rcpsp_scarce.sm:[0-9]+: activity [0-9]+ needs [0-9]+ of resource [12], and there are 1\n$")
string(SUBSTRING "${small_project}" 0 1500 text)
koru_example_input(bad_file rcpsp_cut.sm "${text}")
koru_example_test(rcpsp.bad_cut rcpsp 2 ARGS "${bad_file}" EXPECT_ERROR "^rcpsp: [^\n]*rcpsp_cut.sm:[0-9]+: ")
koru_example_test(rcpsp.empty rcpsp 2 EXPECT_ERROR "^rcpsp: stdin:1: \"jobs\" is missing\n$")
koru_example_arguments(rcpsp file)

# --- tour ---
koru_example_test(tour.towns tour 0 ARGS --towns 10
  EXPECT "^towns: 1 9 4 6 10 7 8 5 2 3\n2959 long \\(optimal\\) [|] [0-9]+ fails [|] [0-9.]+ s\n$")
koru_example_test(tour.knight tour 0 ARGS --knight 6 EXPECT "^   1  [^\n]*\n.*a round of 36 squares [|] 0 fails [|] ")
koru_example_test(tour.large_board tour 0 ARGS --quiet --knight 12 EXPECT "^a round of 144 squares [|] ")
koru_example_test(tour.odd_board tour 1 ARGS --knight 5 EXPECT "^no round trip: there is none\n$")
koru_example_test(tour.picture tour 0 ARGS --quiet --towns 6 --svg "${CMAKE_CURRENT_BINARY_DIR}/tour.svg"
  EXPECT "\\(optimal\\)" WRITES "${CMAKE_CURRENT_BINARY_DIR}/tour.svg" EXPECT_WRITTEN "^<svg .*</svg>\n$")
koru_example_test(tour.no_picture tour 2 ARGS --quiet --towns 4 --svg "${CMAKE_CURRENT_BINARY_DIR}/none/tour.svg"
  EXPECT_ERROR "^tour: [^\n]*tour.svg: ")
koru_example_test(tour.help tour 0 ARGS --help EXPECT "^usage: tour ")
koru_example_test(tour.bad_number tour 2 ARGS --towns 2 EXPECT_ERROR "^tour: 2 is no number from 3 to 60\n")

# --- crossword ---
set(words "${CMAKE_CURRENT_SOURCE_DIR}/data/words.txt")
koru_example_test(crossword.square crossword 0 ARGS --words "${words}" "${puzzles}/square4.grid"
  EXPECT "^G A V E\nO R A L\nL E S S\nD A T E\nfilled, 8 slots, [0-9]+ words [|] ")
koru_example_test(crossword.stairs crossword 0 ARGS --words "${words}" "${puzzles}/stairs.grid"
  EXPECT "^    E R A  \n.*filled, 10 slots, ")
koru_example_test(crossword.random crossword 0 ARGS --quiet --seed 3 --words "${words}" "${puzzles}/square4.grid"
  EXPECT "^filled, 8 slots, ")
koru_example_input(given_grid given.grid "gold\n....\n....\n....\n")
koru_example_test(crossword.given crossword 0 ARGS --words "${words}" "${given_grid}" EXPECT "^G O L D\nA R E A\n")
koru_example_input(long_grid long.grid "......\n")
koru_example_test(crossword.no_words crossword 1 ARGS --words "${words}" "${long_grid}"
  EXPECT "^the grid cannot be filled: no words fit\n$")
koru_example_test(crossword.needs_words crossword 2 ARGS "${puzzles}/square4.grid"
  EXPECT_ERROR "^crossword: --words is needed\n")
koru_example_input(bad_grid ragged.grid "....\n...\n")
koru_example_test(crossword.ragged crossword 2 ARGS --words "${words}" "${bad_grid}"
  EXPECT_ERROR "^crossword: [^\n]*ragged.grid:[12]: the rows are not of the same length\n$")
koru_example_input(bad_grid digit.grid "..1.\n")
koru_example_test(crossword.digit crossword 2 ARGS --words "${words}" "${bad_grid}"
  EXPECT_ERROR "^crossword: [^\n]*digit.grid:1: a cell is \"\\.\", \"X\" or a letter\n$")
koru_example_test(crossword.help crossword 0 ARGS --help EXPECT "^usage: crossword ")

# --- exams ---
koru_example_test(exams.small exams 0 ARGS --exams 8 --slots 6 --students 10
  EXPECT "^slot  1: .*slot  6: .*\nexams in a row: 3 \\(optimal\\) [|] ")
koru_example_test(exams.free exams 0 ARGS --quiet --exams 30 --slots 20 --choices 4 --seats 60
  EXPECT "^exams in a row: 0 \\(optimal\\) [|] ")
koru_example_test(exams.too_few exams 1 ARGS --slots 2 EXPECT "^no timetable: there are too few slots or seats\n$")
koru_example_test(exams.choices exams 2 ARGS --exams 3 --choices 4
  EXPECT_ERROR "^exams: 3 exams are too few to choose 4\n")
koru_example_test(exams.help exams 0 ARGS --help EXPECT "^usage: exams ")

# --- roster ---
koru_example_test(roster.drawn roster 0 ARGS --nurses 6 --days 7 --wishes 40
  EXPECT "^nurse  1  [.ELN]+\n.*nurse  6  [.ELN]+\nbroken wishes weigh 0 \\(optimal\\) [|] ")
koru_example_test(roster.quiet roster 0 ARGS --quiet --nurses 5 --days 3 --wishes 100
  EXPECT "^broken wishes weigh 23 \\(optimal\\) [|] [0-9]+ fails, ")
koru_example_test(roster.month roster 0 ARGS --quiet --seconds 60 EXPECT "^broken wishes weigh 1 \\(optimal\\) [|] ")
koru_example_test(roster.help roster 0 ARGS --help EXPECT "^usage: roster ")
koru_example_test(roster.bad_option roster 2 ARGS --fast EXPECT_ERROR "^roster: unknown option --fast\n")
koru_example_test(roster.bad_number roster 2 ARGS --days 1 EXPECT_ERROR "^roster: 1 is no number from 2 to 56\n")

# --- timetable ---
koru_example_test(timetable.drawn timetable 0 ARGS --classes 2 --seconds 60
  EXPECT "^class  1  [MENHGAS. ]+\nclass  2  [MENHGAS. ]+\ndisliked hours cost 0, at least 0 \\(optimal\\) [|] ")
koru_example_test(timetable.quiet timetable 0 ARGS --quiet --classes 1 --rooms 1 EXPECT "^disliked hours cost 0, at least 0 ")
koru_example_test(timetable.school timetable 0 ARGS --quiet --seconds 1 EXPECT "^disliked hours cost [0-9]+, at least 0 ")
koru_example_test(timetable.help timetable 0 ARGS --help EXPECT "^usage: timetable ")
koru_example_test(timetable.bad_number timetable 2 ARGS --classes 0
  EXPECT_ERROR "^timetable: 0 is no number from 1 to 12\n")

# --- configurator ---
koru_example_input(bicycle bicycle.txt "limit 500\ncheck\nundo\ncheapest\nframe race\nrack light\nundo\nundo\n\nquit\nshow\n")
koru_example_test(configurator.bicycle configurator 0 INPUT "${bicycle}"
  EXPECT "^  frame   city touring race mountain\n.*  price   440 to 1740\n  frame   city\n  wheels  28\n  tyres   slick road knobby studded\n  gears   hub-3\n.*\n1 choice left out\n  frame   city\n  wheels  28\n  tyres   slick road knobby\n.*\n450: city 28 slick hub-3 rim none\n.*\nthat does not fit what was chosen\n.*  price   440 to 1740\nnothing has been chosen\n$")
koru_example_input(impossible impossible.txt "limit 449\ncheapest\nlimit\n")
koru_example_test(configurator.impossible configurator 2 INPUT "${impossible}"
  EXPECT "that does not fit what was chosen\n450: city 28 slick hub-3 rim none\n$" EXPECT_ERROR "^configurator: limit : not understood\n$")
koru_example_test(configurator.help configurator 0 ARGS --help EXPECT "^usage: configurator ")
koru_example_test(configurator.argument configurator 2 ARGS 8 EXPECT_ERROR "^configurator: 8 is not expected\n")

# --- the page ---
find_package(Python3 REQUIRED COMPONENTS Interpreter)
if(NOT CMAKE_CROSSCOMPILING)
  add_test(NAME example.gallery
           COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_SOURCE_DIR}/check_gallery.py"
                   "${CMAKE_CURRENT_SOURCE_DIR}/README.md" "${CMAKE_CURRENT_BINARY_DIR}")
  set_tests_properties(example.gallery PROPERTIES LABELS examples TIMEOUT 120)
endif()
