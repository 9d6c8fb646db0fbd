// SPDX-License-Identifier: MIT
// Rows of the table: life, errors, variables, choice points, user-defined constraints, profiler, output, the harness.
#include "traces/calls.h"

namespace koru::traces {
namespace {

void start(Machine &m, const Line &) { m.start(); }
void end(Machine &m, const Line &) { m.end(); }

void park(Machine &m, const Line &line) { m.parkSolver(line); }
void attach(Machine &m, const Line &line) { m.attachSolver(line); }

void setHandler(Machine &m, const Line &line) {
  const int code = line.args[0].number;
  const CSerrHandler handler = Scripted<CSerrHandler>::slot(line.args[1].number);
  m.answer(line, cs_setErrHandler(code, handler, &m) == handler);
}

// What a set is told of its end must stay possible, so that its number is taken back.
void createSet(Machine &m, const Line &line) {
  Reader in(m, line);
  CSint **array = in.next<CSint **>();
  const int size = in.next<int>();
  const auto filter = in.next<CSnoGoodFilter>();
  const int most = in.next<int>();
  m.answer(line, cs_createNoGoodSet(array, size, filter, most, Scripted<CSnoGoodRelease>::slot(0), &m));
}

void addNoGood(Machine &m, const Line &line) {
  Reader in(m, line);
  CSnoGoodSet *set = in.next<CSnoGoodSet *>();
  const Arg &indexes = in.take();
  const Arg &methods = in.take();
  const Arg &values = in.take();
  std::vector<CSvalueSelection> decisions;
  for (std::size_t i = 0; i < std::min({indexes.list.size(), methods.list.size(), values.list.size()}); ++i)
    decisions.push_back({methods.list[i], values.list[i]});
  const int n = std::min(in.take().number, static_cast<int>(decisions.size()));
  decisions.push_back({});
  cs_addNoGood(set, indexes.list.data(), decisions.data(), n);
}

void writeFile(Machine &m, const Line &line) {
  static const char *const paths[] = {"/dev/null", "/no/such/folder/profile", ""};
  const auto at = static_cast<unsigned>(line.args[1].number) % std::size(paths);
  cs_profilerWriteFile(m.profiler(line.args[0].number), paths[at]);
}

// Format 0 to 7 with a variable, an array and a number.
struct Printed {
  int format;
  CSint *v;
  CSint **array;
  int size;
  int number;
  Printed(Machine &m, const Line &line)
      : format(line.args[0].number & 7),
        v(m.variable(line.args[1].number)),
        array(m.array(line.args[2].list)),
        size(static_cast<int>(line.args[2].list.size())),
        number(line.args[3].number) {}

