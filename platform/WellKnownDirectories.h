// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

namespace tallbook {

/// Where things lie on the device. Answers are absolute paths without a trailing slash, except
/// that the root of an ordinary system is the empty string, so that `systemRoot() + "/var"` holds
/// for every root. Nothing here says that a directory exists.
class WellKnownDirectories {
 public:
  virtual ~WellKnownDirectories() = default;

  virtual std::string systemRoot() const = 0;
  /// Home of the account "mobile".
  virtual std::string mobileHome() const = 0;
  virtual std::string sharedResources() const = 0;
  /// The mail library's mail data.
  virtual std::string mailData() const = 0;
};

}  // namespace tallbook
