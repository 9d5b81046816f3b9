// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A full account: the record and, beyond it, the code that knows how to work with the account. Its
// creator names the class for each account type; the library then makes the object.

#include <memory>
#include <utility>

#include "tallbook/BasicAccount.h"
#include "tallbook/PlugInClass.h"

namespace {

using namespace tallbook;

class ExampleFullAccount final : public BasicAccount {
 public:
  using BasicAccount::BasicAccount;

  static std::shared_ptr<BasicAccount> initWithProperties(const DictionaryRef& properties) {
    auto making = prepare(properties);
    return making ? std::make_shared<ExampleFullAccount>(std::move(*making)) : nullptr;
  }

  /// Answers 0, renewed: nothing here expires.
  void renewAccountCredentialsWithHandler(const RenewalHandler& handler) override {
    if (handler) handler(0);
  }
};

PlugInClass makeFullAccount() {
  PlugInClass fullAccount;
  fullAccount.name = "ExampleFullAccount";
  fullAccount.initWithProperties = ExampleFullAccount::initWithProperties;
  return fullAccount;
}

PlugInClass makeCreator() {
  PlugInClass creator;
  creator.name = "ExampleFullAccountCreator";
  creator.classForAccountType = [](const String&) { return String("ExampleFullAccount"); };
  return creator;
}

const PlugInRegistration fullAccountRegistration(kPlugInInterfaceVersion, makeFullAccount);
const PlugInRegistration creatorRegistration(kPlugInInterfaceVersion, makeCreator);

}  // namespace
