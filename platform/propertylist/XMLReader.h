// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string_view>

#include "tallbook/Value.h"

namespace tallbook {

/// Reads the XML encoding.
class XMLReader {
 public:
  /// The tree that `bytes` hold, frozen. Throws MalformedPropertyList.
  static Value read(std::string_view bytes);
};

}  // namespace tallbook
