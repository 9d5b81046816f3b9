// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <gtest/gtest.h>
#include <sstream>

#include "tallbook/Vocabulary.h"

#include "store/AccountsMerge.h"

namespace tallbook {
namespace {

/// "a1": the account "a" whose "k" is 1. "a": one without "k". "?1": one without identifier.
DictionaryRef account(const std::string& text) {
  const DictionaryRef account = Dictionary::make();
  if (text[0] != '?') account->set(kAccountIdentifier, text.substr(0, 1));
  if (text.size() > 1) account->set("k", text.substr(1));
  return account;
}

std::vector<DictionaryRef> accounts(const std::string& text) {
  std::vector<DictionaryRef> list;
  std::istringstream words(text);
  for (std::string word; words >> word;) list.push_back(account(word));
  return list;
}

/// "a1>2": the account "a" whose "k" was 1 and now is 2; "a>2" and "a1>" where there was none and
/// is none. "+a": one without original properties.
std::vector<HeldRecord> held(const std::string& text) {
  std::vector<HeldRecord> list;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (word[0] == '+') {
      list.push_back({account(word.substr(1)), nullptr});
      continue;
    }
    const std::size_t change = word.find('>');
    const std::string original = word.substr(0, change);
    const bool isChanged = change != std::string::npos;
    list.push_back({account(isChanged ? word.substr(0, 1) + word.substr(change + 1) : original),
                    account(original)});
  }
  return list;
}

std::string shown(const String& text) {
  return text ? text.str() : "?";
}

std::string shown(const Value& value) {
  const DictionaryRef account = value.dictionary();
  if (!account)
    return value.isNull() ? "-" : value.string() ? value.string().str() : value.description();
  return shown(account[kAccountIdentifier].string()) + account["k"].string().str();
}

std::string shown(const std::vector<Value>& values) {
  std::string text;
  for (const Value& value : values) text += (text.empty() ? "" : " ") + shown(value);
  return text;
}

std::string shown(const std::vector<SaveClash>& clashes) {
  std::string text;
  for (const SaveClash& clash : clashes) {
    if (!text.empty()) text += ", ";
    text += shown(clash.account);
    if (clash.child) text += "/" + clash.child.str();
    if (clash.key) text += "." + clash.key.str();
    EXPECT_EQ(clash.kind == SaveClash::Kind::Key, bool(clash.key));
    text += " " + shown(clash.here) + "|" + shown(clash.elsewhere);
  }
  return text;
}

std::string shown(const std::vector<TakenOver>& takenOver) {
  std::string text;
  for (const TakenOver& taken : takenOver) {
    if (!text.empty()) text += " ";
    text += taken.kind == TakenOver::Kind::Added     ? "+"
            : taken.kind == TakenOver::Kind::Removed ? "-"
                                                     : "";
    text += shown(taken.account);
    for (const String& key : taken.keys) text += "." + key.str();
  }
  return text;
}

TEST(AMergeOfAccounts, DecidesEveryCaseOfAnAccount) {
  const struct {
    const char *base, *here, *file, *written, *clashes, *takenOver;
  } rows[] = {
      // Added elsewhere: behind what it follows there and is still there
      {"a b", "a b", "a c b", "a c b", "", "+c"},
      {"a b", "a b", "c d a b", "c d a b", "", "+c +d"},
      {"a b", "b a", "a c b d", "b d a c", "", "+d +c"},
      {"a b", "a", "a b c d", "a c d", "", "+c +d"},
      {"a", "a +b", "a c", "a c b", "", "+c"},
      {"", "", "a", "a", "", "+a"},
      // Added here
      {"a", "+b a", "a", "b a", "", ""},
      {"", "+a", "", "a", "", ""},
      // Added on both sides: key by key where somebody knows what from
      {"", "+a1", "a1", "a1", "", ""},
      {"", "+a1", "a2", "a1", "a.k 1|2", ""},
      {"", "+a", "a2", "a", "a.k -|2", ""},
      {"", "+a1", "a", "a1", "", ""},
      {"", "a1", "a2", "a2", "", "a.k"},
      // Deleted elsewhere
      {"a b", "a b", "a", "a", "", "-b"},
      {"a b", "a b>1", "a", "a b1", "b b1|-", ""},
      {"a b", "a b", "", "", "", "-a -b"},
      // Deleted here
      {"a b", "a", "a b", "a", "", ""},
      {"a b", "a", "a b1", "a", "b -|b1", ""},
      {"a b", "a", "a", "a", "", ""},
      // On both sides, against what this store last read, not what the record was made from
      {"a1", "a1", "a2", "a2", "", "a.k"},
      {"a1", "a1", "a", "a", "", "a.k"},
      {"a1", "a1>2", "a1", "a2", "", ""},
      {"a1", "a1>", "a1", "a", "", ""},
      {"a1", "a1>2", "a3", "a2", "a.k 2|3", ""},
      {"a1", "a1>2", "a2", "a2", "", ""},
      {"a1", "a1>2", "a", "a2", "a.k 2|-", ""},
      {"a1", "a1>", "a2", "a", "a.k -|2", ""},
      {"a1", "a2", "a1", "a2", "", ""},
  };
  for (const auto& row : rows) {
    const MergedAccounts merged =
        mergedAccounts(accounts(row.base), held(row.here), accounts(row.file));
    SCOPED_TRACE(std::string(row.base) + " | " + row.here + " | " + row.file);
    EXPECT_EQ(shown(merged.records), row.written);
    EXPECT_EQ(shown(merged.clashes), row.clashes);
    EXPECT_EQ(shown(merged.takenOver), row.takenOver);
  }
}

TEST(AMergeOfAccounts, KeepsAccountsApartThatShareAnIdentifierOrHaveNone) {
  const struct {
    const char *base, *here, *file, *written, *clashes, *takenOver;
  } rows[] = {
      // Moved, changed and deleted here
      {"a1 a2", "a1 a2", "a2 a1", "a1 a2", "", ""},
      {"a1 a2", "a1 a2>9", "a1 a2", "a1 a9", "", ""},
      {"a1 a2", "a2", "a1 a2", "a2", "", ""},
      {"?1 ?2", "?2>9", "?1 ?2", "?9", "", ""},
      {"a1 a1 a1", "a1 a1", "a1 a1 a1", "a1 a1", "", ""},
      // The first of a pair is replaced by another account
      {"a1 a2", "a1 a2>9", "b a2", "b a1 a9", "", "+b"},
      {"a1 a2", "a1 a2>9", "a3 a2", "a3 a1 a9", "", "+a"},
      {"?1 ?2", "?1 ?2>9", "?3 ?2", "?3 ?1 ?9", "", "+?"},
      // Changed elsewhere
      {"a1 a2", "a2", "a3 a2", "a3 a2", "", "+a"},
      {"a1 a2", "a1>9 a2", "a3 a2", "a3 a9 a2", "a a9|-", "+a"},
      // Twins on one side only
      {"a1", "a1>9", "a1 a2", "a9 a2", "", "+a"},
      {"a1", "a1", "a1 a1", "a1 a1", "", "+a"},
      {"a1", "a1>9 +a2", "a1", "a9 a2", "", ""},
      {"a1 a2", "a1>9", "a2", "a9", "a a9|-", ""},
      {"b1 a1 a2", "b1>9 a1 a2", "b1 a1 a2 c", "b9 a1 a2 c", "", "+c"},
  };
  for (const auto& row : rows) {
    const MergedAccounts merged =
        mergedAccounts(accounts(row.base), held(row.here), accounts(row.file));
    SCOPED_TRACE(std::string(row.base) + " | " + row.here + " | " + row.file);
    EXPECT_EQ(shown(merged.records), row.written);
    EXPECT_EQ(shown(merged.clashes), row.clashes);
    EXPECT_EQ(shown(merged.takenOver), row.takenOver);
  }
}

// Such a one receives an identifier when it is read, another one in each store.
TEST(AMergeOfAccounts, PutsANamedRecordInThePlaceOfTheNamelessOneThatItWasReadFrom) {
  const MergedAccounts merged = mergedAccounts(
      accounts("a ?1"), {{account("a"), account("a")}, {account("n1"), account("?1")}},
      accounts("a ?1 b"));
  EXPECT_EQ(shown(merged.records), "a n1 b");
  EXPECT_EQ(shown(merged.clashes), "");
  EXPECT_EQ(shown(merged.takenOver), "+b");

  // Whether others have deleted it or given it another identifier, nobody can tell.
  const MergedAccounts gone =
      mergedAccounts(accounts("?1"), {{account("n1"), account("?1")}}, accounts("m1"));
  EXPECT_EQ(shown(gone.records), "m1 n1");
  EXPECT_EQ(shown(gone.clashes), "n n1|-");
}

/// Null for an absent value.
DictionaryRef accountWith(const String& key, const Value& value) {
  const DictionaryRef result = Dictionary::make({{kAccountIdentifier, "p"}});
  if (!value.isNull()) result->set(key, value);
  return result;
}

MergedAccounts mergedValues(const String& key, const Value& base, const Value& here,
                            const Value& file) {
  return mergedAccounts({accountWith(key, base)}, {{accountWith(key, here), nullptr}},
                        {accountWith(key, file)});
}

/// A list of dataclasses: "M C". "-" for none at all.
Value dataclasses(const std::string& text) {
  if (text == "-") return nullptr;
  const ArrayRef list = Array::make();
  std::istringstream words(text);
  for (std::string word; words >> word;) list->append(word);
  return list;
}

TEST(AMergeOfAccounts, TreatsDataclassesAsSets) {
  const struct {
    const char *base, *here, *file, *written;
    bool isClash = false;
  } rows[] = {
      {"M", "M C", "M N", "M N C"},
      {"M C N", "C N", "N M B", "N B"},
      {"M C", "M", "C", ""},
      {"M", "M C C B", "M B", "M B C"},
      {"-", "M", "C", "C M"},
      {"", "M", "C M", "C M"},
      {"M", "M", "-", "-"},
      {"M", "-", "M", "-"},
      // What is away means something else than the empty set.
      {"M", "M C", "-", "M C", true},
      {"M", "-", "M C", "-", true},
      {"M", "", "-", "", true},
  };
  for (const String& key : {kAccountEnabledDataclasses, kAccountProvisionedDataclasses}) {
    for (const auto& row : rows) {
      const MergedAccounts merged =
          mergedValues(key, dataclasses(row.base), dataclasses(row.here), dataclasses(row.file));
      SCOPED_TRACE(std::string(row.base) + " | " + row.here + " | " + row.file);
      EXPECT_EQ(merged.records[0].dictionary()[key], dataclasses(row.written));
      EXPECT_EQ(merged.clashes.size(), row.isClash ? 1 : 0);
    }
  }
  const Value odd = Array::make({"M", 1});
  const MergedAccounts merged =
      mergedValues(kAccountEnabledDataclasses, dataclasses("M"), odd, dataclasses("M C"));
  EXPECT_EQ(merged.records[0].dictionary()[kAccountEnabledDataclasses], odd);
  ASSERT_EQ(merged.clashes.size(), 1u);
  EXPECT_EQ(merged.clashes[0].elsewhere, dataclasses("M C"));
}

Value children(const std::string& text) {
  if (text == "-") return nullptr;
  const ArrayRef list = Array::make();
  for (const DictionaryRef& child : accounts(text)) list->append(child);
  return list;
}

TEST(AMergeOfAccounts, MergesChildrenOneByOne) {
  const struct {
    const char *base, *here, *file, *written, *clashes, *takenOver;
  } rows[] = {
      {"a", "a b", "a c", "a c b", "", "p.ChildAccounts"},
      {"-", "a", "b", "b a", "", "p.ChildAccounts"},
      {"a b", "b", "a b1", "b1", "", "p.ChildAccounts"},
      {"a b", "a", "a b1 c", "a c", "p/b -|b1", "p.ChildAccounts"},
      {"a1 b", "a2 b c", "a3 b", "a2 b c", "p/a.k 2|3", ""},
      {"a b", "a1 b", "b", "a1 b", "p/a a1|-", ""},
      {"-", "a1", "a2", "a1", "p/a.k 1|2", ""},
      {"a", "-", "a b", "b", "", "p.ChildAccounts"},
      {"a", "-", "a1", "-", "p/a -|a1", ""},
      {"a b", "a", "-", "-", "", "p.ChildAccounts"},
      {"a b", "a c", "-", "c", "", "p.ChildAccounts"},
      // Of one identifier
      {"a1 a2", "a1 a9", "a1 a2 b", "a1 b a9", "", "p.ChildAccounts"},
      {"a1 a2", "a1 a9", "a3 a2", "a3 a1 a9", "", "p.ChildAccounts"},
      {"a1 a2", "a2", "a1 a2 a3", "a2 a3", "", "p.ChildAccounts"},
      // Without identifier
      {"?1", "?2", "?3", "?2", "p.ChildAccounts ?2|?3", ""},
      {"a1", "a2 b", "a1 ?", "a2 b", "p.ChildAccounts a2 b|a1 ?", ""},
  };
  for (const auto& row : rows) {
    MergedAccounts merged = mergedValues(kAccountChildAccounts, children(row.base),
                                         children(row.here), children(row.file));
    for (SaveClash& clash : merged.clashes) {
      for (Value* value : {&clash.here, &clash.elsewhere}) {
        const ArrayRef list = value->array();
        if (list) *value = shown(std::vector<Value>(list->begin(), list->end()));
      }
    }
    SCOPED_TRACE(std::string(row.base) + " | " + row.here + " | " + row.file);
    const Value written = merged.records[0].dictionary()[kAccountChildAccounts];
    EXPECT_EQ(written, children(row.written)) << written.description();
    EXPECT_EQ(shown(merged.clashes), row.clashes);
    EXPECT_EQ(shown(merged.takenOver), row.takenOver);
  }
}

TEST(AMergeOfAccounts, TakesChildrenOfWrongKindsForOneValue) {
  const Value before = children("a1");
  const Value after = children("a2 b");
  for (const Value& odd : {Value(1), Value(Array::make({"a"})), Value(Array::make({nullptr}))}) {
    for (const auto& [base, here, file] :
         {std::array{odd, before, after}, {before, odd, after}, {before, after, odd}}) {
      const MergedAccounts merged = mergedValues(kAccountChildAccounts, base, here, file);
      EXPECT_EQ(merged.records[0].dictionary()[kAccountChildAccounts], here);
      ASSERT_EQ(merged.clashes.size(), 1u);
      EXPECT_EQ(merged.clashes[0].elsewhere, file);
    }
  }
}

// They cannot be saved, but they are a client's to have.
TEST(AMergeOfAccounts, EndsWithAccountsThatHoldThemselves) {
  const DictionaryRef child = account("a1");
  const ArrayRef loop = Array::make({child, child});
  child->set("loop", loop);
  child->set("again", loop);
  const MergedAccounts merged =
      mergedValues(kAccountChildAccounts, children("a1 a2"), loop, children("a1 a3"));
  EXPECT_EQ(merged.records[0].dictionary()[kAccountChildAccounts].array().size(), 3u);
  child->remove("loop");
  child->remove("again");

  // Records without identifier are told apart by all that they hold.
  const DictionaryRef others = Dictionary::make({{"k", 1},
                                                 {"real", 0.5},
                                                 {"date", Date{1}},
                                                 {"uid", UID{7}},
                                                 {"data", Data("bytes")},
                                                 {"null", Value()}});
  const DictionaryRef loops = others->mutableCopy();
  loops->set("self", loops);
  EXPECT_EQ(mergedAccounts({others}, {{loops, nullptr}}, {others}).records.size(), 1u);
  loops->remove("self");
  EXPECT_EQ(mergedAccounts({others}, {{loops, others}}, {others->mutableCopy()}).records.size(),
            1u);
}

}  // namespace
}  // namespace tallbook
