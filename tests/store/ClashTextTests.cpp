// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <string>

#include "tallbook/Vocabulary.h"

#include "tests/store/StoreDevice.h"

namespace tallbook {
namespace {

using Kind = SaveClash::Kind;

DictionaryRef named(const char* name) {
  return Dictionary::make({{kAccountType, kMailAccountType},
                           {kAccountClass, "IMAPAccount"},
                           {kAccountIdentifier, "m1"},
                           {kAccountDisplayName, name}});
}

class AClash : public StoreDevice {};

TEST_F(AClash, IsNamedWithItsAccountAndBothValues) {
  const auto store = AccountsManager::initWithAccounsInfoArray(Array::make({named("Work")}));
  const struct {
    SaveClash clash;
    const char* text;
  } cases[] = {
      {{Kind::Key, "m1", {}, "Port", 993, 143},
       "clash: \"Port\" of the account m1 \"Work\" is saved as 993; others had changed it to 143"},
      {{Kind::Key, "m1", {}, "Port", {}, "a\nb"},
       "clash: \"Port\" of the account m1 \"Work\" is saved as nothing; others had changed it to "
       R"("a\x0ab")"},
      {{Kind::Key, "m1", "c1", "Port", 993, {}},
       "clash: \"Port\" of the child c1 of the account m1 \"Work\" is saved as 993; others had "
       "changed it to nothing"},
      {{Kind::Account, "m1", "c1", {}, {}, Dictionary::make({{kAccountDisplayName, "Child"}})},
       "clash: the child c1 of the account m1 \"Work\" is removed, though others had changed it to "
       R"({"DisplayName": "Child"})"},
      {{Kind::Account, "gone", {}, {}, {}, Dictionary::make({{kAccountDisplayName, "Home"}})},
       "clash: the account gone \"Home\" is removed, though others had changed it to "
       R"({"DisplayName": "Home"})"},
      {{Kind::Account, {}, {}, {}, Dictionary::make({{"Port", 1}}), {}},
       "clash: the account without identifier is saved, though others had removed it: "
       R"({"Port": 1})"},
  };
  for (const auto& [clash, text] : cases) EXPECT_EQ(store->textOfClash(clash), text);
}

TEST_F(AClash, IsShortHoweverLongTheValues) {
  const auto store = AccountsManager::initWithAccounsInfoArray(Array::make({named("Work")}));
  const std::string text(100'000, 'x');
  EXPECT_LT(store->textOfClash({Kind::Key, text, text, text, text, text}).size(), 2000U);
}

}  // namespace
}  // namespace tallbook
