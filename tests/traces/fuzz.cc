// SPDX-License-Identifier: MIT
// The interpreter behind libFuzzer. An input is the text of a trace, of which lines that do not parse are left out, so
// every input is a trace and a crash file can be handed to "koru_trace run". Mutations are made on the trace: lines
// from the generator, lines moved, copied and taken out, numbers changed.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "traces/generator.h"
#include "traces/machine.h"

namespace {

using namespace koru::traces;
using koru::test::Random;

constexpr std::size_t kLongest = 120;  // lines

Trace read(const std::uint8_t *data, std::size_t size) {
  std::string reason;
  Trace trace = parse(std::string(reinterpret_cast<const char *>(data), size), reason);
  if (trace.size() > kLongest) trace.resize(kLongest);
  return trace;
}

std::size_t write(const Trace &trace, std::uint8_t *data, std::size_t most) {
  std::string text;
  for (const Line &line : trace) {
    const std::string next = print(line) + "\n";
    if (text.size() + next.size() > most) break;
    text += next;
  }
  std::memcpy(data, text.data(), text.size());
  return text.size();
}

std::size_t somewhere(Random &random, const Trace &trace) { return random.next() % (trace.size() + 1); }

auto at(Trace &trace, std::size_t i) { return trace.begin() + static_cast<std::ptrdiff_t>(i); }

void insertNew(Trace &trace, Random &random) {
  Generator generator(random.next(), Mix::kAll);
  generator.know(trace);
  Line line = generator.anyLine();
  if (random.chance(15)) line.script = random.below(kScripts);
  trace.insert(at(trace, somewhere(random, trace)), std::move(line));
}

void changeNumber(int &number, Random &random) {
  static constexpr int kEnds[] = {-2147483647 - 1, -2147483647, -1, 0, 1, 2147483646, 2147483647};
  if (random.chance(80)) {
    number = static_cast<int>(static_cast<unsigned>(number) + static_cast<unsigned>(random.between(-3, 3)));
  } else {
    number = kEnds[random.below(7)];
  }
}

// References are put right by printing and parsing: a line with one that is out of range is left out.
void changeArgument(Line &line, Random &random) {
  if (line.args.empty()) return;
  Arg &arg = line.args[random.next() % line.args.size()];
  if (arg.list.empty() || random.chance(20)) return changeNumber(arg.number, random);
  int &element = arg.list[random.next() % arg.list.size()];
  if (random.chance(30)) return arg.list.push_back(element);
  changeNumber(element, random);
}

void mutate(Trace &trace, Random &random) {
  if (trace.empty()) return insertNew(trace, random);
  const std::size_t i = random.next() % trace.size();
  switch (random.below(6)) {
    case 0:
      trace.erase(at(trace, i));
      return;
    case 1: {
      const Line copy = trace[i];
      trace.insert(at(trace, somewhere(random, trace)), copy);
      return;
    }
    case 2:
    case 3:
      return insertNew(trace, random);
    default:
      return changeArgument(trace[i], random);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) { return std::freopen("/dev/null", "w", stdout) == nullptr; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static Tally tally;
  const Trace trace = read(data, size);
  const std::string failure = Machine(trace, Settings{}, tally).run();
  if (failure.empty()) return 0;
  std::fprintf(stderr, "FAILED: %s\n%s", failure.c_str(), print(trace).c_str());
  std::abort();
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t most, unsigned seed) {
  Random random(seed);
  Trace trace = read(data, size);
  if (trace.size() < 2 || random.chance(2)) trace = generate(random.next());
  for (int i = random.between(1, 4); i > 0; --i) mutate(trace, random);
  return write(trace, data, most);
}

// The beginning of one trace and the end of another.
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t *data1, std::size_t size1,
                                                 const std::uint8_t *data2, std::size_t size2, std::uint8_t *out,
                                                 std::size_t most, unsigned seed) {
  Random random(seed);
  Trace trace = read(data1, size1);
  const Trace other = read(data2, size2);
  trace.resize(std::min(trace.size(), somewhere(random, trace)));
  const auto from = static_cast<std::ptrdiff_t>(somewhere(random, other));
  trace.insert(trace.end(), other.begin() + from, other.end());
  return write(trace, out, most);
}
