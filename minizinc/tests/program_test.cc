// SPDX-License-Identifier: MIT
// The program as MiniZinc calls it. A file of models/ has its options in the first line, and what is to be printed in
// lines that begin with "%> ".
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <sstream>

#include "minizinc/tests/support.h"

namespace koru::fzn {
namespace {

namespace fs = std::filesystem;

std::string expectedOf(const fs::path &file, std::string &options) {
  std::ifstream in(file);
  std::string line, expected;
  std::getline(in, options);
  options.erase(0, std::string("% options:").size());
  while (std::getline(in, line)) {
    if (line.starts_with("%> ")) expected += line.substr(3) + "\n";
  }
  return expected;
}

TEST(FznProgram, PrintsWhatTheModelsSay) {
  int files = 0;
  for (const fs::directory_entry &entry : fs::directory_iterator(KORU_FZN_MODELS)) {
    std::string options;
    const std::string expected = expectedOf(entry.path(), options);
    const Ran ran = solveFile(options, entry.path().string());
    EXPECT_EQ(ran.output, expected) << entry.path();
    EXPECT_EQ(ran.status, 0) << entry.path();
    ++files;
  }
  EXPECT_GE(files, 16);
}

// Each is said by a line of the file when it has no place in a model.
TEST(FznProgram, ExplainsWhyThereIsNoSolution) {
  const auto explained = [](const std::string &text) { return solve("--explain", text).output; };
  EXPECT_EQ(explained("var 1..2: x;\nvar 1..2: y;\nvar 1..2: z;\nconstraint int_ne(x,y);\nconstraint int_ne(y,z);\n"
                      "constraint int_le(x,y);\nconstraint int_ne(x,z);\nsolve minimize x;"),
            "=====UNSATISFIABLE=====\n% no solution, because of 3 constraints at 3 lines; 16 checks\n"
            "% m.fzn:4    constraint int_ne(x,y);\n%   int_ne\n% m.fzn:5    constraint int_ne(y,z);\n%   int_ne\n"
            "% m.fzn:7    constraint int_ne(x,z);\n%   int_ne\n");
  EXPECT_EQ(explained("var 1..2: x;\nvar {1,3}: y;\nconstraint bool_eq(true,true);\nconstraint int_eq(x,y);\n"
                      "constraint int_le(2,x);\nsolve satisfy;"),
            "=====UNSATISFIABLE=====\n% no solution, because of 3 constraints at 3 lines; 14 checks\n"
            "% m.fzn:4    constraint int_eq(x,y);\n%   int_eq\n% m.fzn:5    constraint int_le(2,x);\n%   int_le\n"
            "% domains of variables\n");
  EXPECT_EQ(explained("var 1..2: x;\nsolve satisfy;"), "----------\n");
  EXPECT_EQ(explained("var 1..2: x = 3;\nsolve satisfy;"),
            "=====UNSATISFIABLE=====\n"
            "% no solution, because of the domains of the variables and what cannot be left out; 3 checks\n");
}

// Without the last constraint the model is hard: no answer within some fails is as good as one that there is a
// solution.
TEST(FznProgram, ExplainsWithLimits) {
  std::string text;
  for (int i = 0; i < 12; ++i) text += "var 1..11: x" + std::to_string(i) + ";\n";
  for (int i = 0; i < 12; ++i)
    for (int j = 0; j < i; ++j) text += "constraint int_ne(x" + std::to_string(i) + ",x" + std::to_string(j) + ");\n";
  text += "constraint int_lin_le([1,1],[x0,x1],1);\nsolve satisfy;";
  for (const char *const options : {"--explain", "-t 20000 --explain"}) {
    const Ran ran = solve(options, text);
    EXPECT_NE(ran.output.find("because of 1 constraint at 1 line, perhaps fewer; "), std::string::npos) << ran.output;
  }
  EXPECT_NE(solve("-t 1 --explain", text).output.find("=="), std::string::npos);
}

TEST(FznProgram, RefusesWhatItDoesNotKnowWithOneLine) {
  const auto refusal = [](const std::string &text) {
    const Ran ran = solve("", text);
    EXPECT_EQ(ran.status, 1) << text;
    return ran.output;
  };
  EXPECT_EQ(refusal("var 1..2: x;\nconstraint int_lo(x,1);\nsolve satisfy;"),
            "m.fzn:2:12: \"int_lo\" is no constraint that is known\n");
  EXPECT_EQ(refusal("var 1..2: x;\nconstraint int_le(x);\nsolve satisfy;"),
            "m.fzn:2:12: \"int_le\" takes 2 arguments\n");
  EXPECT_EQ(refusal("var 1..2: x;\nconstraint int_le(x,{1});\nsolve satisfy;"),
            "m.fzn:2:21: argument 2 of \"int_le\" is to be an int or bool\n");
  EXPECT_EQ(refusal("var 1..2: x;\nconstraint int_lin_le([1,x],[x,x],1);\nsolve satisfy;"),
            "m.fzn:2:23: argument 1 of \"int_lin_le\" is to be an array of constants\n");
  EXPECT_EQ(refusal("var 1..2: x;\nconstraint int_lin_le([1],[x,x],1);\nsolve satisfy;"),
            "m.fzn:2:12: there are not as many coefficients as variables\n");
  EXPECT_EQ(refusal("var 1..2: x;\nconstraint int_lin_le([9223372036854775807,1],[2,x],1);\nsolve satisfy;"),
            "m.fzn:2:12: the constants of this sum leave 64 bits\n");
  EXPECT_EQ(refusal("var 1..2: x;\nconstraint array_int_element(x,[1,5000000000],x);\nsolve satisfy;"),
            "m.fzn:2:12: a number beyond 32 bits, which \"array_int_element\" does not take\n");
  EXPECT_EQ(refusal("var 1..2: x;\nconstraint int_min(x,5000000000,x);\nsolve satisfy;"),
            "m.fzn:2:22: a number beyond 32 bits, which this constraint does not take\n");
  EXPECT_EQ(refusal("solve minimize {1,2};"), "m.fzn:1:16: the objective is to be an int or bool\n");
  EXPECT_EQ(refusal("array [1..1] of int: a = [1];\nsolve minimize a;"),
            "m.fzn:2:16: the objective is to be an int or bool\n");
  EXPECT_EQ(refusal("solve minimize 1.5;"), "m.fzn:1:16: floats are not supported\n");
}

TEST(FznProgram, RefusesOptionsThatItDoesNotKnow) {
  EXPECT_EQ(shell(std::string(KORU_FZN) + " -x 1 m.fzn").output, "fzn-koru: option -x is not known\n");
  EXPECT_EQ(shell(std::string(KORU_FZN) + " -t soon m.fzn").output, "fzn-koru: option -t takes a number, not soon\n");
  EXPECT_EQ(shell(std::string(KORU_FZN) + " -s").output, "fzn-koru: a FlatZinc file is to be named\n");
  EXPECT_EQ(shell(std::string(KORU_FZN) + " a.fzn b.fzn").output, "fzn-koru: two files are named\n");
  EXPECT_EQ(shell(std::string(KORU_FZN) + " --restart often a.fzn").output,
            "fzn-koru: --restart takes none, constant, luby or geometric\n");
  const Ran missing = shell(std::string(KORU_FZN) + " /nowhere/a.fzn");
  EXPECT_EQ(missing.output, "fzn-koru: /nowhere/a.fzn cannot be read\n");
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(shell(std::string(KORU_FZN) + " --help").status, 0);
}

TEST(FznProgram, WarnsOfARangeThatItChooses) {
  const Ran ran = solve("", "var int: x :: output_var;\nconstraint int_lin_eq([2],[x],10);\nsolve satisfy;");
  EXPECT_EQ(ran.output,
            "m.fzn:1:10: warning: \"x\" has no domain; such variables range over -10000000..10000000, or 32 bits\n"
            "x = 5;\n----------\n");
}

TEST(FznProgram, TellsStatisticsUnderTheStandardNames) {
  const Ran ran = solve("-s", "var 1..3: x; var 1..3: y; constraint int_lt(x,y); solve minimize y;");
  for (const char *key : {"nodes", "failures", "restarts", "variables", "propagators", "propagations", "peakDepth",
                          "objective=2", "objectiveBound=2", "initTime", "solveTime", "nSolutions", "peakMem"}) {
    EXPECT_NE(ran.output.find("%%%mzn-stat: " + std::string(key)), std::string::npos) << key << "\n" << ran.output;
  }
  EXPECT_TRUE(ran.output.ends_with("%%%mzn-stat-end\n"));
}

// A search that comes to no end: pigeons without holes enough. An objective besides has a first solution at once, where
// the pigeons may stay away, and no better one.
std::string pigeons(int n, bool mayStayAway) {
  std::string text = "var 0..1: away :: output_var;\n", all = "away";
  for (int i = 0; i < n; ++i) {
    text += "var 1.." + std::to_string(n - 1) + ": x" + std::to_string(i) + ";\n";
    all += ",x" + std::to_string(i);
  }
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) {
      const std::string pair = "x" + std::to_string(i) + ",x" + std::to_string(j);
      const std::string different = "d" + std::to_string(i * n + j);
      text += "var bool: " + different + ";\nconstraint int_ne_reif(" + pair + "," + different + ");\n";
      text += "constraint bool_clause([" + different + (mayStayAway ? ",a" : "") + "],[]);\n";
    }
  }
  text = (mayStayAway ? "var bool: a;\n" : "") + text;
  if (mayStayAway) text += "constraint bool2int(a,away);\n";
  return text + "solve :: int_search([" + all + "],input_order,indomain_max,complete) " +
         (mayStayAway ? "minimize away;\n" : "satisfy;\n");
}

