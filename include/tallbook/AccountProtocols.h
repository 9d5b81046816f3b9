#pragma once

#include <functional>
#include <memory>

#include "tallbook/Export.h"
#include "tallbook/String.h"
#include "tallbook/Value.h"

namespace tallbook {

/// What every full account offers.
class TALLBOOK_EXPORT AccountFullAccountProtocol {
 public:
  /// Receives the result code of a renewal.
  using RenewalHandler = std::function<void(int)>;

  virtual ~AccountFullAccountProtocol() = default;
  virtual void renewAccountCredentialsWithHandler(const RenewalHandler& handler) = 0;
};

/// A sync account: refreshes an account's containers on request. Each operation answers whether
/// the refresh was begun.
class TALLBOOK_EXPORT AccountRefreshProtocol {
 public:
  virtual ~AccountRefreshProtocol() = default;
  virtual bool refreshContainerWithIdentifierForDataclassIsUserRequested(const String& identifier,
                                                                         const String& dataclass,
                                                                         bool isUserRequested) = 0;
  virtual bool refreshContainerListForDataclassIsUserRequested(const String& dataclass,
                                                               bool isUserRequested) = 0;
  virtual bool refreshContainersForDataclassIsUserRequested(const String& dataclass,
                                                            bool isUserRequested) = 0;
};

/// A client's own way to make the code of full accounts available.
class TALLBOOK_EXPORT AccountLoader {
 public:
  virtual ~AccountLoader() = default;
  /// True when the code for a full account of the record with these properties is now loaded; the
  /// module named in the creators information is then not loaded.
  virtual bool loadBundleForAccountWithProperties(const DictionaryRef& properties) = 0;
};

}  // namespace tallbook
