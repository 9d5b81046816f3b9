// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// Keeps up with the accounts whichever process changes them: a poll loop over the watcher's
// descriptor and standard input, as a program has that waits for other things as well. Where a file
// is given, the program goes on from where it stopped the last time. The end of its input ends it.

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>

#include "tallbook/AccountsWatcher.h"
#include "tallbook/Host.h"
#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/PropertyList.h"

namespace {

using tallbook::AccountsWatcher;
using tallbook::ChangedAccount;

/// Goes on from the baseline in the file; from now on where there is none.
std::unique_ptr<AccountsWatcher> makeWatcher(const std::string& baselineFile) {
  std::ifstream file(baselineFile, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  const auto baseline = tallbook::propertyListFromBytes(bytes);
  auto watcher = baseline ? AccountsWatcher::since(*baseline) : nullptr;
  return watcher ? std::move(watcher) : AccountsWatcher::fromNow();
}

/// A real program writes a new file, for itself alone, and renames it: "tallbook watch --keep"
/// does.
void keepBaseline(const AccountsWatcher& watcher, const std::string& baselineFile) {
  if (baselineFile.empty()) return;
  const auto bytes = tallbook::binaryPropertyList(watcher.baseline());
  std::ofstream(baselineFile, std::ios::binary) << bytes.value();
}

/// What a sync service would do: begin, look again, or forget what it has of the account.
void dealWith(const ChangedAccount& change) {
  switch (change.kind) {
    case ChangedAccount::Kind::Added:
      std::cout << "begin to sync " << change.identifier << std::endl;
      return;
    case ChangedAccount::Kind::Removed:
      std::cout << "forget " << change.identifier << std::endl;
      return;
    case ChangedAccount::Kind::Changed:
      std::cout << "look again at " << change.identifier << ":";
      for (const auto& key : change.keys) std::cout << " " << key.key;
      std::cout << std::endl;
  }
}

int run(const std::string& root, const std::string& baselineFile) {
  tallbook::configureHost({.root = root, .log = tallbook::HostOptions::Log::Nowhere});
  const auto watcher = makeWatcher(baselineFile);
  for (;;) {
    const AccountsWatcher::Answer answer = watcher->changes();
    if (answer.newState && !answer.newState->reason.empty()) {
      std::cerr << "the accounts cannot be read: " << answer.newState->reason << '\n';
    }
    for (const ChangedAccount& change : answer.accounts) dealWith(change);
    keepBaseline(*watcher, baselineFile);

    pollfd waiting[] = {{watcher->descriptor(), POLLIN, 0}, {0, POLLIN, 0}};
    if (::poll(waiting, 2, -1) < 0) return EXIT_FAILURE;
    std::string line;
    if (waiting[1].revents != 0 && !std::getline(std::cin, line)) return EXIT_SUCCESS;
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc < 2 || argc > 3) {
    std::cerr << "usage: example-watcher ROOT [BASELINE]\n";
    return 2;
  }
  try {
    return run(argv[1], argc == 3 ? argv[2] : "");
  } catch (const tallbook::InternalConsistencyFailure& failure) {
    std::cerr << failure.what() << '\n';
    return EXIT_FAILURE;
  }
}
