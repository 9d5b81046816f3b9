// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <functional>
#include <memory>

#include "tallbook/Export.h"
#include "tallbook/String.h"
#include "tallbook/Value.h"

namespace tallbook {

/// What every full account offers. Full accounts are thread-bound, with the record they belong to.
class TALLBOOK_EXPORT AccountFullAccountProtocol {
 public:
  /// Receives the result code of a renewal.
  using RenewalHandler = std::function<void(int)>;

  virtual ~AccountFullAccountProtocol();
  /// Renews what the account proves itself with, and gives the handler, which may be empty, the
  /// result code. What the codes mean is between the account's class and its caller.
  virtual void renewAccountCredentialsWithHandler(const RenewalHandler& handler) = 0;
};

/// A sync account: refreshes an account's containers, such as its calendars, on request. Each
/// operation answers whether the refresh was begun; `isUserRequested` tells it from one that nobody
/// waits for. Sync accounts are thread-bound, with the record they belong to.
class TALLBOOK_EXPORT AccountRefreshProtocol {
 public:
  virtual ~AccountRefreshProtocol();
  /// Refreshes what one of the dataclass's containers holds.
  virtual bool refreshContainerWithIdentifierForDataclassIsUserRequested(const String& identifier,
                                                                         const String& dataclass,
                                                                         bool isUserRequested) = 0;
  /// Refreshes which containers the dataclass has.
  virtual bool refreshContainerListForDataclassIsUserRequested(const String& dataclass,
                                                               bool isUserRequested) = 0;
  /// Refreshes what all of the dataclass's containers hold.
  virtual bool refreshContainersForDataclassIsUserRequested(const String& dataclass,
                                                            bool isUserRequested) = 0;
};

/// A client's own way to make the code of full accounts available. It is called on the thread that
/// asks for a full account.
class TALLBOOK_EXPORT AccountLoader {
 public:
  virtual ~AccountLoader();
  /// True when the code for a full account of the record with these properties is now loaded; the
  /// module named in the creators information is then not loaded.
  virtual bool loadBundleForAccountWithProperties(const DictionaryRef& properties) = 0;
};

}  // namespace tallbook
