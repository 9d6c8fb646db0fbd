// SPDX-License-Identifier: MIT
// The engine's single steps, each as the CPU time of one operation ("ns"). Narrowings are undone in batches by
// contexts, so their times include a share of an undo.
#include <utility>

#include "core/post.h"
#include "core/solver.h"
#include "measure.h"
#include "models.h"

namespace koru::bench {

namespace {

constexpr int kBatch = 1000;

// Measures from its construction, right before the loop, to its end, and reports nanoseconds of CPU time for each of
// `operations` in an iteration.
class PerOperation {
 public:
  PerOperation(benchmark::State &state, double operations) : state_(state), operations_(operations) {}
  PerOperation(const PerOperation &) = delete;
  PerOperation &operator=(const PerOperation &) = delete;
  ~PerOperation() {
    const double seconds = cpuSeconds() - start_ - excluded_;
    state_.counters["ns"] = seconds * 1e9 / (operations_ * static_cast<double>(state_.iterations()));
  }

  void exclude(double seconds) { excluded_ += seconds; }

 private:
  benchmark::State &state_;
  double operations_;
  double start_ = cpuSeconds();
  double excluded_ = 0;
};

// ----- narrowing

void narrowNothing(benchmark::State &state) {
  const Lifetime lifetime;
  CSint *v = cs_createCSint(0, 100);
  const PerOperation measured(state, 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(v);
    benchmark::DoNotOptimize(narrowMin(v, 0));
  }
}

// step(v, i), i in 1..kBatch, on one variable in 0..2 * kBatch, undone by one context. Argument 1: it has a hole.
template <auto step>
void narrowOne(benchmark::State &state) {
  const Lifetime lifetime;
  CSint *v = cs_createCSint(0, 2 * kBatch);
  if (state.range(0) != 0) cs_NEQ(v, 2 * kBatch - 1);
  const PerOperation measured(state, kBatch);
  for (auto _ : state) {
    cs_saveContext();
    for (int i = 1; i <= kBatch; ++i) benchmark::DoNotOptimize(step(v, i));
    cs_restoreContext();
  }
}

bool stepMin(CSint *v, int i) { return narrowMin(v, i); }
bool stepMax(CSint *v, int i) { return narrowMax(v, 2 * kBatch - 2 - i); }
bool stepRemove(CSint *v, int i) { return removeValue(v, i); }

void bindMany(benchmark::State &state) {
  Lifetime lifetime;
  const Array &x = lifetime.array(kBatch, 0, 9);
  if (state.range(0) != 0)
    for (CSint *v : x) cs_NEQ(v, 8);
  const PerOperation measured(state, kBatch);
  for (auto _ : state) {
    cs_saveContext();
    for (CSint *v : x) benchmark::DoNotOptimize(bindValue(v, 5));
    cs_restoreContext();
  }
}

BENCHMARK(narrowNothing);
BENCHMARK(narrowOne<stepMin>)->Name("narrowMin")->ArgName("holes")->Arg(0)->Arg(1);
BENCHMARK(narrowOne<stepMax>)->Name("narrowMax")->ArgName("holes")->Arg(0)->Arg(1);
BENCHMARK(narrowOne<stepRemove>)->Name("removeValue")->ArgName("holes")->Arg(0)->Arg(1);
BENCHMARK(bindMany)->Name("bindValue")->ArgName("holes")->Arg(0)->Arg(1);

// ----- trail, contexts and signals

void pushRecord(const CSint *v) {
  benchmark::DoNotOptimize(solver::trail.makeRoom());
  solver::trail.noteMin(v);
}

// Argument: records pushed before they are undone.
void trailPushUndo(benchmark::State &state) {
  const Lifetime lifetime;
  CSint *v = cs_createCSint(0, 100);
  const auto depth = static_cast<int>(state.range(0));
  const PerOperation measured(state, depth);
  cs_saveContext();  // without one, records are not written
  for (auto _ : state) {
    const int mark = solver::trail.count();
    for (int i = 0; i < depth; ++i) pushRecord(v);
    solver::trail.undoTo(mark);
  }
}

void emptyContext(benchmark::State &state) {
  const Lifetime lifetime;
  const PerOperation measured(state, 1);
  for (auto _ : state) {
    cs_saveContext();
    cs_restoreContext();
  }
}

void signalUnheard(benchmark::State &state) {
  const Lifetime lifetime;
  CSint *v = cs_createCSint(0, 100);
  const PerOperation measured(state, 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(v);
    benchmark::DoNotOptimize(signal(v, kNewMin, 0));
  }
}

BENCHMARK(trailPushUndo)->Arg(kBatch)->Arg(4000000);
BENCHMARK(emptyContext);
BENCHMARK(signalUnheard);

// ----- the queue, with constraints that only count

struct Listener {
  int calls;
};

template <int kind>
bool hear(Listener &c, const Event &) {
  c.calls += kind + 1;
  return true;
}

template <int kind>
constexpr auto kHearsMin = handlers<Listener>({.newMin = on<hear<kind>>});
constexpr auto kHearsMax = handlers<Listener>({.newMax = on<hear<0>>});

void listen(const TableOf<Listener> &table, CSint *v) {
  Posting posting{"listener"};
  auto c = posting.add(table, Listener{0});
  c.attach(v);
}

// One of `kinds` handlers for each variable, in no order that a branch predictor could learn.
template <int... kinds>
void listenToEach(const Array &x, std::integer_sequence<int, kinds...>) {
  static constexpr const TableOf<Listener> *tables[] = {&kHearsMin<kinds>...};
  Random random(1);
  for (CSint *v : x) listen(*tables[random.below(sizeof...(kinds))], v);
}

struct Burst {
  const Array *targets;
};

// Queues an event for each target while the loop runs, which then pops them one by one.
bool queueAll(Burst &c, const Event &) {
  for (CSint *v : *c.targets) benchmark::DoNotOptimize(signal(v, kNewMin, 0));
  return true;
}
constexpr auto kBurst = handlers<Burst>({.newMin = on<queueAll>});

template <int kinds>
void queueAndCall(benchmark::State &state) {
  Lifetime lifetime;
  const Array &x = lifetime.array(kBatch, 0, 100);
  listenToEach(x, std::make_integer_sequence<int, kinds>{});
  CSint *trigger = cs_createCSint(0, 100);
  {
    Posting posting{"burst"};
    auto c = posting.add(kBurst, Burst{&x});
    c.attach(trigger);
  }
  const PerOperation measured(state, kBatch);
  for (auto _ : state) benchmark::DoNotOptimize(signal(trigger, kNewMin, 0));
}

BENCHMARK(queueAndCall<1>)->Name("event: queue, pop, call; one handler");
BENCHMARK(queueAndCall<16>)->Name("event: queue, pop, call; 16 handlers mixed");

// One event on a variable with `length` list entries. None hears it but, with `deaf`, the oldest one.
void walkList(benchmark::State &state, bool deaf) {
  const Lifetime lifetime;
  CSint *v = cs_createCSint(0, 100);
  listen(kHearsMin<0>, v);
  const auto length = static_cast<int>(state.range(0));
  for (int i = 1; i < length; ++i) {
    if (deaf)
      listen(kHearsMax, v);
    else
      listen(kHearsMin<0>, v);
  }
  const PerOperation measured(state, length);
  for (auto _ : state) benchmark::DoNotOptimize(signal(v, kNewMin, 0));
}

BENCHMARK_CAPTURE(walkList, all entries hear, false)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK_CAPTURE(walkList, only the oldest hears, true)->Arg(10)->Arg(100)->Arg(1000);

// ----- bit arrays

DomainBits *makeBits(benchmark::State &state) {
  return DomainBits::create(0, static_cast<int>(state.range(0)) - 1, DomainBits::Fill::kAll);
}

void bitsCreate(benchmark::State &state) {
  const Lifetime lifetime;
  const PerOperation measured(state, 1);
  for (auto _ : state) {
    DomainBits *bits = makeBits(state);
    benchmark::DoNotOptimize(bits);
    DomainBits::destroy(bits);
  }
}

void bitsCount(benchmark::State &state) {
  const Lifetime lifetime;
  DomainBits *bits = makeBits(state);
  const PerOperation measured(state, 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(bits);
    benchmark::DoNotOptimize(countPresent(bits, 0, bits->high));
  }
  DomainBits::destroy(bits);
}

// Argument: the distance between present values.
void bitsNext(benchmark::State &state) {
  const Lifetime lifetime;
  constexpr int kHigh = 65535;
  const auto distance = static_cast<int>(state.range(0));
  DomainBits *bits = DomainBits::create(0, kHigh, DomainBits::Fill::kNone);
  for (int value = 0; value <= kHigh; value += distance) bits->set(value);
  const int last = kHigh / distance * distance;
  const PerOperation measured(state, kHigh / distance);
  for (auto _ : state)
    for (int value = 0; value < last;) benchmark::DoNotOptimize(value = nextPresent(bits, value));
  DomainBits::destroy(bits);
}

void bitsPrevious(benchmark::State &state) {
  const Lifetime lifetime;
  constexpr int kHigh = 65535;
  const auto distance = static_cast<int>(state.range(0));
  DomainBits *bits = DomainBits::create(0, kHigh, DomainBits::Fill::kNone);
  for (int value = 0; value <= kHigh; value += distance) bits->set(value);
  const PerOperation measured(state, kHigh / distance);
  for (auto _ : state)
    for (int value = kHigh / distance * distance; value > 0;)
      benchmark::DoNotOptimize(value = previousPresent(bits, value));
  DomainBits::destroy(bits);
}

BENCHMARK(bitsCreate)->Arg(64)->Arg(1024)->Arg(65536);
BENCHMARK(bitsCount)->Arg(64)->Arg(1024)->Arg(65536);
BENCHMARK(bitsNext)->Arg(1)->Arg(5)->Arg(1000);
BENCHMARK(bitsPrevious)->Arg(1)->Arg(5)->Arg(1000);

// ----- posting

Outcome postOnly(const Array &x, std::size_t count) {
  Outcome outcome;
  for (std::size_t i = 0; i < count; ++i) {
    const auto &[first, second] = instances().pairs[i];
    outcome.units += cs_Neq(x[static_cast<std::size_t>(first)], x[static_cast<std::size_t>(second)]) ? 1 : 0;
  }
  return outcome;
}

double trailBytes() { return static_cast<double>(solver::trail.blockCount()) * Trail::kCapacity * sizeof(TrailRecord); }

// Without cs_init and cs_end; argument: the number of constraints. Bytes are per constraint, those of the trail, two
// records for each, apart.
void postNeq(benchmark::State &state) {
  const auto constraints = static_cast<double>(state.range(0));
  instances();
  PerOperation measured(state, constraints);
  for (auto _ : state) {
    const double start = cpuSeconds();
    double posting = 0;
    {
      Lifetime lifetime;
      const Array &x = lifetime.array(kPairVariables, 0, 9);
      const double heapBefore = heapBytes();
      const double trailBefore = trailBytes();
      const double postingStart = cpuSeconds();
      benchmark::DoNotOptimize(postOnly(x, static_cast<std::size_t>(state.range(0))));
      posting = cpuSeconds() - postingStart;
      const double trail = trailBytes() - trailBefore;
      state.counters["bytes"] = (heapBytes() - heapBefore - trail) / constraints;
      state.counters["trail_bytes"] = trail / constraints;
    }
    measured.exclude(cpuSeconds() - start - posting);
  }
}

// The same number of constraints again and again, in records given back by the undo before, which is counted.
void postUndoNeq(benchmark::State &state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Lifetime lifetime;
  const Array &x = lifetime.array(kPairVariables, 0, 9);
  instances();
  const PerOperation measured(state, static_cast<double>(count));
  for (auto _ : state) {
    cs_saveContext();
    benchmark::DoNotOptimize(postOnly(x, count));
    cs_restoreContext();
  }
}

BENCHMARK(postNeq)->Arg(10000)->Arg(1000000);
BENCHMARK(postUndoNeq)->Arg(10000)->Arg(1000000);

}  // namespace

}  // namespace koru::bench

BENCHMARK_MAIN();
