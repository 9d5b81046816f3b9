// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A program that does one thing with the accounts of a device tree and ends, with 0 where it did
// it: what is counted beyond a program that does nothing is what the operation costs, and a load,
// which comes before each but the migration.
//
//   one-operation load|save|look-up|migrate ROOT

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "tallbook/AccountsManager.h"
#include "tallbook/DataMigrator.h"
#include "tallbook/Host.h"
#include "tallbook/PlugInClass.h"

namespace {

using namespace tallbook;

bool save() {
  const auto store = AccountsManager::init();
  store->allBasicAccounts()->front()->setAccountPropertyForKey(4711, "PortNumber");
  return store->saveChanges().isSaved;
}

/// Ten thousand look-ups, in a store of any size.
bool lookUp() {
  const auto store = AccountsManager::init();
  const auto accounts = store->allBasicAccounts();
  std::size_t found = 0;
  for (std::size_t at = 0; at < 10'000; ++at) {
    const String identifier = (*accounts)[at % accounts->size()]->identifier();
    found += store->accountWithIdentifier(identifier) != nullptr;
  }
  return found == 10'000;
}

bool migrate() {
  const auto migrator = tallbookClassNamed("AccountsDataMigrator")->makeDataMigrator();
  return migrator->performMigration();
}

bool perform(std::string_view operation) {
  if (operation == "load") return !AccountsManager::init()->allBasicAccounts()->empty();
  if (operation == "save") return save();
  if (operation == "look-up") return lookUp();
  return operation == "migrate" && migrate();
}

}  // namespace

int main(int count, char** words) {
  if (count != 3) {
    std::fprintf(stderr, "usage: one-operation load|save|look-up|migrate ROOT\n");
    return 2;
  }
  HostOptions options;
  options.root = words[2];
  options.log = HostOptions::Log::Nowhere;
  options.isSilent = true;
  configureHost(options);
  return perform(words[1]) ? 0 : 1;
}
