// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A sync account: begins refreshes of the dataclasses that its account has turned on.

#include <memory>
#include <utility>

#include "tallbook/BasicAccount.h"
#include "tallbook/PlugInClass.h"

namespace {

using namespace tallbook;

class ExampleSyncAccount final : public AccountRefreshProtocol {
 public:
  // Holds the record weakly: the record keeps its sync account.
  explicit ExampleSyncAccount(std::weak_ptr<BasicAccount> account) : _account(std::move(account)) {}

  bool refreshContainerWithIdentifierForDataclassIsUserRequested(const String&,
                                                                 const String& dataclass,
                                                                 bool) override {
    return carries(dataclass);
  }
  bool refreshContainerListForDataclassIsUserRequested(const String& dataclass, bool) override {
    return carries(dataclass);
  }
  bool refreshContainersForDataclassIsUserRequested(const String& dataclass, bool) override {
    return carries(dataclass);
  }

 private:
  bool carries(const String& dataclass) const {
    const auto account = _account.lock();
    return account && account->isEnabledForDataclass(dataclass);
  }

  std::weak_ptr<BasicAccount> _account;
};

PlugInClass makeCreator() {
  PlugInClass creator;
  creator.name = "ExampleSyncAccountCreator";
  creator.accountToRefreshForBasicAccount = [](const std::shared_ptr<BasicAccount>& account) {
    return std::make_shared<ExampleSyncAccount>(account);
  };
  return creator;
}

const PlugInRegistration registration(kPlugInInterfaceVersion, makeCreator);

}  // namespace
