// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <filesystem>
#include <fstream>
#include <functional>
#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>

#include "tallbook/AccountsWatcher.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "tests/store/StoreDevice.h"
#include "tests/support/FailingFileSystem.h"

namespace tallbook {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

Value list(std::initializer_list<Value> values) {
  return Array::make(values);
}

std::string shown(const ArrayRef& dataclasses) {
  std::string text;
  for (const Value& each : dataclasses) {
    text += each.string().str().substr(std::string("com.orvane.Dataclass.").size()) + " ";
  }
  return text;
}

/// "~ P>c1 [Mail ->Mail Notes ] Key:1>2" for what became of the child c1 of P.
Lines shown(const std::vector<ChangedAccount>& changes) {
  Lines lines;
  for (const ChangedAccount& change : changes) {
    std::string line(1, "-~+"[static_cast<int>(change.kind)]);
    line += " " + (change.parent ? change.parent[kAccountIdentifier].string().str() + ">" : "") +
            change.identifier.str() + " [" + shown(change.dataclassesBefore) + "->" +
            shown(change.dataclassesNow) + "]";
    for (const ChangedKey& key : change.keys) {
      if (change.kind != ChangedAccount::Kind::Changed) continue;
      line += " " + key.key.str() + ":" + (key.before ? key.before->description() : "") + ">" +
              (key.now ? key.now->description() : "");
    }
    lines.push_back(line);
  }
  return lines;
}

class AWatcher : public StoreDevice {
 protected:
  static bool isReadable(const AccountsWatcher& watcher) {
    pollfd waiting{watcher.descriptor(), POLLIN, 0};
    return ::poll(&waiting, 1, 0) == 1;
  }
  Lines told() { return shown(watcher->changes().accounts); }
  /// What another process does.
  static void change(const std::function<void(AccountsManager&)>& work) {
    const auto store = AccountsManager::init();
    work(*store);
    ASSERT_TRUE(store->saveChanges().isSaved);
  }
  static void setName(const char* identifier, const char* name) {
    change([&](AccountsManager& store) {
      store.accountWithIdentifier(identifier)->setDisplayName(name);
    });
  }

