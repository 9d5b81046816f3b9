// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string_view>

#include "tallbook/AccountsFileState.h"
#include "tallbook/Export.h"
#include "tallbook/Value.h"

namespace tallbook {

/// An accounts file as it was at one moment.
struct AccountsFileContents {
  AccountsFileState state;  ///< why there is no content, where there is none
  DictionaryRef topLevel;   ///< frozen; null where the file has no dictionary at its top

  /// What stands under "Accounts"; null where that is no array.
  TALLBOOK_EXPORT ArrayRef records() const;
};

/// What a file of these bytes is as an accounts file: `Whole` or `Malformed`. Throws what
/// `propertyListFromBytes` does.
[[nodiscard]] TALLBOOK_EXPORT AccountsFileContents accountsFileFromBytes(std::string_view bytes);

}  // namespace tallbook
