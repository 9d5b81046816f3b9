// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string_view>

#include "tallbook/Value.h"

namespace tallbook {

/// Preferences of the applications and services, by domain and key.
class Preferences {
 public:
  virtual ~Preferences() = default;

  /// The stored value, read afresh; null for an unknown domain or key and where the service is
  /// absent.
  virtual Value valueForKey(std::string_view key, std::string_view domain) = 0;
  /// Tells an application that one of its preferences changed. Nobody hears it where there is no
  /// message bus; that is no failure.
  virtual void postChangedNotice(std::string_view applicationIdentifier, std::string_view key) = 0;
};

}  // namespace tallbook
