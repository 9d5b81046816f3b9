// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <benchmark/benchmark.h>
#include <cstdint>

#include "tallbook/AccountsManager.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "bench/BenchDevice.h"
#include "bench/PropertyListFiles.h"

namespace tallbook::bench {
namespace {

std::size_t records(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

std::size_t children(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(1));
}

// Reports the time that one record, children counted, takes.
void countRecords(benchmark::State& state) {
  const std::int64_t perRound = state.range(0) * (1 + state.range(1));
  state.SetItemsProcessed(state.iterations() * perRound);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  for (const std::int64_t size : {10, 100, 1000, 10000, 100000}) benchmark->Args({size, 0});
  benchmark->Args({10000, 5})->ArgNames({"records", "children"});
}

void Decode(benchmark::State& state) {
  const std::string bytes = accountsFileBytes(records(state), children(state));
  for (auto _ : state) benchmark::DoNotOptimize(propertyListFromBytes(bytes));
  countRecords(state);
}

void Encode(benchmark::State& state) {
  const Value tree = accountsFileTree(records(state), children(state));
  for (auto _ : state) benchmark::DoNotOptimize(binaryPropertyList(tree));
  countRecords(state);
}

void Load(benchmark::State& state) {
  const BenchDevice device(records(state), children(state));
  for (auto _ : state) benchmark::DoNotOptimize(AccountsManager::init());
  countRecords(state);
}

void LookUpByIdentifier(benchmark::State& state) {
  const BenchDevice device(records(state), children(state));
  const auto store = AccountsManager::init();
  const String identifier = identifierOf(records(state) / 2);
  for (auto _ : state) benchmark::DoNotOptimize(store->accountWithIdentifier(identifier));
}

void LookUpByType(benchmark::State& state) {
  const BenchDevice device(records(state), children(state));
  const auto store = AccountsManager::init();
  for (auto _ : state) {
    benchmark::DoNotOptimize(store->basicAccountsWithTypes({kExchangeAccountType}));
  }
  countRecords(state);
}

void ReplaceByType(benchmark::State& state) {
  const BenchDevice device(records(state), children(state));
  for (auto _ : state) {
    state.PauseTiming();
    const auto store = AccountsManager::init();
    const auto accounts = *store->allBasicAccounts();
    state.ResumeTiming();
    store->replaceAccountsWithTypesWithAccounts(
        {kMailAccountType, kExchangeAccountType, kCalDAVAccountType}, accounts);
  }
  countRecords(state);
}

void ChangeOneKeyAndSave(benchmark::State& state) {
  const BenchDevice device(records(state), children(state));
  const auto store = AccountsManager::init();
  const auto account = store->accountWithIdentifier(identifierOf(records(state) / 2).str());
  std::int64_t round = 0;
  for (auto _ : state) {
    account->setAccountPropertyForKey(++round, "PortNumber");
    if (!store->saveAllAccounts()) state.SkipWithError("the save failed");
  }
  countRecords(state);
}

BENCHMARK(Decode)->Apply(sizes);
BENCHMARK(Encode)->Apply(sizes);
BENCHMARK(Load)->Apply(sizes);
BENCHMARK(LookUpByIdentifier)->Apply(sizes);
BENCHMARK(LookUpByType)->Apply(sizes);
BENCHMARK(ReplaceByType)->Apply(sizes);
BENCHMARK(ChangeOneKeyAndSave)->Apply(sizes)->UseRealTime();

}  // namespace
}  // namespace tallbook::bench
