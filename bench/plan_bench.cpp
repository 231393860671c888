// The time to plan the whole graph when nothing is missing, the result of most events; total and per session.
#include "pipewire/fake_server.h"

#include <benchmark/benchmark.h>

namespace sonvel::pipewire {

namespace {

void planNothing(benchmark::State& state) {
  FakeServer server;
  for (int i = 0; i < state.range(0); ++i) {
    const std::int32_t pid = 1000 + i;
    server.addStream(pid);
    server.wantFilter(server.wantTap(pid), FakeServer::kSpeakers);
  }
  server.settle();
  for ([[maybe_unused]] const auto _ :
       state) // NOLINT(clang-analyzer-deadcode.DeadStores): required by the library
    server.reconciler.reconcile();
  state.counters["per_session"] =
      benchmark::Counter(static_cast<double>(state.range(0)),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(planNothing)
    ->ArgName("sessions")
    ->Arg(1)
    ->Arg(10)
    ->Arg(100)
    ->Arg(200)
    ->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace sonvel::pipewire
