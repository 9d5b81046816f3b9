// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>

#include "tallbook/BasicAccount.h"

namespace tallbook {

/// What a record is linked with. Most records are top-level ones of which nobody wants a full
/// account: they have none of this, and cost no allocation for it.
struct [[gnu::visibility("hidden")]] BasicAccount::Links {
  std::shared_ptr<BasicAccount> parentAccount;
  std::shared_ptr<BasicAccount> fullAccount;
  std::shared_ptr<AccountRefreshProtocol> syncAccount;
};

}  // namespace tallbook
