#include <gtest/gtest.h>
#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

#include "tallbook/Vocabulary.h"

#include "tools/common/Output.h"
#include "tools/tallbook-migrate/AccountFates.h"

namespace tallbook::tool {

const char* const kProgram = "test";

}  // namespace tallbook::tool

namespace tallbook::migrate {
namespace {

using State = LegacyFile::State;

ArrayRef dataclasses(std::initializer_list<String> names) {
  return Array::make({names.begin(), names.end()});
}

/// A record of the type and class with the identifier "id" and further keys.
DictionaryRef record(const char* type, const char* className,
                     std::initializer_list<std::pair<String, Value>> more = {}) {
  const DictionaryRef made = Dictionary::make(
      {{kAccountType, type}, {kAccountClass, className}, {kAccountIdentifier, "id"}});
  for (const auto& [key, value] : more) {
    if (value.isNull()) {
      made->remove(key);
    } else {
      made->set(key, value);
    }
  }
  return made;
}

DeviceState device(int version, std::vector<Value> records) {
  DeviceState state;
  state.accounts.state.kind = AccountsFileState::Kind::Whole;
  state.accounts.topLevel =
      Dictionary::make({{kPlistVersionKey, version}, {kPlistAccountsKey, Array::make(records)}});
  return state;
}

std::string lineOf(const Fate& fate) {
  return std::string(nameOf(fate.outcome)) + ": " + fate.text();
}

std::vector<std::string> linesOf(const DeviceState& before, const DeviceState& after) {
  std::vector<std::string> lines;
  for (const Fate& fate :
       fatesOfAccounts(before, after, [](const Value&) { return std::string(); })) {
    lines.push_back(lineOf(fate));
  }
  return lines;
}

struct Case {
  int version;
  DictionaryRef before, after;
  const char* line;
};

std::ostream& operator<<(std::ostream& stream, const Case& each) {
  return stream << each.version << " " << Value(each.before).description() << " -> "
                << Value(each.after).description();
}

class AChangedRecord : public testing::TestWithParam<Case> {};

TEST_P(AChangedRecord, IsExplainedByTheStepsThatRan) {
  const auto& [version, before, after, line] = GetParam();
  EXPECT_EQ(linesOf(device(version, {before}), device(12, {after})),
            std::vector<std::string>{line});
}

const DictionaryRef kMail = record("Mail", "IMAPAccount", {{"Port", 993}});
const DictionaryRef kMailOn =
    record("Mail", "IMAPAccount",
           {{"Port", 993}, {kAccountEnabledDataclasses, dataclasses({kAccountDataclassMail})}});
const DictionaryRef kNameless =
    record("SMTP", "SMTPAccount", {{"Hostname", "h"}, {kAccountIdentifier, nullptr}});
const DictionaryRef kParent = record("OrvaneAccount", "OAAccount", {{"accountStatus", 2}});
const DictionaryRef kReverted = record("OrvaneAccount", "OAAccount", {{"accountStatus", 1}});

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, AChangedRecord,
    testing::Values(
        Case{12, kMail, kMail, "unchanged: "},
        // The same change, made by the first step that runs and makes it.
        Case{4, kMail, kMailOn, "upgraded: 7A242: Mail on"},
        Case{5, kMail, kMailOn, "upgraded: 8C136: Mail on"},
        Case{8, kMail, kMailOn, "changed: no step explains: Mail on"},
        Case{0, kParent, kReverted, "upgraded: 9A182: status 1"},
        Case{10, kParent, kReverted, "upgraded: 9A334: status 1"},
        Case{11, kParent, kReverted, "changed: no step explains: accountStatus changed"},
        // Steps that do it to other accounts only.
        Case{0, record("Mail", "LocalAccount"),
             record("Mail", "LocalAccount",
                    {{kAccountEnabledDataclasses, dataclasses({kAccountDataclassMail})}}),
             "changed: no step explains: Mail on"},
        Case{0, kMailOn, kMail, "changed: no step explains: Mail off"},
        Case{0, kMail, record("Mail", "IMAPAccount", {{"Port", 1}, {"New", 1}}),
             "changed: no step explains: Port changed; no step explains: New added"},
        Case{3,
             record("Veltro", "VeltroAccount",
                    {{kAccountEnabledDataclasses,
                      dataclasses({kAccountDataclassNotes, kAccountDataclassMail})}}),
             record("Veltro", "VeltroAccount",
                    {{kAccountEnabledDataclasses, dataclasses({kAccountDataclassMail})}}),
             "upgraded: 7A241: Notes off"},
        Case{11, record("OrvaneAccount", "OAAccount", {{"primaryAccount", true}}),
             record("OrvaneAccount", "OAAccount",
                    {{"primaryAccount", true},
                     {kAccountProvisionedDataclasses, dataclasses({kAccountDataclassPouchet})},
                     {kAccountEnabledDataclasses, dataclasses({kAccountDataclassPouchet})}}),
             "upgraded: 9B176: Pouchet provisioned, Pouchet on"},
        // Found again without an identifier.
        Case{12, kNameless, record("SMTP", "SMTPAccount", {{"Hostname", "h"}}),
             "repaired: loading: given an identifier"},
        Case{1, record("SMTP", "SMTPAccount", {{"Hostname", "h"}, {kAccountIdentifier, ""}}),
             record("SMTP", "SMTPAccount", {{"Hostname", "h"}}),
             "upgraded: 7A150: given an identifier"}));

TEST(AnAccount, ThatIsGoneForNoKnownReasonIsSaidToBe) {
  EXPECT_EQ(linesOf(device(0, {kMail}), device(12, {})),
            std::vector<std::string>{"dropped: no step explains: dropped"});
  EXPECT_EQ(linesOf(device(0, {}), device(12, {kMail})),
            std::vector<std::string>{"added: no step explains: added"});
}

TEST(AMigrationThatCouldNotSave, LeftEverythingWhereItWas) {
  DeviceState state = device(3, {kMail, "no record"});
  state.legacyExchange.state = State::Read;
  state.legacyExchange.content = Dictionary::make(
      {{"SyncoraAccountsKey", Array::make({Dictionary::make(
                                  {{"SyncoraAccountConfigurationClass", "ExchangeAccount"}})})}});
  EXPECT_EQ(linesOf(state, state),
            (std::vector<std::string>{
                "unchanged: ", "unchanged: ", "not converted: kept in the legacy Exchange file"}));
}

}  // namespace
}  // namespace tallbook::migrate
