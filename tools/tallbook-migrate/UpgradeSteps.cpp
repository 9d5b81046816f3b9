#include "tools/tallbook-migrate/UpgradeSteps.h"

#include <algorithm>
#include <initializer_list>
#include <limits>

#include "tallbook/Vocabulary.h"

#include "tools/tallbook-migrate/Entries.h"
#include "tools/tallbook-migrate/RecordChanges.h"

namespace tallbook::migrate {
namespace {

using Kind = KeyChange::Kind;
using Texts = std::initializer_list<std::string_view>;

bool isAmong(const String& text, Texts texts) {
  return std::ranges::find(texts, text.view()) != texts.end();
}

bool hasClass(const Subject& subject, Texts classes) {
  return isAmong(subject.after[kAccountClass].string(), classes);
}

bool hasType(const Subject& subject, Texts types) {
  return isAmong(subject.before[kAccountType].string(), types);
}

bool turnsOn(const KeyChange& change, Texts dataclasses) {
  return change.key == kAccountEnabledDataclasses && change.kind == Kind::Added &&
         isAmong(change.dataclass, dataclasses);
}

bool turnsOff(const KeyChange& change, Texts dataclasses) {
  return change.key == kAccountEnabledDataclasses && change.kind == Kind::Removed &&
         isAmong(change.dataclass, dataclasses);
}

// The same dataclasses in another order or none twice, or an empty list where there was none.
bool rewritesEnabled(const KeyChange& change) {
  return change.key == kAccountEnabledDataclasses && !change.dataclass && change.after.array();
}

bool isMailClass(const Subject& subject) {
  return hasClass(subject, {"IMAPAccount", "GmailAccount", "YahooAccount", "AOLAccount"});
}

bool isHosted(const Subject& subject) {
  return isHostedClass(subject.after[kAccountClass].stringView().value_or(""));
}

bool isPrimary(const Subject& subject) {
  return subject.after["primaryAccount"].boolValue();
}

bool isReverted(const KeyChange& change) {
  return change.key == "accountStatus" && change.after == Value(1);
}

struct Rule {
  std::uint64_t version;  ///< of the file that enters the chain at this step
  std::string_view step;
  std::string_view what;  ///< empty: the change speaks for itself
  bool (*covers)(const KeyChange& change, const Subject& subject);
};

constexpr std::uint64_t kAlways = std::numeric_limits<std::uint64_t>::max();

// What each step does to a record, in the order of the chain. Where two steps make the same change,
// the earlier one made it.
const std::initializer_list<Rule>& rules() {
  using C = const KeyChange&;
  using S = const Subject&;
  static const std::initializer_list<Rule> table = {
      {kIdentifiersFrom, "7A150", "identifier taken from uniqueId",
       [](C c, S s) {
         const Value& uniqueId = s.before["uniqueId"];
         return !uniqueId.string().empty() &&
                (c.key == "uniqueId" || (c.key == kAccountIdentifier && c.after == uniqueId));
       }},
      {kIdentifiersFrom, "7A150", "sync identifier kept",
       [](C c, S s) {
         return c.key == kAccountSyncIdentifier && c.after == s.before[kAccountIdentifier] &&
                hasType(s, {"Veltro", "Mail", "Exchange"});
       }},
      {kIdentifiersFrom, "7A150", "given an identifier",
       [](C c, S s) {
         return c.key == kAccountIdentifier && c.kind == Kind::Changed &&
                c.before.string().empty() && hasType(s, {"Veltro", "Mail", "Exchange", "SMTP"});
       }},
      {kDeviceLocalFrom, "7A153", "made anew", [](C, S s) { return hasType(s, {"OnMyDevice"}); }},
      {3, "7A241", "",
       [](C c, S s) {
         // The stored list becomes the list in effect, which may lose more than Notes.
         return (hasType(s, {"Veltro"}) || isHosted(s)) && c.key == kAccountEnabledDataclasses &&
                (c.kind == Kind::Removed || rewritesEnabled(c));
       }},
      {kFoldingFrom, "7A242", "",
       [](C c, S s) {
         return (isMailClass(s) || hasClass(s, {"VeltroAccount"})) &&
                (turnsOn(c, {kAccountDataclassMail, kAccountDataclassNotes}) || rewritesEnabled(c));
       }},
      {kFoldingFrom, "7A242", "",
       [](C c, S s) {
         return hasClass(s, {"GmailAccount", "YahooAccount"}) &&
                turnsOn(c, {kAccountDataclassCalendars});
       }},
      {kFoldingFrom, "7A242", "type set",
       [](C c, S s) {
         return c.key == kAccountType && hasClass(s, {"GmailAccount", "YahooAccount"});
       }},
      {5, "8A293", "",
       [](C c, S s) {
         const Texts notes = {kAccountDataclassNotes};
         return hasType(s, {"OnMyDevice"}) ? turnsOn(c, notes) : turnsOff(c, notes);
       }},
      {kWrappingFrom, "8B117", "",
       [](C c, S s) {
         return hasType(s, {"OrvaneAccount"}) && isHosted(s) && turnsOn(c, {kAccountDataclassMail});
       }},
      {7, "8C136", "called as its parent is",
       [](C c, S s) {
         return s.parentClass == "OAAccount" && isHosted(s) && c.key == kAccountDisplayName &&
                c.kind == Kind::Removed;
       }},
      {7, "8C136", "",
       [](C c, S s) {
         return (isMailClass(s) || hasClass(s, {"POPAccount"})) &&
                (turnsOn(c, {kAccountDataclassMail}) || rewritesEnabled(c));
       }},
      {9, "9A182", "", [](C c, S) { return turnsOn(c, {kAccountDataclassReminders}); }},
      {9, "9A182", "Reminders off",
       [](C c, S s) {
         return hasClass(s, {"OAAccount"}) &&
                (turnsOff(c, {kAccountDataclassReminders}) || rewritesEnabled(c));
       }},
      {9, "9A182", "status 1",
       [](C c, S s) { return hasClass(s, {"OAAccount"}) && isReverted(c); }},
      {9, "9A182", "renamed",
       [](C c, S s) {
         return hasClass(s, {"OAAccount"}) && c.key == kAccountDisplayName &&
                c.before == Value("Veltro");
       }},
      {9, "9A182", "kind named",
       [](C c, S s) {
         return hasClass(s, {"OAAccount"}) &&
                (c.key == kAccountTypeString || c.key == kAccountShortTypeString);
       }},
      {9, "9A182", "made the primary account",
       [](C c, S s) {
         return isPrimary(s) &&
                (c.key == "primaryAccount" ||
                 turnsOn(c, {kAccountDataclassUbiquity, kAccountDataclassKeyValue}));
       }},
      {10, "9A334", "",
       [](C c, S s) {
         return hasType(s, {"OrvaneAccount", "Veltro"}) && !isPrimary(s) &&
                turnsOff(c, {kAccountDataclassUbiquity, kAccountDataclassKeyValue});
       }},
      {10, "9A334", "status 1",
       [](C c, S s) { return hasClass(s, {"OAAccount"}) && isReverted(c); }},
      {10, "9A334", "",
       [](C c, S s) {
         // Where a dataclass is added, the stored list becomes the list in effect.
         return hasClass(s, {"OAAccount"}) && c.key == kAccountProvisionedDataclasses &&
                c.dataclass != kAccountDataclassPouchet;
       }},
      {11, "9B176", "",
       [](C c, S s) {
         return isPrimary(s) &&
                (c.key == kAccountProvisionedDataclasses || turnsOn(c, {kAccountDataclassPouchet}));
       }},
      {kAlways, "loading", "given an identifier",
       [](C c, S s) {
         return !s.before.contains(kAccountIdentifier) &&
                (c.key == kAccountIdentifier || c.key == kAccountSyncIdentifier);
       }},
      {kAlways, "loading", "class repaired",
       [](C c, S s) {
         return c.key == kAccountClass && hasType(s, {"Mail", "Veltro"});
       }},
  };
  return table;
}

}  // namespace

void Explanation::add(std::string_view step, const std::string& what) {
  // The names of the builds sort in the order of the chain, and "loading" after them.
  auto place = std::ranges::lower_bound(steps, step, {}, &StepNote::step);
  if (place == steps.end() || place->step != step) {
    place = steps.insert(place, {std::string(step), {}});
  }
  if (std::ranges::find(place->what, what) == place->what.end()) place->what.push_back(what);
}

Explanation explain(const Subject& subject, std::uint64_t entry) {
  Explanation explanation;
  for (const KeyChange& change : changesBetween(subject.before, subject.after)) {
    const auto rule = std::ranges::find_if(rules(), [&](const Rule& candidate) {
      return candidate.version >= entry && candidate.covers(change, subject);
    });
    if (rule == rules().end()) {
      explanation.unexplained.push_back(wordsFor(change));
    } else {
      explanation.add(rule->step, rule->what.empty() ? wordsFor(change) : std::string(rule->what));
    }
  }
  return explanation;
}

}  // namespace tallbook::migrate