double secondsOf(const std::string &options, const std::string &text, std::string &output) {
  const auto start = std::chrono::steady_clock::now();
  output = solve(options, text).output;
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(FznProgram, EndsAtTheTimeLimit) {
  std::string output;
  const double seconds = secondsOf("-s -t 300", pigeons(20, false), output);
  EXPECT_TRUE(output.starts_with("=====UNKNOWN=====\n%%%mzn-stat: nodes=")) << output;
  EXPECT_GE(seconds, 0.29);
  EXPECT_LT(seconds, 2.0);  // 0.4 on a machine with nothing else to do
}

TEST(FznProgram, SearchesInSeveralProcesses) {
  const std::string ruler = KORU_FZN_MODELS "/free_turns.fzn";
  const Ran best = solveFile("-p 3 -s", ruler);
  EXPECT_TRUE(best.output.starts_with("m8 = 34;\n----------\n==========\n%%%mzn-stat: nodes=")) << best.output;
  EXPECT_TRUE(best.output.ends_with("%%%mzn-stat-end\n"));
  EXPECT_EQ(solveFile("-p 2", KORU_FZN_MODELS "/unsatisfiable.fzn").output, "=====UNSATISFIABLE=====\n");
  const Ran first = solveFile("-p 2", KORU_FZN_MODELS "/queens_first.fzn");
  EXPECT_TRUE(first.output.ends_with("]);\n----------\n")) << first.output;
  const Ran all = solveFile("-a -p 2", KORU_FZN_MODELS "/hidden.fzn");
  EXPECT_EQ(all.output, "x = 1;\n----------\n==========\n");
  const Ran refused = solve("-p 2", "constraint nothing(1);\nsolve satisfy;");
  EXPECT_EQ(refused.output, "m.fzn:1:12: \"nothing\" is no constraint that is known\n");
  EXPECT_EQ(refused.status, 1);
}

TEST(FznProgram, EndsSeveralProcessesAtTheTimeLimit) {
  std::string output;
  EXPECT_LT(secondsOf("-p 2 -t 300", pigeons(20, true), output), 3.0);
  EXPECT_EQ(output, "away = 1;\n----------\n");
}

// Seconds of wall clock from a signal, or the time limit, to the end of the process, and what it has written by then.
double secondsToEnd(const std::string &text, int signal, std::string &output) {
  const std::string file = (fs::temp_directory_path() / ("koru_fzn_end_" + std::to_string(getpid()) + ".fzn")).string();
  std::ofstream(file) << text;
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    dup2(ends[1], STDERR_FILENO);
    execl(KORU_FZN, KORU_FZN, "-s", "-t", signal == 0 ? "250" : "100000", file.c_str(), static_cast<char *>(nullptr));
    _exit(1);
  }
  close(ends[1]);
  usleep(250'000);
  const auto start = std::chrono::steady_clock::now();
  if (signal != 0) kill(child, signal);
  char block[4096];
  output.clear();
  for (ssize_t n = 0; (n = read(ends[0], block, sizeof block)) > 0;) output.append(block, static_cast<std::size_t>(n));
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  close(ends[0]);
  fs::remove(file);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The quickest of some tries, as a machine with other work may let a process wait for longer than that.
void expectQuickEnd(const std::string &text, const std::string &begin) {
  for (const int signal : {SIGTERM, SIGINT, 0}) {
    double least = 1e9;
    for (int i = 0; i < 10 && least > 0.1; ++i) {
      std::string output;
      least = std::min(least, secondsToEnd(text, signal, output));
      EXPECT_TRUE(output.starts_with(begin)) << output;
      EXPECT_TRUE(output.ends_with("%%%mzn-stat-end\n")) << output;
    }
    EXPECT_LE(least, 0.1) << "signal " << signal;
  }
}

TEST(FznProgram, EndsASearchWithin100Milliseconds) {
  expectQuickEnd(pigeons(20, true), "away = 1;\n----------\n%%%mzn-stat: nodes=");
}

// Bounds that rise in turns: one propagation, which comes to no end in time, before the search begins.
TEST(FznProgram, EndsAPropagationWithin100Milliseconds) {
  expectQuickEnd(
      "var -2000000000..2000000000: x;\nvar -2000000000..2000000000: y;\nconstraint int_lt(x,y);\n"
      "constraint int_lt(y,x);\nsolve satisfy;\n",
      "=====UNKNOWN=====\n%%%mzn-stat");
}

// More than can be undone and freed in the time.
TEST(FznProgram, EndsALargeModelWithin100Milliseconds) {
  std::string more;
  for (int i = 0; i < 100000; ++i) {
    const std::string name = std::to_string(i);
    more += "var 1..19: y" + name + ";\n";
    if (i % 2 == 1) more += "constraint int_ne(y" + name + ",y" + std::to_string(i - 1) + ");\n";
  }
  expectQuickEnd(more + pigeons(20, false), "=====UNKNOWN=====\n%%%mzn-stat");
}

TEST(FznProgram, GoesOnAfterItWasStoppedForAMoment) {
  const std::string file = (fs::temp_directory_path() / "koru_fzn_stopped.fzn").string();
  std::ofstream(file) << pigeons(20, true);
  const std::string script =
      "sh -c '\"$@\" & pid=$!; sleep 0.2; kill -STOP $pid; sleep 0.05; kill -CONT $pid; sleep 0.3;"
      " kill $pid && echo ended by a signal; wait $pid' sh ";
  for (const std::string limit : {"", "-t 100000 ", "-t 9000000000000000000 "}) {
    const Ran ran = shell(script + KORU_FZN + " " + limit + file);
    EXPECT_NE(ran.output.find("ended by a signal\n"), std::string::npos) << limit << ran.output;
    EXPECT_EQ(ran.status, 0) << limit;
  }
  fs::remove(file);
}

// The signal comes when the first solution has been held for a while.
TEST(FznProgram, EndsAtASignalWithTheBestSolution) {
  for (const std::string signal : {"INT", "TERM"}) {
    const std::string command = "sh -c 'timeout -s " + signal + " 1 \"$@\"' sh ";
    const std::string file = (fs::temp_directory_path() / "koru_fzn_pigeons.fzn").string();
    std::ofstream(file) << pigeons(20, true);
    const Ran ran = shell(command + KORU_FZN + " -s " + file);
    EXPECT_TRUE(ran.output.starts_with("away = 1;\n----------\n%%%mzn-stat: nodes=")) << ran.output;
    EXPECT_TRUE(ran.output.ends_with("%%%mzn-stat-end\n"));
    fs::remove(file);
  }
}

}  // namespace
}  // namespace koru::fzn
