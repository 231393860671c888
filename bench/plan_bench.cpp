// What an event costs when nothing has to be done, the result of most events, by sessions; total and per
// session: planning the whole graph, reading what the listeners of all processes and taps compare, and the
// index of the graph that both use, which is built anew only after objects have come or gone.
#include "pipewire/fake_server.h"
#include "pipewire/process_facts.h"

#include <benchmark/benchmark.h>

namespace sonvel::pipewire {

namespace {

/// Sessions at rest, each of a process of its own.
class Sessions {
 public:
  explicit Sessions(benchmark::State& state)
      : count_(state.range(0)) {
    for (std::int32_t pid = 1000; pid < 1000 + count_; ++pid) {
      server.addStream(pid);
      server.wantFilter(server.wantTap(pid), FakeServer::kSpeakers);
    }
    if (!server.settle(std::numeric_limits<std::size_t>::max())) state.SkipWithError("no rest");
    for (const auto& [id, filter] : server.reconciler.desired().filters)
      if (!server.reconciler.isConnected(id)) state.SkipWithError("not connected");
  }

  void measure(benchmark::State& state, const std::function<void()>& event) const {
    for ([[maybe_unused]] const auto _ :
         state) // NOLINT(clang-analyzer-deadcode.DeadStores): required by the library
      event();
    state.counters["per_session"] =
        benchmark::Counter(static_cast<double>(count_),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  }

  FakeServer server;

 private:
  std::int64_t count_;
};

void plan(benchmark::State& state) {
  Sessions sessions(state);
  sessions.measure(state, [&] { sessions.server.reconciler.reconcile(); });
}

void readListened(benchmark::State& state) {
  Sessions sessions(state);
  const Reconciler& reconciler = sessions.server.reconciler;
  sessions.measure(state, [&] {
    for (const auto& [id, tap] : sessions.server.reconciler.desired().taps) {
      benchmark::DoNotOptimize(reconciler.isPartial(id));
      for (const auto& process : tap.processes) {
        benchmark::DoNotOptimize(isRunningOutput(reconciler.index(), process));
        benchmark::DoNotOptimize(chosenNodeOf(reconciler.index(), process));
        benchmark::DoNotOptimize(choiceSerialOf(reconciler.index(), process));
      }
    }
  });
}

void buildIndex(benchmark::State& state) {
  Sessions sessions(state);
  sessions.measure(state, [&] {
    ++sessions.server.graph.revision;
    benchmark::DoNotOptimize(sessions.server.reconciler.index().streams().size());
  });
}

void bySessions(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("sessions")
      ->Arg(10)
      ->Arg(50)
      ->Arg(100)
      ->Arg(1000)
      ->Iterations(300)
      ->Unit(benchmark::kMicrosecond);
}

BENCHMARK(plan)->Apply(bySessions);
BENCHMARK(readListened)->Apply(bySessions);
BENCHMARK(buildIndex)->Apply(bySessions);

} // namespace

} // namespace sonvel::pipewire
