// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A module in good order: a creator of full accounts, one of sync accounts, and a notifier that
// writes what it hears to the file named by the environment variable TALLBOOK_TEST_NOTIFICATIONS.

#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

#include "tallbook/BasicAccount.h"
#include "tallbook/PlugInClass.h"

namespace {

using namespace tallbook;

class TestFullAccount final : public BasicAccount {
 public:
  using BasicAccount::BasicAccount;

  static std::shared_ptr<BasicAccount> initWithProperties(const DictionaryRef& properties) {
    auto making = prepare(properties);
    return making ? std::make_shared<TestFullAccount>(std::move(*making)) : nullptr;
  }
  void renewAccountCredentialsWithHandler(const RenewalHandler& handler) override { handler(0); }
};

/// Answers whether it was told what the tests tell it.
class TestSyncAccount final : public AccountRefreshProtocol {
 public:
  bool refreshContainerWithIdentifierForDataclassIsUserRequested(const String& identifier,
                                                                 const String& dataclass,
                                                                 bool isUserRequested) override {
    return identifier == "container" && dataclass == "dataclass" && !isUserRequested;
  }
  bool refreshContainerListForDataclassIsUserRequested(const String& dataclass,
                                                       bool isUserRequested) override {
    return dataclass == "list" && !isUserRequested;
  }
  bool refreshContainersForDataclassIsUserRequested(const String& dataclass,
                                                    bool isUserRequested) override {
    return dataclass == "all" && isUserRequested;
  }
};

void note(const std::string& line) {
  if (const char* path = std::getenv("TALLBOOK_TEST_NOTIFICATIONS")) {
    std::ofstream(path, std::ios::app) << line << '\n';
  }
}

const PlugInRegistration fullAccount(kPlugInInterfaceVersion, [] {
  PlugInClass made;
  made.name = "TestFullAccount";
  made.initWithProperties = &TestFullAccount::initWithProperties;
  return made;
});

// Offers both operations: the account without properties shows when the wrong one is used.
const PlugInRegistration fullAccountCreator(kPlugInInterfaceVersion, [] {
  PlugInClass made;
  made.name = "TestFullAccountCreator";
  made.classForAccountType = [](const String&) { return String("TestFullAccount"); };
  made.accountWithBasicAccount = [](const std::shared_ptr<BasicAccount>&) {
    return std::shared_ptr<BasicAccount>();
  };
  return made;
});

// Makes no account for a record whose name is "nothing to sync".
const PlugInRegistration syncAccountCreator(kPlugInInterfaceVersion, [] {
  PlugInClass made;
  made.name = "TestSyncAccountCreator";
  made.accountToRefreshForBasicAccount = [](const std::shared_ptr<BasicAccount>& account) {
    return account->displayName() == "nothing to sync" ? nullptr
                                                       : std::make_shared<TestSyncAccount>();
  };
  return made;
});

const PlugInRegistration notifier(kPlugInInterfaceVersion, [] {
  PlugInClass made;
  made.name = "TestNotifier";
  made.accountWillChangeForDataclass = [](const String& identifier, const String& dataclass) {
    note("will " + identifier.str() + " " + dataclass.str());
  };
  made.accountDidChangeForDataclass = [](const String& identifier, const String& dataclass) {
    note("did " + identifier.str() + " " + dataclass.str());
  };
  made.noteAccountChanges = [](const ArrayRef& changes) { note(Value(changes).description()); };
  return made;
});

// The library has a class of this name already; this one must not replace it.
const PlugInRegistration impostor(kPlugInInterfaceVersion, [] {
  PlugInClass made;
  made.name = "BasicAccount";
  return made;
});

}  // namespace
