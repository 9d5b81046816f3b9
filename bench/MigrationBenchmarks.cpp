// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <benchmark/benchmark.h>

#include "bench/BenchDevice.h"
#include "bench/MigrationFiles.h"
#include "bench/QuietConsole.h"
#include "migration/AccountsDataMigrator.h"

namespace tallbook::bench {
namespace {

void Migrate(benchmark::State& state, Before before) {
  const BenchDevice device(0, 0);
  const QuietConsole quiet;
  for (auto _ : state) {
    state.PauseTiming();
    writeFilesBefore(before, static_cast<std::size_t>(state.range(0)));
    state.ResumeTiming();
    if (!AccountsDataMigrator().performMigration()) state.SkipWithError("the migration failed");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK_CAPTURE(Migrate, LegacyFiles, Before::LegacyFiles)
    ->ArgName("accounts")
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10000)
    ->UseRealTime();
BENCHMARK_CAPTURE(Migrate, VersionZero, Before::VersionZero)
    ->ArgName("accounts")
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10000)
    ->UseRealTime();

}  // namespace
}  // namespace tallbook::bench
