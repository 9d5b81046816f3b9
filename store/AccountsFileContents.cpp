// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/AccountsFileContents.h"

#include <optional>

#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

namespace tallbook {

ArrayRef AccountsFileContents::records() const {
  return topLevel ? (*topLevel)[kPlistAccountsKey].array() : nullptr;
}

AccountsFileContents accountsFileFromBytes(std::string_view bytes) {
  AccountsFileContents file;
  file.state.kind = AccountsFileState::Kind::Malformed;
  const std::optional<Value> root = propertyListFromBytes(bytes, &file.state.reason);
  if (!root) return file;
  file.topLevel = root->dictionary();
  if (!file.topLevel) {
    file.state.reason = "its top level is no dictionary";
    return file;
  }
  file.state.version = (*file.topLevel)[kPlistVersionKey].unsignedValue();
  const Value& records = (*file.topLevel)[kPlistAccountsKey];
  if (!records.isNull() && !records.array()) {
    file.state.reason = "its \"Accounts\" is no array";
    return file;
  }
  file.state.kind = AccountsFileState::Kind::Whole;
  return file;
}

}  // namespace tallbook
