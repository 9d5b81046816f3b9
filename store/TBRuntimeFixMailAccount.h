// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "store/TBRuntimeFixProtocol.h"

namespace tallbook {

/// Gives incoming mail records whose class is not one that the system accepts the class that the
/// path of their mail data tells, and lets the mail application know once they are saved.
class TBRuntimeFixMailAccount final : public TBRuntimeFixProtocol {
 public:
  FixerVerdict fixBasicAccountIfNeededLoggingMessage(BasicAccount& account,
                                                     std::string_view occasion) override;
  std::string whyItCannotBeFixed(const BasicAccount& account) const override;
  void accountsHaveBeenSaved(bool saved) override;
  const std::vector<String>& supportedAccountTypes() const override;

  // Internal

  /// Sets the class that the record's "AccountPath" tells; false, with a log line, when it tells
  /// none.
  bool _cleanupAccountClass(BasicAccount& account);

 private:
  bool _shouldNotifyQuillpost = false;
};

}  // namespace tallbook
