// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/BasicAccount.h"

#include <utility>

#include "tallbook/InternalConsistencyFailure.h"
#include "tallbook/PlugInClass.h"
#include "tallbook/Vocabulary.h"

#include "model/BasicAccountLinks.h"
#include "model/LibraryLogging.h"
#include "platform/Platform.h"

namespace tallbook {
namespace {

[[maybe_unused]] const PlugInRegistration registration(kPlugInInterfaceVersion, [] {
  PlugInClass basicAccount;
  basicAccount.name = "BasicAccount";
  basicAccount.initWithProperties = &BasicAccount::initWithProperties;
  return basicAccount;
});

/// The nearest string, the record's own or an ancestor's; null when nobody has one.
String stringForKey(const BasicAccount& account, std::string_view key) {
  for (const BasicAccount* record = &account; record; record = record->parentAccount().get()) {
    if (String text = (*record->properties())[key].string()) return text;
  }
  return nullptr;
}

}  // namespace

std::shared_ptr<BasicAccount> BasicAccount::accountWithTypeClass(const String& type,
                                                                 const String& className) {
  return _initWithTypeClass(type, className);
}

std::shared_ptr<BasicAccount> BasicAccount::_initWithTypeClass(const String& type,
                                                               const String& className) {
  return initWithProperties(propertiesWithTypeClass(type, className));
}

std::shared_ptr<BasicAccount> BasicAccount::accountWithProperties(const DictionaryRef& properties) {
  return initWithProperties(properties);
}

std::shared_ptr<BasicAccount> BasicAccount::initWithProperties(const DictionaryRef& properties) {
  auto making = prepare(properties);
  return making ? std::make_shared<BasicAccount>(std::move(*making)) : nullptr;
}

std::shared_ptr<BasicAccount> BasicAccount::init() {
  initialize();
  throw InternalConsistencyFailure("Don't use this method");
}

String BasicAccount::createNewAccountUID() {
  initialize();
  return Platform::current().uuids().newUUID();
}

DictionaryRef BasicAccount::propertiesWithTypeClass(const String& type, const String& className) {
  initialize();
  if (className.empty()) throw InternalConsistencyFailure("The account class is required.");
  if (!_isValidAccountType(type)) {
    throw InternalConsistencyFailure("The account type (" + std::string(shown(type)) +
                                     ") is not supported");
  }
  DictionaryRef properties = Dictionary::make({{kAccountType, type}});
  if (const String uid = createNewAccountUID()) {
    properties->set(kAccountIdentifier, uid);
    properties->set(kAccountSyncIdentifier, uid);
  }
  properties->set(kAccountClass, className);
  return properties;
}

std::optional<BasicAccount::Making> BasicAccount::prepare(const DictionaryRef& properties) {
  constexpr std::string_view operation = "-[BasicAccount initWithProperties:]";
  const Value type = properties ? (*properties)[kAccountType] : Value();
  const bool isTypeValid = _isValidAccountType(type.stringView().value_or(""));
  if (!isTypeValid) {
    logMessage(operation, [&] { return "Invalid account type: " + shown(type); });
  }
  if (!properties || (*properties)[kAccountClass].stringView().value_or("").empty()) {
    logMessage(operation, [] { return std::string("Missing account class."); });
    return std::nullopt;
  }
  if (!isTypeValid) return std::nullopt;

  Making making{properties, properties->mutableCopy()};
  if (!properties->contains(kAccountIdentifier)) {
    if (const String uid = createNewAccountUID()) {
      making.properties->set(kAccountIdentifier, uid);
      if (!properties->contains(kAccountSyncIdentifier)) {
        making.properties->set(kAccountSyncIdentifier, uid);
      }
    }
  }
  return making;
}

BasicAccount::BasicAccount(Making making)
    : _originalProperties(making.given->frozenCopy()), _properties(std::move(making.properties)) {}

BasicAccount::~BasicAccount() = default;

Value BasicAccount::accountPropertyForKey(std::string_view key) const {
  for (const BasicAccount* record = this; record; record = record->parentAccount().get()) {
    if (const Value* value = record->_properties->find(key)) return *value;
  }
  return nullptr;
}

void BasicAccount::setAccountPropertyForKey(Value value, const String& key) {
  if (key == kAccountClass || key == kAccountType) return;
  _forcedSetAccountPropertyForKey(std::move(value), key);
}

void BasicAccount::removeAccountPropertyForKey(std::string_view key) {
  _properties->remove(key);
}

void BasicAccount::_forcedSetAccountPropertyForKey(Value value, const String& key) {
  if (!key) return;
  if (value.isNull()) {
    _properties->remove(key);
  } else {
    _properties->set(key, std::move(value));
  }
}

DictionaryRef BasicAccount::propertiesToSave() const {
  return _properties;
}

void BasicAccount::setOriginalProperties(const DictionaryRef& properties) {
  if (properties == _originalProperties) return;
  // What still shares the snapshot's storage did not change since it was taken.
  if (properties && _originalProperties && properties->sharesStorageWith(*_originalProperties)) {
    return;
  }
  _originalProperties = properties ? properties->frozenCopy() : nullptr;
}

String BasicAccount::type() const {
  return stringForKey(*this, kAccountType);
}

String BasicAccount::identifier() const {
  return stringForKey(*this, kAccountIdentifier);
}

String BasicAccount::syncStoreIdentifier() const {
  return stringForKey(*this, kAccountSyncIdentifier);
}

String BasicAccount::accountClass() const {
  return stringForKey(*this, kAccountClass);
}

String BasicAccount::displayName() const {
  return stringForKey(*this, kAccountDisplayName);
}

String BasicAccount::typeString() const {
  return stringForKey(*this, kAccountTypeString);
}

String BasicAccount::shortTypeString() const {
  return stringForKey(*this, kAccountShortTypeString);
}

std::string BasicAccount::nameForPeople() const {
  for (const String& name :
       {displayName(), accountPropertyForKey(kAccountUsername).string(), typeString()}) {
    if (!name.empty()) return name.str();
  }
  return type().str();
}

void BasicAccount::setAccountClass(const String& className) {
  if (className == accountClass()) return;
  _forcedSetAccountPropertyForKey(className, kAccountClass);
}

void BasicAccount::setDisplayName(const String& name) {
  if (name && (*_properties)[kAccountDisplayName].string() == name) return;
  setAccountPropertyForKey(name, kAccountDisplayName);
}

BasicAccount::Links& BasicAccount::links() {
  if (!_links) _links = std::make_unique<Links>();
  return *_links;
}

const std::shared_ptr<BasicAccount>& BasicAccount::parentAccount() const noexcept {
  static const std::shared_ptr<BasicAccount> none;
  return _links ? _links->parentAccount : none;
}

void BasicAccount::setParentAccount(std::shared_ptr<BasicAccount> parent) {
  for (const BasicAccount* above = parent.get(); above; above = above->parentAccount().get()) {
    if (above == this) throw InternalConsistencyFailure("An account cannot be its own ancestor");
  }
  if (parent || _links) links().parentAccount = std::move(parent);
}

String BasicAccount::parentAccountIdentifier() const {
  const std::shared_ptr<BasicAccount>& parent = parentAccount();
  return parent ? parent->identifier() : nullptr;
}

}  // namespace tallbook
