// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/Vocabulary.h"

#include "tests/migration/MigrationDevice.h"

namespace tallbook {
namespace {

class ALegacyDescription : public MigrationDevice {
 protected:
  /// Checks the cases of `data/legacy/NAME.plist`: "Description" becomes "Record", or nothing
  /// where there is none.
  template <class Convert>
  void expectRecords(const std::string& name, Convert convert) {
    const ArrayRef cases = data("legacy/" + name).array();
    ASSERT_FALSE(cases->empty());
    for (const Value& element : *cases) {
      const DictionaryRef each = element.dictionary();
      SCOPED_TRACE(each["Case"].description());
      const DictionaryRef description = each["Description"].dictionary();
      const auto account = convert(description, each["Outgoing"].boolValue());
      EXPECT_TRUE(test::matches(each["Record"], account ? account->properties() : nullptr));
    }
  }

  AccountsDataMigrator migrator;
};

TEST_F(ALegacyDescription, OfMailBecomesARecordByItsClass) {
  expectRecords("mail", [this](const DictionaryRef& description, bool isOutgoing) {
    return migrator._convertMailAccountDescriptionType(
        description, isOutgoing ? kSMTPAccountType : kMailAccountType);
  });
}

TEST_F(ALegacyDescription, OfExchangeBecomesARecordWithWhatIsNotSwitchedOff) {
  expectRecords("exchange", [this](const DictionaryRef& description, bool) {
    return migrator._convertExchangeAccountDescription(description);
  });
}

TEST_F(ALegacyDescription, OfGmailIsNamedAsTheRegionNamesIt) {
  for (const auto& [answer, name] :
       {std::pair{Value(), "Gmail"}, std::pair{Value(false), "Gmail"},
        std::pair{Value("true"), "Gmail"}, std::pair{Value(true), "Google Mail"}}) {
    arrange(Dictionary::make({{"Google Mail", answer}}));
    EXPECT_EQ(migrator._accountTypeStringForMailAccountClass("GmailAccount"), name);
    EXPECT_EQ(migrator._accountShortTypeStringForMailAccountClass("GmailAccount"), name);
    EXPECT_EQ(migrator._accountTypeForMailAccountClass("GmailAccount"), "Gmail");
    platform().information.answers["RegionalBehaviorGoogleMail"] = true;
    EXPECT_EQ(migrator._accountTypeStringForMailAccountClass("GmailAccount"), name)
        << "asked a second time";
  }
}

}  // namespace
}  // namespace tallbook
