// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/BasicAccount.h"
#include "tallbook/String.h"

namespace tallbook {

/// What a runtime fixer made of a record.
enum class FixerVerdict : std::int32_t {
  NothingToFix = 0,
  Fixed = 1,  ///< repaired in place
  CannotBeFixed = 2
};

/// Repairs records whenever a store loads or saves them. A store makes its own fixers.
class TBRuntimeFixProtocol {
 public:
  virtual ~TBRuntimeFixProtocol() = default;

  /// Looks at one top-level record. `occasion` names what the store is doing.
  virtual FixerVerdict fixBasicAccountIfNeededLoggingMessage(BasicAccount& account,
                                                             std::string_view occasion) = 0;
  /// Why the record cannot be fixed, on one line; for one of which that was the verdict.
  virtual std::string whyItCannotBeFixed(const BasicAccount& account) const = 0;
  /// Follows a load (`saved` false) or a save (true) in which some verdict was not NothingToFix.
  virtual void accountsHaveBeenSaved(bool saved) = 0;
  /// The account types that it looks at.
  virtual const std::vector<String>& supportedAccountTypes() const = 0;
};

}  // namespace tallbook
