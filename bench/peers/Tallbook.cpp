// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// This library, as any client uses it.

#include <filesystem>
#include <fstream>

#include "tallbook/AccountsManager.h"
#include "tallbook/Host.h"

#include "bench/peers/Peer.h"

namespace tallbook::peers {
namespace {

void configure() {
  configureHost({std::filesystem::current_path(), HostOptions::Log::Nowhere});
}

Value valueOf(Kind kind, const char* text) {
  switch (kind) {
    case Kind::List:
      return Array::make({text});
    case Kind::Integer:
      return std::atoi(text);
    case Kind::Boolean:
      return *text == '1';
    case Kind::Date:
      return Date{std::strtod(text, nullptr)};
    case Kind::Text:
      break;
  }
  return text;
}

void make() {
  namespace fs = std::filesystem;
  configure();
  for (const char* folder : {"etc", "tmp"}) fs::create_directory(folder);
  std::ofstream("etc/passwd") << "mobile:x:" << getuid() << ":" << getgid()
                              << "::/var/mobile:/bin/false\n";
  std::ofstream("etc/group") << "mobile:x:" << getgid() << ":\n";
  fs::create_directories(fs::path(AccountsManager::fullPathToTallbookPlist()).parent_path());
  static const auto store = AccountsManager::init();
  forEachRecord([&](const Record& record) {
    const auto properties = Dictionary::make({{kIdentifier, record.identifier}});
    for (std::size_t at = 0; at < std::size(kKeys); ++at) {
      properties->set(kKeys[at].name, valueOf(kKeys[at].kind, record.values[at]));
    }
    store->insertAccount(BasicAccount::accountWithProperties(properties));
  });
  const SaveReceipt receipt = store->saveChanges();
  if (!receipt.isSaved) fail(receipt.failure.text().c_str());
}

void addValue(std::string_view key, const Value& value, Checksum& checksum) {
  switch (value.kind()) {
    case Value::Kind::String:
      checksum.add(key, *value.stringView());
      break;
    case Value::Kind::Array: {
      const ArrayRef members = value.array();
      for (const Value& member : *members) addValue(key, member, checksum);
      break;
    }
    case Value::Kind::Date:
      checksum.add(key, static_cast<std::int64_t>(value.date()->secondsSince2001));
      break;
    default:
      checksum.add(key, value.integerValue());
  }
}

void read(Checksum& checksum) {
  configure();
  static const auto store = AccountsManager::init();
  for (const auto& account : *store->allBasicAccounts()) {
    for (const auto& [key, value] : *account->properties()) {
      addValue(key.view(), value, checksum);
    }
  }
}

void change(const Change& change) {
  configure();
  static const auto store = AccountsManager::init();
  store->accountWithIdentifier(change.identifier)->setAccountPropertyForKey(change.port, kPort);
  const SaveReceipt receipt = store->saveChanges();
  if (!receipt.isSaved) fail(receipt.failure.text().c_str());
}

}  // namespace
}  // namespace tallbook::peers

int main(int count, char** words) {
  using namespace tallbook::peers;
  return run({PEER_VERSION, make, read, change}, count, words);
}
