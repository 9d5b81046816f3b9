// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <stdexcept>

namespace tallbook {

/// Thrown inside the readers and the writer, never out of them: there is no property list, and why.
class MalformedPropertyList : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tallbook