  template <class Print>
  void with(Print print) const {
    if (format == 0) return print("%D\n", v);
    if (format == 1) return print("<%T>\n", v);
    if (format == 2) return print("%A.\n", array, size);
    if (format == 3) return print("%5d|%-6x|%s\n", number, static_cast<unsigned>(number), "text");
    if (format == 4) return print("100%% %n %q %");
    if (format == 5) return print("%T and %D, %A %*d%%\n", v, v, array, size, 4, number);
    if (format == 6) return print("%ld %hhd %c %.3f %p\n", long{number}, number, 'c', number / 4.0, nullptr);
    return print("\n");
  }
};

void printOut(Machine &m, const Line &line) {
  Printed(m, line).with([](auto... args) { cs_printf(args...); });
}
void printScratch(Machine &m, const Line &line) {
  std::FILE *file = m.scratch();
  Printed(m, line).with([=](auto... args) { cs_fprintf(file, args...); });
}

void script(Machine &m, const Line &line) { m.defineScript(line); }
void failing(Machine &m, const Line &line) { m.failAllocations(line.args[0].number, line.args[1].number != 0); }
void solve(Machine &m, const Line &) { m.solve(); }

void freeNoDomain(Machine &, const Line &) { cs_freeDomain(nullptr); }
void deleteProfiler(Machine &m, const Line &line) { m.deleteProfiler(line.args[0].number); }

using enum Group;

const Row kRows[] = {
    {"cs_init", '-', "", kLife, 1, start},
    {"cs_end", '-', "", kLife, 1, end},
    {"cs_getVersion", 't', "", kQuery, 1, call<cs_getVersion>},
    {"cs_setErr", 'b', "i", kLife, 1, call<cs_setErr>},
    {"cs_getErr", 'b', "", kQuery, 2, call<cs_getErr>},
    {"cs_initErr", '-', "", kLife, 2, call<cs_initErr>},
    {"cs_setErrHandler", 'b', "is", kLife, 3, setHandler},
    {"cs_detachSolver", 'b', "", kLife, 0, park},
    {"cs_attachSolver", 'b', "", kLife, 0, attach},

    {"cs_createCSint", 'v', "ii", kCreate, 10, call<cs_createCSint>},
    {"CSINT", 'v', "i", kCreate, 2, call<CSINT>},
    {"cs_createNamedCSint", 'v', "iit", kCreate, 2, call<cs_createNamedCSint>},
    {"cs_createCSintArray", 'a', "iii", kCreate, 2, call<cs_createCSintArray>},
    {"cs_createCSintFromDomain", 'v', "kn", kCreate, 5, call<cs_createCSintFromDomain>},
    {"cs_setName", '-', "vt", kOutput, 3, call<cs_setName>},
    {"cs_getName", 't', "v", kQuery, 2, call<cs_getName>},
    {"cs_isFree", 'b', "v", kQuery, 2, call<cs_isFree>},
    {"cs_isInstantiated", 'b', "v", kQuery, 2, call<cs_isInstantiated>},
    {"cs_getMin", 'b', "v", kQuery, 2, call<cs_getMin>},
    {"cs_getMax", 'b', "v", kQuery, 2, call<cs_getMax>},
    {"cs_getNbElements", 'b', "v", kQuery, 2, call<cs_getNbElements>},
    {"cs_getNbConstraints", 'b', "v", kQuery, 2, call<cs_getNbConstraints>},
    {"cs_getValue", 'b', "v", kQuery, 2, call<cs_getValue>},
    {"cs_getNextValue", 'b', "vi", kQuery, 2, call<cs_getNextValue>},
    {"cs_getPreviousValue", 'b', "vi", kQuery, 2, call<cs_getPreviousValue>},
    {"cs_isIn", 'b', "vi", kQuery, 2, call<cs_isIn>},
    {"cs_getDomain", 'd', "v", kQuery, 3, call<cs_getDomain>},
    {"cs_freeDomain", '-', "", kQuery, 1, freeNoDomain},

    {"cs_saveContext", 'b', "", kContext, 12, call<cs_saveContext>},
    {"cs_forgetSaveContext", '-', "", kContext, 2, call<cs_forgetSaveContext>},
    {"cs_acceptContext", '-', "", kContext, 2, call<cs_acceptContext>},
    {"cs_restoreContext", '-', "", kContext, 8, call<cs_restoreContext>},
    {"cs_acceptAll", '-', "", kContext, 1, call<cs_acceptAll>},
    {"cs_restoreAll", '-', "", kContext, 2, call<cs_restoreAll>},
    {"cs_forgetSaveContextUntil", '-', "i", kContext, 1, call<cs_forgetSaveContextUntil>},
    {"cs_acceptContextUntil", '-', "i", kContext, 1, call<cs_acceptContextUntil>},
    {"cs_restoreContextUntil", '-', "i", kContext, 4, call<cs_restoreContextUntil>},
    {"cs_restoreAndSaveContext", 'b', "", kContext, 3, call<cs_restoreAndSaveContext>},
    {"cs_backtrack", '-', "vis", kContext, 2, call<cs_backtrack>},
    {"cs_backtrackExt", '-', "vis", kContext, 2, call<cs_backtrackExt>},

    {"cs_eventAllKnown", 'b', "ansx", kEvent, 3, call<cs_eventAllKnown>},
    {"cs_eventRun", 'b', "ansx", kEvent, 3, call<cs_eventRun>},
    {"cs_eventKnown", 'b', "ansx", kEvent, 3, call<cs_eventKnown>},
    {"cs_eventNewMin", '-', "ansx", kEvent, 3, call<cs_eventNewMin>},
    {"cs_eventNewMax", '-', "ansx", kEvent, 3, call<cs_eventNewMax>},
    {"cs_eventNeq", '-', "ansx", kEvent, 3, call<cs_eventNeq>},
    {"cs_eventConflict", '-', "ansx", kEvent, 3, call<cs_eventConflict>},

    {"cs_beginPosting", 'b', "", kContext, 2, call<cs_beginPosting>},
    {"cs_endPosting", 'b', "", kContext, 3, call<cs_endPosting>},

    {"cs_createNoGoodSet", 'g', "ansi", kNoGood, 3, createSet},
    {"cs_addNoGood", '-', "gkkkn", kNoGood, 5, addNoGood},
    {"cs_filterNoGood", '-', "gs", kNoGood, 2, call<cs_filterNoGood>},
    {"cs_setMaxNbNoGoods", '-', "gi", kNoGood, 2, call<cs_setMaxNbNoGoods>},
    {"cs_getNbNoGoods", 'b', "g", kNoGood, 2, call<cs_getNbNoGoods>},
    {"cs_getNbNoGoodElements", 'b', "", kNoGood, 1,
     [](Machine &m, const Line &line) { m.answer(line, cs_getNbNoGoodElements(nullptr)); }},
    {"cs_getNoGoodElementAt", 'b', "i", kNoGood, 1,
     [](Machine &m, const Line &line) {
       int index = 7;
       cs_getNoGoodElementAt(&index, nullptr, nullptr, line.args[0].number);
       m.answer(line, index);
     }},

    {"cs_createProfiler", 'p', "i", kProfiler, 3, call<cs_createProfiler>},
    {"cs_enableProfiler", '-', "p", kProfiler, 3, call<cs_enableProfiler>},
    {"cs_disableProfiler", '-', "p", kProfiler, 2, call<cs_disableProfiler>},
    {"cs_deleteProfiler", '-', "p", kProfiler, 1, deleteProfiler},
    {"cs_profilerWrite", '-', "px", kProfiler, 2, call<cs_profilerWrite>},
    {"cs_profilerWriteFile", '-', "pi", kProfiler, 1, writeFile},
    {"cs_setProfilerLocator", '-', "tsx", kProfiler, 1, call<cs_setProfilerLocator>},

    {"cs_printf", '-', "ivai", kOutput, 2, printOut},
    {"cs_fprintf", '-', "ivai", kOutput, 3, printScratch},

    {"script", 's', "ii", kHarness, 1, script},
    {"fail", '-', "ii", kHarness, 1, failing},
    {"solve", '-', "", kHarness, 1, solve},
};

}  // namespace

std::span<const Row> coreRows() { return kRows; }

}  // namespace koru::traces
