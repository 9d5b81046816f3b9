// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <stdexcept>

#include "tallbook/Export.h"

namespace tallbook {

/// A broken contract or a malformed shipped resource. `what()` is the fixed text of the failure.
/// Nothing else is thrown across the library's interface, but for the std::system_error of
/// `propertyListFromBytes`; a caller who does not catch it ends the process.
class TALLBOOK_EXPORT InternalConsistencyFailure : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

}  // namespace tallbook
