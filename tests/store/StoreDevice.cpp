// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/store/StoreDevice.h"

#include <filesystem>

#include "tallbook/PlugInClass.h"
#include "tallbook/Vocabulary.h"

namespace tallbook {
namespace {

std::vector<std::string> received;

void receive(const ArrayRef& changes) {
  for (const Value& change : *changes) {
    const DictionaryRef entry = change.dictionary();
    received.push_back(std::to_string(entry[kTBChangeAccountChangeTypeKey].integerValue()) + " " +
                       entry[kTBChangeAccountIdentifierKey].string().str() + " " +
                       entry[kTBChangeAccountOriginallyEnabledDataclassesKey].description());
  }
}

const PlugInRegistration notifier(kPlugInInterfaceVersion, [] {
  PlugInClass made;
  made.name = "HearingNotifier";
  made.noteAccountChanges = &receive;
  made.accountWillChangeForDataclass = [](const String& identifier, const String& dataclass) {
    received.push_back("will " + identifier.str() + " " + dataclass.str());
  };
  return made;
});

// Loadable, though the class that is used with it stands in this program.
constexpr const char* kModule = "/usr/lib/creators.so";

Value notifierOf(std::initializer_list<Value> dataclasses) {
  return Dictionary::make(
      {{"Type", "NotifierAccount"},
       {"Description", Dictionary::make({{"Supported Dataclasses", Array::make(dataclasses)},
                                         {"Framework", kModule},
                                         {"Class", "HearingNotifier"}})}});
}

}  // namespace

DictionaryRef recordOfType(const String& type, const String& identifier,
                           std::initializer_list<std::pair<String, Value>> more) {
  const DictionaryRef properties = Dictionary::make(
      {{kAccountType, type}, {kAccountClass, "IMAPAccount"}, {kAccountIdentifier, identifier}});
  for (const auto& [key, value] : more) properties->set(key, value);
  return properties;
}

DictionaryRef record(const String& identifier,
                     std::initializer_list<std::pair<String, Value>> more) {
  return recordOfType(kMailAccountType, identifier, more);
}

StoreDevice::StoreDevice() {
  received.clear();
  std::filesystem::create_directories(path("/usr/lib"));
  std::filesystem::copy_file(TALLBOOK_BUILD_ROOT "/tests/modules/creators.so", path(kModule));
  const Value notifiers =
      Array::make({notifierOf({kAccountDataclassMail}), notifierOf({kAccountDataclassCalendars})});
  platform().resources.replace(
      "AccountCreators",
      Dictionary::make(
          {{kMailAccountType, notifiers},
           {kExchangeAccountType, notifiers},
           {kCalDAVAccountType, Array::make()},
           {kOrvaneAccountType, Array::make()},
           {kOnMyDeviceAccountType,
            Array::make({Dictionary::make(
                {{"Type", "FullAccount"},
                 {"Description",
                  Dictionary::make({{"Framework", kModule}, {"Class", "DeviceLocalAccount"}})}})})},
           {kGmailAccountType,
            Array::make({Dictionary::make(
                {{"Type", "FullAccount"},
                 {"Description", Dictionary::make({{"Framework", kModule},
                                                   {"Class", "TestFullAccountCreator"}})}})})}}));
}

std::vector<std::string>& StoreDevice::heard() {
  return received;
}

std::string StoreDevice::order(const AccountsManager& store) {
  std::string identifiers;
  for (const auto& account : *store.allBasicAccounts()) {
    identifiers += (identifiers.empty() ? "" : " ") + account->identifier().str();
  }
  return identifiers;
}

DictionaryRef StoreDevice::stored(std::string_view identifier) const {
  const ArrayRef records = readAccounts();
  for (const Value& element : *records) {
    const DictionaryRef properties = element.dictionary();
    if ((*properties)[kAccountIdentifier].string() == identifier) return properties;
  }
  return nullptr;
}

}  // namespace tallbook
