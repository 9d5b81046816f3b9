// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A store of whatever file: it is asked, changed and saved beside another one, and what nobody
// touched has to be in the file as it was.

#include <algorithm>
#include <map>
#include <memory>

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "fuzz/Check.h"
#include "fuzz/DrawnAccounts.h"
#include "fuzz/ExpectedSave.h"
#include "fuzz/MemoryDevice.h"
#include "fuzz/Target.h"

namespace tallbook::fuzz {
namespace {

using Account = std::shared_ptr<BasicAccount>;
using Store = AccountsManager;

// Every query

void ask(BasicAccount& account) {
  const ArrayRef enabled = account.enabledDataclasses();
  const ArrayRef provisioned = account.provisionedDataclasses();
  for (const Value& dataclass : BasicAccount::allSupportedDataclasses()) {
    const bool isEnabled = account.isEnabledForDataclass(*dataclass.stringView());
    check(isEnabled == (enabled && enabled->contains(dataclass)), "a dataclass is on or off");
  }
  const ArrayRef supported = account.supportedDataclasses();
  for (const Value& dataclass : provisioned) {
    check(supported->contains(dataclass), "what is provisioned is supported");
  }
  for (const Value& dataclass : account.parentAccount() ? nullptr : enabled) {
    check(provisioned->contains(dataclass), "what is enabled is provisioned");
  }
  static_cast<void>(account.displayName());
  static_cast<void>(account.typeString());
  static_cast<void>(account.shortTypeString());
  static_cast<void>(account.accountClass());
}

/// A store that was just loaded. Later on an identifier may be changed without its being told.
void checkLookUp(const Store& store) {
  const auto& all = *store.allBasicAccounts();
  std::map<String, Account> known;
  for (const Account& account : all) {
    if (const String identifier = account->identifier()) known[identifier] = account;
  }
  for (const auto& [identifier, account] : known) {
    check(store.accountWithIdentifier(identifier) == account,
          "an account is found, of several the last");
  }
}

void ask(const Store& store) {
  const auto& all = *store.allBasicAccounts();
  check(store.count() == all.size(), "all accounts are counted");
  for (const Account& account : all) {
    ask(*account);
    const String sync = account->syncStoreIdentifier();
    if (sync) {
      check(store.syncableAccountWithSyncIdentifier(sync)->syncStoreIdentifier() == sync,
            "an account is found by its sync identifier");
    }
    const auto ofType = store.basicAccountsWithTypes({account->type()});
    check(std::ranges::find(ofType, account) != ofType.end(), "an account is found by its type");
    check(store.countOfBasicAccountsWithTypes({account->type()}) == ofType.size(),
          "accounts of a type are counted");
  }
  const auto syncable = store.allBasicSyncableAccounts();
  check(syncable.size() >= all.size() && std::equal(all.begin(), all.end(), syncable.begin()),
        "all accounts come before their children");
  for (std::size_t child = all.size(); child < syncable.size(); ++child) ask(*syncable[child]);
}

// Changes

class Changes {
 public:
  Changes(Drawn& drawn, Store& store) : _drawn(drawn), _store(store) {}

  void make() {
    while (_drawn.below(6) > 0) makeOne();
  }

 private:
  Account anyAccount() {
    const auto& all = *_store.allBasicAccounts();
    if (all.empty()) return nullptr;
    return all[_drawn.number<std::uint8_t>() % all.size()];
  }
  Account newAccount() { return BasicAccount::accountWithProperties(drawnRecord(_drawn)); }

  void makeOne() {
    const int which = _drawn.below(13);
    const Account account = anyAccount();
    if (which == 0) return _store.insertAccount(newAccount());
    if (which == 1) {
      const String identifier = drawnIdentifier(_drawn);
      return _store.deleteAccountWithIdentifier(identifier);
    }
    if (which == 2) {
      return _store.replaceAccountsWithTypesWithAccounts({drawnType(_drawn), drawnType(_drawn)},
                                                         {newAccount(), newAccount()});
    }
    if (account) change(which, *account);
  }

  void change(int which, BasicAccount& account) {
    switch (which) {
      case 3:
        return _store.updateAccount(newAccount());
      case 4:
        return _store.deleteAccount(account.shared_from_this());
      case 5:
        return _store.replaceAccountWithAccount(account.shared_from_this(), newAccount());
      case 6:
        return _store.addChildToAccount(newAccount(), account.shared_from_this());
      case 7: {
        const String identifier = drawnIdentifier(_drawn);
        return _store.removeChildWithIdentifierFromAccount(identifier, account.shared_from_this());
      }
      case 8: {
        const String key = drawnKey(_drawn);
        // Whom to tell of a new account without a type nobody knows: its save throws.
        if (key != kAccountType) account.removeAccountPropertyForKey(key);
        return;
      }
      case 9:
        return account.setEnabledForDataclass(_drawn.oneIn(2), drawnDataclass(_drawn));
      case 10:
        return account._forcedSetEnabledForDataclass(_drawn.oneIn(2), drawnDataclass(_drawn));
      case 11:
        return account.setDisplayName(drawnText(_drawn));
      default: {
        const String key = drawnKey(_drawn);
        account.setAccountPropertyForKey(drawnValueOf(_drawn, key), key);
      }
    }
  }

  Drawn& _drawn;
  Store& _store;
};

// Saving

bool save(Store& store, bool savesChanges) {
  return savesChanges ? store.saveChanges(Store::KeepGeneration::Always).isSaved
                      : store.saveAllAccounts();
}

}  // namespace

void tryInput(std::string_view input) {
  Drawn drawn(input);
  MemoryDevice device;
  if (!drawn.oneIn(4)) device.silence();
  device.put(device.accountsPath(), drawnFile(drawn, drawnAccountsFile(drawn)));

  const auto store = Store::init();
  ExpectedSave expected(*store);
  ask(*store);
  checkLookUp(*store);
  if (drawn.oneIn(3)) {
    const auto other = Store::init();
    Changes(drawn, *other).make();
    static_cast<void>(save(*other, drawn.oneIn(2)));
  }
  Changes(drawn, *store).make();
  ask(*store);

  const auto fileBefore = device.at(device.accountsPath());
  expected.note(*store, fileBefore);
  const bool savesChanges = drawn.oneIn(2);
  if (!save(*store, savesChanges)) {
    check(device.at(device.accountsPath()) == fileBefore, "a failed save leaves the file");
    check(!store->saveFailure().text().empty(), "a failed save says why");
    return;
  }

  const auto fileAfter = device.at(device.accountsPath());
  if (savesChanges) {
    expected.checkSavedChanges(*store, fileAfter);
  } else {
    expected.checkSavedAll(*store, fileAfter);
  }
  const auto saved = Store::init();
  ask(*saved);
  checkLookUp(*saved);
  const SaveReceipt again = store->saveChanges();
  check(again.isSaved && again.clashes.empty(), "nothing is left to save");
  check(device.at(device.accountsPath()) == fileAfter, "and nothing is written");
}

}  // namespace tallbook::fuzz
