// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A program as a device starts it all day: reads the accounts of a device tree, looks at every
// value of every account and ends, with 0 where it saw any text. It prints nothing: that would be
// its own cost.
//
//   cold-start ROOT

#include <cstddef>
#include <cstdio>

#include "tallbook/AccountsManager.h"
#include "tallbook/Host.h"

namespace {

std::size_t textOfAllAccounts() {
  std::size_t bytes = 0;
  const auto store = tallbook::AccountsManager::init();
  for (const auto& account : *store->allBasicAccounts()) {
    for (const auto& [key, value] : *account->properties()) {
      bytes += key.view().size();
      if (const auto text = value.stringView()) bytes += text->size();
    }
  }
  return bytes;
}

}  // namespace

int main(int count, char** words) {
  if (count != 2) {
    std::fprintf(stderr, "usage: cold-start ROOT\n");
    return 2;
  }
  tallbook::HostOptions options;
  options.root = words[1];
  options.log = tallbook::HostOptions::Log::Nowhere;
  tallbook::configureHost(options);
  return textOfAllAccounts() > 0 ? 0 : 1;
}