  std::unique_ptr<AccountsWatcher> watcher;
};

TEST_F(AWatcher, TellsWhatBecameOfEachAccountAndChild) {
  const Value child = recordOfType(kCalDAVAccountType, "c");
  const Value renamed = recordOfType(kCalDAVAccountType, "c", {{"DisplayName", "C"}});
  const Value nameless = Dictionary::make({{"Type", "Mail"}, {"Class", "IMAPAccount"}});
  const auto parent = [](const Value& children) {
    return record("P", {{kAccountChildAccounts, children}});
  };
  const auto enabled = [](std::initializer_list<Value> dataclasses) {
    return record("A", {{kAccountEnabledDataclasses, Array::make(dataclasses)}});
  };
  struct Case {
    const char* name;
    std::vector<Value> before, now;
    Lines expected;
  };
  const Case cases[] = {
      {"one added, one removed, one changed",
       {record("A"), record("B"), record("C", {{"Port", 1}})},
       {record("C", {{"Port", 2}}), record("D"), record("A")},
       {"- B [->]", "~ C [->] Port:1>2", "+ D [->]"}},
      {"another order, and what is no account",
       {record("A"), record("B")},
       {record("B"), 5, recordOfType("Nonsense", "N"), record("A")},
       {}},
      {"no account any more", {record("A")}, {recordOfType("Nonsense", "A")}, {"- A [->]"}},
      {"a class that no load can repair",
       {},
       {Dictionary::make({{"Type", "Mail"}, {"Class", "X"}, {"Identifier", "A"}})},
       {}},
      {"a dataclass switched, one that the type lacks, a key gone",
       {enabled({kAccountDataclassMail})},
       {enabled({kAccountDataclassNotes, "com.orvane.Dataclass.X"})},
       {"~ A [Mail ->Notes ] Enabled Dataclasses:[\"com.orvane.Dataclass.Mail\"]>"
        "[\"com.orvane.Dataclass.Notes\", \"com.orvane.Dataclass.X\"]"}},
      {"children",
       {parent(list({child, record("d")}))},
       {parent(list({record("e"), renamed}))},
       {"- P>d [->]", "+ P>e [->]", "~ P>c [->] DisplayName:>\"C\""}},
      {"a parent with its children", {parent(list({child}))}, {}, {"- P [->]", "- P>c [->]"}},
      {"an empty list of children",
       {parent(list({}))},
       {record("P")},
       {"~ P [->] ChildAccounts:[]>"}},
      {"of one identifier, and of none",
       {record("A"), record("A", {{"Port", 1}}), nameless},
       {record("A", {{"Port", 2}}), nameless, record("A"), nameless},
       {"- A [->]", "+ A [->]", "+  [->]"}},
      {"of one identifier, between others that stay",
       {record("A"), record("A", {{"Port", 1}}), record("B")},
       {record("A"), record("A", {{"Port", 2}}), record("B")},
       {"- A [->]", "+ A [->]"}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    writeAccountsFile(Dictionary::make({{"Version", 12}, {"Accounts", Array::make(each.before)}}));
    watcher = AccountsWatcher::fromNow();
    writeAccountsFile(Dictionary::make({{"Version", 12}, {"Accounts", Array::make(each.now)}}));
    EXPECT_EQ(told(), each.expected);
    EXPECT_EQ(told(), Lines());
  }
}

TEST_F(AWatcher, WakesForEverySaveAndForNothingElse) {
  writeAccounts({record("A")});
  watcher = AccountsWatcher::fromNow();
  EXPECT_FALSE(isReadable(*watcher));
  const int edges = ::epoll_create1(EPOLL_CLOEXEC);
  epoll_event event{EPOLLIN | EPOLLET, {}};
  ASSERT_EQ(::epoll_ctl(edges, EPOLL_CTL_ADD, watcher->descriptor(), &event), 0);
  for (const char* name : {"1", "2", "3"}) {
    setName("A", name);
    EXPECT_TRUE(isReadable(*watcher));
    EXPECT_EQ(::epoll_wait(edges, &event, 1, 0), 1) << "no edge";
    EXPECT_EQ(told().size(), 1U);
    EXPECT_FALSE(isReadable(*watcher)) << "after the answer";
    EXPECT_EQ(::epoll_wait(edges, &event, 1, 0), 0);
  }
  setName("A", "3");
  test::writeFile(preferencesFolder() + "/other", "made, written, and");
  fs::remove(preferencesFolder() + "/other");
  EXPECT_FALSE(isReadable(*watcher)) << "nothing was changed";
  ::close(edges);
}

TEST_F(AWatcher, HearsHoweverTheFileComesAndGoes) {
  const std::vector<Value> one = {record("A")};
  const auto write = [&] { writeAccounts({record("A")}); };
  const auto writeBehindLink = [&] {
    fs::create_directories(path("/data"));
    test::writePropertyList(path("/data/com.orvane.tallbook.plist"),
                            Dictionary::make({{"Accounts", Array::make(one)}}));
  };
  const std::pair<const char*, std::function<void()>> ways[] = {
      {"removed", [&] { fs::remove(accountsPath()); }},
      {"made", write},
      {"moved away", [&] { fs::rename(accountsPath(), preferencesFolder() + "/aside"); }},
      {"moved back", [&] { fs::rename(preferencesFolder() + "/aside", accountsPath()); }},
      {"emptied in place", [&] { writeAccounts({}); }},
      {"written in place", write},
      {"its folder removed", [&] { fs::remove_all(preferencesFolder()); }},
      {"its folder made, and a save",
       [&] {
         fs::create_directories(preferencesFolder());
         change([](AccountsManager& store) {
           store.insertAccount(BasicAccount::initWithProperties(record("A")));
         });
       }},
      {"a folder above moved away", [&] { fs::rename(home(), path("/var/moved")); }},
      {"and back", [&] { fs::rename(path("/var/moved"), home()); }},
      {"all folders removed", [&] { fs::remove_all(path("/var")); }},
      {"a link below this root in the folder's place",
       [&] {
         fs::create_directories(path("/var/mobile/Library"));
         fs::create_directory_symlink("/data", preferencesFolder());
         writeBehindLink();
       }},
      {"the folder behind the link removed", [&] { fs::remove_all(path("/data")); }},
  };
  write();
  watcher = AccountsWatcher::fromNow();
  const int descriptor = watcher->descriptor();
  bool isThere = true;
  for (const auto& [name, way] : ways) {
    SCOPED_TRACE(name);
    ASSERT_FALSE(isReadable(*watcher));
    way();
    isThere = !isThere;
    EXPECT_TRUE(isReadable(*watcher));
    EXPECT_EQ(told(), Lines{isThere ? "+ A [->]" : "- A [->]"});
  }
  EXPECT_EQ(watcher->descriptor(), descriptor);
  EXPECT_TRUE(watcher->descriptorProblem()) << "nobody tells what comes behind the link";
  writeBehindLink();
  EXPECT_EQ(told(), Lines{"+ A [->]"});
  EXPECT_FALSE(watcher->descriptorProblem());
}

TEST_F(AWatcher, LosesNothingWhenNoticesAreLost) {
  std::size_t most = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> most;
  if (most == 0 || most > 200'000)
    GTEST_SKIP() << "how long the queue is nobody tells, or it would take long to fill";
  writeAccounts({record("A")});
  watcher = AccountsWatcher::fromNow();
  const std::string names[] = {preferencesFolder() + "/one", preferencesFolder() + "/other"};
  test::writeFile(names[0], "");
  for (std::size_t at = 0; at <= most; ++at) fs::rename(names[at % 2], names[(at + 1) % 2]);
  setName("A", "Office");
  EXPECT_EQ(told(), Lines{"~ A [->] DisplayName:>\"Office\""});
  EXPECT_FALSE(isReadable(*watcher));
}

TEST_F(AWatcher, TellsLaterWhatItFailedToTell) {
  writeAccounts({record("A")});
  watcher = AccountsWatcher::fromNow();
  setName("A", "Office");
  FailingFileSystem files(platform().realFileSystem());
  platform().replaceFileSystem(files);
  files.stopAt(1);
  EXPECT_THROW(static_cast<void>(watcher->changes()), Stopped);
  platform().replaceFileSystem(platform().realFileSystem());
  EXPECT_EQ(told(), Lines{"~ A [->] DisplayName:>\"Office\""});
}

TEST_F(AWatcher, TellsOnceThatTheFileIsUnreadableAndWhatChangedMeanwhile) {
  using Kind = AccountsFileState::Kind;
  writeAccounts({record("A"), record("B")});
  watcher = AccountsWatcher::fromNow();
  for (const char* bytes : {"no property list", "still none"}) {
    test::writeFile(accountsPath(), bytes);
    const auto answer = watcher->changes();
    EXPECT_TRUE(answer.accounts.empty());
    EXPECT_EQ(answer.newState.has_value(), bytes[0] == 'n') << "told once";
    EXPECT_TRUE(!answer.newState || answer.newState->kind == Kind::Malformed);
  }
  // Who begins to listen now hears of it as well, and then of all accounts.
  const auto another = AccountsWatcher::fromNow();
  EXPECT_EQ(another->changes().newState.value().kind, Kind::Malformed);
  writeAccounts({record("A")});
  const auto answer = watcher->changes();
  EXPECT_EQ(answer.newState.value().kind, Kind::Whole);
  EXPECT_EQ(shown(answer.accounts), Lines{"- B [->]"});
  EXPECT_EQ(shown(another->changes().accounts), Lines{"+ A [->]"});
  fs::remove(accountsPath());
  fs::create_directory(accountsPath());
  EXPECT_EQ(watcher->changes().newState.value().kind, Kind::Unreadable);
}

TEST_F(AWatcher, CatchesUpFromABaselineThatWasStored) {
  writeAccounts({record("A"), record("B")});
  const std::string stored = binaryPropertyList(AccountsWatcher::fromNow()->baseline()).value();
  restart();
  setName("B", "Office");
  const Value baseline = propertyListFromBytes(stored).value();
  watcher = AccountsWatcher::since(baseline);
  EXPECT_EQ(told(), Lines{"~ B [->] DisplayName:>\"Office\""});
  EXPECT_EQ(shown(AccountsWatcher::since(baseline)->changes().accounts).size(), 1U) << "once more";
  EXPECT_FALSE(AccountsWatcher::since(watcher->baseline())->changes());
  for (const Value& other :
       {Value(), Value("baseline"), readAccountsFile(), Value(Dictionary::make()),
        Value(Dictionary::make({{"BaselineVersion", 2}, {"Accounts", Array::make()}})),
        Value(Dictionary::make({{"BaselineVersion", 1}, {"Accounts", "none"}}))}) {
    EXPECT_EQ(AccountsWatcher::since(other), nullptr) << other.description();
  }
}

TEST_F(AWatcher, OfAStoreTellsWhatThatStoreDoesNotKnow) {
  writeAccounts({record("A"), record("B")});
  const auto store = AccountsManager::init();
  setName("B", "Theirs");
  watcher = AccountsWatcher::fromStore(*store);
  store->accountWithIdentifier("A")->setDisplayName("Ours");
  EXPECT_EQ(told(), Lines{"~ B [->] DisplayName:>\"Theirs\""});
}

TEST_F(AWatcher, LeavesOutWhatAStoreChangesAndNothingElse) {
  const auto inOrder = [](std::initializer_list<Value> dataclasses) {
    return Array::make(dataclasses)->frozenCopy();
  };
  const Value mail = kAccountDataclassMail, notes = kAccountDataclassNotes;
  const Value child = recordOfType(kCalDAVAccountType, "c");
  const DictionaryRef shared = record("A", {{kAccountEnabledDataclasses, inOrder({mail, notes})},
                                            {kAccountChildAccounts, list({child})}});
  writeAccounts({shared, record("B"), record("C"), record("T"), record("T")});
  watcher = AccountsWatcher::fromNow();

  // Others make their changes first, and the store, made afterwards, knows and saves them too.
  change([&](AccountsManager& others) {
    const auto account = others.accountWithIdentifier("A");
    account->setAccountPropertyForKey(inOrder({notes}), kAccountEnabledDataclasses);
    account->setDisplayName("Theirs");
    others.addChildToAccount(BasicAccount::initWithProperties(record("d")), account);
    others.deleteAccountWithIdentifier("B");
    others.insertAccount(BasicAccount::initWithProperties(record("D")));
  });
  const auto store = AccountsManager::init();
  watcher->leaveOutChangesOf(*store);
  const auto account = store->accountWithIdentifier("A");
  account->setAccountPropertyForKey(inOrder({}), kAccountEnabledDataclasses);
  account->setAccountPropertyForKey(993, "Port");
  store->accountWithIdentifier("D")->setAccountPropertyForKey(143, "Port");
  store->insertAccount(BasicAccount::initWithProperties(record("O")));
  ASSERT_TRUE(store->saveChanges().isSaved);
  store->accountWithIdentifier("A")->setAccountPropertyForKey(994, "Port");
  store->deleteAccountWithIdentifier("C");
  ASSERT_TRUE(store->saveAllAccounts());
  setName("O", "Renamed by others");

  EXPECT_EQ(told(),
            (Lines{"- B [->]",
                   "~ A [Mail ->] Enabled Dataclasses:[\"com.orvane.Dataclass.Mail\"]>[] "
                   "DisplayName:>\"Theirs\"",
                   "+ A>d [->]", "+ D [->]", "~ O [->] DisplayName:>\"Renamed by others\""}));

  store->accountWithIdentifier("A")->setAccountPropertyForKey(995, "Port");
  ASSERT_TRUE(store->saveChanges().isSaved);
  EXPECT_FALSE(watcher->changes()) << "nothing but the store's own";
  watcher.reset();
  account->setDisplayName("Ours");
  EXPECT_TRUE(store->saveChanges().isSaved) << "the watcher is gone";
}

}  // namespace
}  // namespace tallbook
