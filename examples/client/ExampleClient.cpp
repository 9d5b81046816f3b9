// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// Loads the accounts, waits for a line on standard input, makes the changes given as arguments and
// saves. The wait lets two of these hold the same accounts at one time, as two programs do.

#include <cstdlib>
#include <iostream>
#include <span>
#include <string>
#include <string_view>

#include "tallbook/AccountsManager.h"
#include "tallbook/Host.h"
#include "tallbook/InternalConsistencyFailure.h"

namespace {

using tallbook::AccountsManager;

/// Makes one change, IDENTIFIER:KEY=VALUE or, to remove the key, IDENTIFIER:KEY. False when no
/// account has the identifier.
bool makeChange(std::string_view change, const AccountsManager& store) {
  const auto colon = change.find(':');
  const auto account = store.accountWithIdentifier(change.substr(0, colon));
  if (!account || colon == std::string_view::npos) return false;
  const std::string_view assignment = change.substr(colon + 1);
  const auto equals = assignment.find('=');
  const std::string_view key = assignment.substr(0, equals);
  if (equals == std::string_view::npos) {
    account->removeAccountPropertyForKey(key);
  } else {
    account->setAccountPropertyForKey(assignment.substr(equals + 1), key);
  }
  return true;
}

int run(const std::string& root, std::span<char*> changes) {
  tallbook::configureHost({.root = root, .log = tallbook::HostOptions::Log::Nowhere});
  const auto store = AccountsManager::init();
  std::cout << "loaded " << store->count() << " accounts" << std::endl;

  std::string go;
  std::getline(std::cin, go);
  for (const std::string_view change : changes) {
    if (!makeChange(change, *store)) {
      std::cerr << "no such account: " << change << '\n';
      return EXIT_FAILURE;
    }
  }
  const tallbook::SaveReceipt receipt = store->saveChanges();
  if (!receipt.isSaved) {
    std::cerr << receipt.failure.text() << '\n';
    return EXIT_FAILURE;
  }
  std::cout << "saved" << std::endl;
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc < 3) {
    std::cerr << "usage: example-client ROOT IDENTIFIER:KEY[=VALUE]...\n";
    return 2;
  }
  try {
    return run(argv[1], std::span(argv + 2, argv + argc));
  } catch (const tallbook::InternalConsistencyFailure& failure) {
    std::cerr << failure.what() << '\n';
    return EXIT_FAILURE;
  }
}
