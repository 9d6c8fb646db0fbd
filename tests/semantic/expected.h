// SPDX-License-Identifier: MIT
// What the quick tests must see of each case. Of the states at least some two thirds of what they do see, so that a
// case that has quietly become smaller is noticed. Of the handler calls exactly these, counted and digested: they are
// the same on every platform, and from version to version. A change that is meant takes over the new numbers, and says
// in its commit what hosts will see of it.
//
// To find the call that differs, run test_semantic in both versions with KORU_CALLS=1, compare the numbers after each
// posting, and run the first posting that differs alone, with KORU_POSTING set as well.
#pragma once

#include <string_view>

#include "semantic/harness/calls.h"

namespace koru::test::brute {

struct Expected {
  const char *name;
  long leastStates;
  Calls calls;
  bool pinned() const { return name[0] != '\0'; }
};

inline constexpr Expected kExpected[] = {
    {"EQofAnInt", 1500, {0, 0}},
    {"NEQofAnInt", 8400, {618, 0x75c1f80bf1aec2d5}},
    {"LEofAnInt", 6000, {388, 0x8f5be793fb99ca73}},
    {"LTofAnInt", 4800, {296, 0x3bd08e0787cbff47}},
    {"GEofAnInt", 4800, {318, 0x8e98b431310b9897}},
    {"GTofAnInt", 3700, {244, 0x111fc457bffa8c5f}},
    {"Eq", 71000, {37806, 0x578c980a648b6bf5}},
    {"Neq", 120000, {101081, 0x02d3de2ec7b98ce7}},
    {"Le", 120000, {76338, 0x4c1c369ff2d8ecaf}},
    {"Lt", 81000, {56829, 0x8e6084f548a7ba91}},
    {"Ge", 110000, {73967, 0xd90332aec82dfeea}},
    {"Gt", 78000, {54175, 0x3a4e9cda859888cb}},
    {"IfEq", 89000, {48770, 0x111d58235ee01c95}},
    {"IfNeq", 97000, {52783, 0xc98166e170413dad}},
    {"InArray", 43000, {2406, 0x77541b9a1390bf47}},
    {"NotInArray", 46000, {2586, 0xf02a784b00a6963a}},
    {"InInterval", 22000, {1310, 0x946998034a723cd8}},
    {"NotInInterval", 55000, {3868, 0xad92f67617da0976}},
    {"Add", 90000, {124048, 0xcf5ec9038041414a}},
    {"Sub", 89000, {119517, 0x3ab341a99a032132}},
    {"Abs", 510000, {658379, 0x814d6e741126db34}},
    {"Mul", 58000, {66594, 0xeee2a5bb563ba722}},
    {"VMul", 160000, {264529, 0x1e379128fe1572ea}},
    {"Div", 78000, {202692, 0x55df0cf5036e27d2}},
    {"VDiv", 77000, {238107, 0x46863b2b413a5675}},
    {"ArithmeticNested", 38000, {107848, 0x8bb31b205ad37c25}},
    {"VAdd", 360000, {456906, 0xc07a66aa97c8917a}},
    {"VSub", 340000, {759682, 0x6bf83773d72a2c89}},
    {"Sigma", 360000, {456906, 0xc07a66aa97c8917a}},
    {"ScalProd", 740000, {939802, 0x0d9c543ec1ea2fc9}},
    {"VScalProd", 95000, {119736, 0xe466627cd43a7dd4}},
    {"ReifEq", 50000, {35518, 0x73e706e1c26cad50}},
    {"ReifNeq", 51000, {35854, 0xb9f2dfef79cb37a6}},
    {"ReifLt", 51000, {34986, 0x754a9c548b15d203}},
    {"ReifLe", 50000, {34429, 0x0deb23eafbc2eb3e}},
    {"ReifGt", 51000, {34409, 0xaa1b9e7110e70c1c}},
    {"ReifGe", 50000, {34917, 0xe75ea4ff12a87d57}},
    {"ReifEQofAnInt", 260000, {61082, 0xb2a2e22ea4513183}},
    {"ReifNEQofAnInt", 260000, {61855, 0x436f2a5042df1074}},
    {"ReifLTofAnInt", 250000, {72360, 0x59c6a80d8970a7cd}},
    {"ReifLEofAnInt", 250000, {61269, 0x0e86f76d469f4e00}},
    {"ReifGTofAnInt", 250000, {60854, 0x3acee87d503ffd6a}},
    {"ReifGEofAnInt", 250000, {71710, 0xd4f3e87f2c4ff6ff}},
    {"ReifNested", 31000, {40467, 0x45e3a4ebf5d85ab3}},
    {"AllNeq", 110000, {113949, 0x24af81985053be1c}},
    {"Occur", 190000, {122629, 0x062ee1060e5bb76f}},
    {"OccurConstraints", 240000, {140750, 0x684960cf7506219c}},
    {"OccurDomain", 200000, {128153, 0x8acb55f2f3379192}},
    {"Min", 280000, {271755, 0x0c213a3d2d272865}},
    {"VMin", 280000, {271755, 0x0c213a3d2d272865}},
    {"Max", 290000, {297211, 0xff90477105b6d134}},
    {"VMax", 290000, {297211, 0xff90477105b6d134}},
    {"VarElementOnTheWayDown", 10000, {3477, 0x9fbd53d0f744f19b}},
    {"Element", 270000, {194585, 0x76debe89defef864}},
    {"ElementOfALongTable", 170000, {278598, 0x3b28fc83d1d8380a}},
    {"ElementsThatAgree", 19000, {26255, 0x0b4c2a19f7834ae4}},
    {"Index", 150000, {129838, 0x109dd65e7da88a33}},
    {"VarElement", 260000, {221958, 0xd44e5942d2560153}},
    {"VarElementRange", 260000, {223461, 0x003bd2e58a90ab14}},
    {"RegularOfSmallAutomata", 45000, {19495, 0x8484dd53f876a436}},
    {"Regular", 100000, {117596, 0xffee62a86cccc254}},
    {"RegularOfLongerWords", 9300, {8337, 0x8f92e2d7a2598071}},
    {"CumulativeOfOneTask", 360000, {254269, 0x4996e0ea7cd43331}},
    {"Cumulative", 62000, {35301, 0x8139e217c7e25bf3}},
    {"CumulativeOfThreeTasks", 98000, {22121, 0xe1dee1095a315a5e}},
    {"DisjunctiveOfTwoTasks", 73000, {68502, 0xdd75d9ad531d1ea1}},
    {"Disjunctive", 110000, {88732, 0xc5a1cbc1a9d5cb15}},
    {"NoGoodSet", 88000, {99994, 0x6093c807e5d43de1}},
    {"EventAllKnown", 230000, {174906, 0xf5b5f7b9280fcae8}},
    {"EventKnown", 170000, {473098, 0x2f0ca6c0191de018}},
    {"EventNewMinNewMax", 31000, {73181, 0xc68d49d6b7b6b0f5}},
    {"EventNeq", 19000, {65144, 0x1d9cfa3c9680fea3}},
    {"EventConflict", 11000, {5990, 0xead95fe0b7964ca6}},
    {"Clause", 190000, {36924, 0x683ece549aeaf57e}},
    {"ClauseIff", 550000, {172282, 0xabe34c32754affdd}},
    {"ClauseIf", 940000, {134751, 0xafe06ad1c8c11c2d}},
    {"ReifClause", 240000, {95259, 0xb8989e998879538d}},
    {"EqIff", 52000, {44793, 0xe719012ddee82892}},
    {"EqIf", 62000, {53891, 0x4546735581df3c76}},
    {"NeqIff", 49000, {43078, 0xa042d70c37f23f3f}},
    {"NeqIf", 72000, {58911, 0x4ae79acb810dc7a5}},
    {"LeIff", 48000, {41013, 0x29cd0708b453b2af}},
    {"LeIf", 70000, {59477, 0xd586baca20b08f66}},
    {"LtIff", 53000, {45964, 0x38c9a4d516127b6e}},
    {"LtIf", 64000, {52567, 0xfaf7e7e08903c914}},
    {"GeIff", 47000, {41173, 0x6432c3e753e45324}},
    {"GeIf", 70000, {59422, 0x5f6043c0ec4822b2}},
    {"GtIff", 53000, {45843, 0x2ba3f2f4827457f1}},
    {"GtIf", 64000, {52586, 0xc1210c5ba242e18d}},
    {"EQIffofAnInt", 250000, {62789, 0xf770738083b850e1}},
    {"EQIfofAnInt", 280000, {71145, 0x3d9deade79ee5f99}},
    {"NEQIffofAnInt", 170000, {33712, 0x082272ee02b8eab1}},
    {"NEQIfofAnInt", 330000, {91800, 0xe25baf365656385b}},
    {"LEIffofAnInt", 190000, {40772, 0xdd2b30a17958b7aa}},
    {"LEIfofAnInt", 310000, {85292, 0x6ba90cb9e5b5a2b1}},
    {"LTIffofAnInt", 210000, {48060, 0x14dbac593fc70e1a}},
    {"LTIfofAnInt", 300000, {80312, 0x799e89aa26fcfb35}},
    {"GEIffofAnInt", 190000, {45453, 0x99c7108a39dc7f7b}},
    {"GEIfofAnInt", 310000, {82387, 0xe8b5fc45f08269cf}},
    {"GTIffofAnInt", 220000, {50611, 0x70f4f66dea94140f}},
    {"GTIfofAnInt", 300000, {75487, 0xa1435639bf22a475}},
    {"InArrayIff", 800000, {277207, 0x9338bc0aa78fbf73}},
    {"InArrayIf", 980000, {352056, 0x660b40673164d155}},
    {"NotInArrayIff", 630000, {217321, 0x5d45962d30e8ec08}},
    {"NotInArrayIf", 1000000, {376777, 0xb1a299676d059b72}},
    {"InIntervalIff", 740000, {285480, 0x60bdbd93045162c2}},
    {"InIntervalIf", 980000, {377384, 0x3f3eb49fc94eefab}},
    {"NotInIntervalIff", 660000, {247359, 0x8c07d6faabb56f2c}},
    {"NotInIntervalIf", 1000000, {388091, 0x71b0a2d2fd31072f}},
    {"Linear", 440000, {215188, 0x7afc3b6ea407a07d}},
    {"LinearOfManyTerms", 100000, {31975, 0xa5e3b4fe9e4b11e4}},
    {"LinearIff", 1000000, {833800, 0x1b8be787c10866b0}},
    {"LinearIf", 1300000, {607176, 0x7dbd4523eb55b04e}},
    {"ReifLinear", 480000, {482778, 0x723fa79b5e8c8e45}},
};

// Of a case that is not in the table some states, and no matter which calls.
inline Expected expectedOf(std::string_view name) {
  for (const Expected &row : kExpected)
    if (name == row.name) return row;
  return {"", 2000, {}};
}

}  // namespace koru::test::brute
