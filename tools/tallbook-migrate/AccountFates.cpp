#include "tools/tallbook-migrate/AccountFates.h"

#include <initializer_list>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include "tallbook/DeviceLocalAccount.h"
#include "tallbook/Vocabulary.h"

#include "tools/tallbook-migrate/AccountMatches.h"
#include "tools/tallbook-migrate/GoneAccounts.h"

namespace tallbook::migrate {
namespace {

using State = LegacyFile::State;

class Fates {
 public:
  Fates(const DeviceState& before, const DeviceState& after,
        const std::function<std::string(const Value&)>& whyDropped)
      : _stateBefore(before),
        _stateAfter(after),
        _matches(before, after),
        _gone(before, after, _matches, whyDropped) {
    for (const Entry& entry : _matches.before()) {
      _identifiersBefore.insert(entry.text(kAccountIdentifier));
      if (!entry.isLegacy()) _identifiersBefore.insert(entry.text("uniqueId"));
    }
  }

  std::vector<Fate> run() {
    for (std::size_t place = 0; place < _matches.after().size(); ++place) {
      _fates.push_back(fateOfPresent(place));
    }
    const std::vector<Entry>& before = _matches.before();
    for (std::size_t place = 0; place < before.size(); ++place) {
      if (_matches.placeAfter(place)) continue;
      _placesOfGone[place] = _fates.size();
      _fates.push_back(fateOfGone(before[place]));
    }
    addUnreadable(_stateBefore.legacyExchange, _stateAfter.legacyExchange,
                  {Source::LegacyExchange});
    addUnreadable(_stateBefore.legacyMail, _stateAfter.legacyMail,
                  {Source::LegacyOutgoing, Source::LegacyIncoming});
    return std::move(_fates);
  }

 private:
  Fate described(const Entry& entry, const std::vector<Entry>& list) const {
    Fate fate;
    fate.name = nameOf(entry, list);
    fate.type = entry.text(kAccountType);
    if (fate.type.empty()) fate.type = entry.text(kAccountClass);
    fate.identifier = entry.text(kAccountIdentifier);
    fate.isIdentifierNew = !fate.identifier.empty() &&
                           !_identifiersBefore.contains(fate.identifier) &&
                           fate.identifier != DeviceLocalAccount::_identifier();
    return fate;
  }

  Fate fateOfPresent(std::size_t place) {
    const Entry& now = _matches.after()[place];
    Fate fate = described(now, _matches.after());
    fate.parent = now.parent;
    const auto placeBefore = _matches.placeBefore(place);
    if (!placeBefore) {
      fate.outcome = Outcome::Added;
      explainAddition(place, fate);
      return fate;
    }
    const Entry& was = _matches.before()[*placeBefore];
    if (!now.record || !was.record) return fate;
    const DictionaryRef before = baseline(was, now);
    fate.changes = explain({*before, *now.record, parentClassOf(now)}, _matches.entryVersion());
    const bool isWrapped = !was.parent && now.parent && isUmbrella(*now.parent);
    if (isWrapped) {
      fate.changes.add("8B117", "wrapped in an umbrella account");
    } else if (was.parent.has_value() != now.parent.has_value()) {
      fate.changes.unexplained.push_back("moved");
    }
    fate.outcome = outcomeOf(was, fate.changes, isWrapped);
    if (_matches.isMet(was)) fate.why = "kept before the legacy account of its identifier";
    if (was.isLegacy()) {
      fate.why = "from the " + nameOfFile(was.source);
      if (_gone.isFileThere(was)) fate.why += ", which could not be removed";
    }
    return fate;
  }

  static Outcome outcomeOf(const Entry& was, const Explanation& changes, bool isWrapped) {
    if (was.isLegacy()) return Outcome::Converted;
    if (isWrapped) return Outcome::Wrapped;
    if (changes.steps.empty()) {
      return changes.unexplained.empty() ? Outcome::Unchanged : Outcome::Changed;
    }
    return changes.steps.front().step == "loading" ? Outcome::Repaired : Outcome::Upgraded;
  }

  String parentClassOf(const Entry& entry) const {
    if (!entry.parent) return nullptr;
    return (*_matches.after()[*entry.parent].record)[kAccountClass].string();
  }

  /// Whether the account was made to hold a mail account of the earlier hosted service.
  bool isUmbrella(std::size_t place) const {
    const Entry& entry = _matches.after()[place];
    return _matches.entryVersion() <= kWrappingFrom && !_matches.placeBefore(place) &&
           entry.text(kAccountType) == kOrvaneAccountType &&
           isHostedClass(entry.text(kAccountClass));
  }

  /// The record that the version steps found: what the conversion gives and what the umbrella
  /// account takes away are no changes of theirs.
  DictionaryRef baseline(const Entry& was, const Entry& now) const {
    const DictionaryRef record = was.record->mutableCopy();
    const auto takeOver = [&](const String& key) {
      const Value& value = (*now.record)[key];
      if (value.isNull()) {
        record->remove(key);
      } else {
        record->set(key, value);
      }
    };
    if (_matches.isMet(was)) takeOver(kAccountSyncIdentifier);
    if (was.isLegacy()) {
      for (const String& key :
           {kAccountType, kAccountTypeString, kAccountShortTypeString, kAccountSyncIdentifier}) {
        takeOver(key);
      }
      if (!record->contains(kAccountIdentifier)) takeOver(kAccountIdentifier);
    }
    if (!was.parent && now.parent) {
      for (const String& key :
           {kAccountEnabledDataclasses, kAccountChildAccounts, kCalendarsAccountSubscribedCalendars,
            String("SyncoraExoSubscribedCalendarInfos")}) {
        takeOver(key);
      }
    }
    return record;
  }

  void explainAddition(std::size_t place, Fate& fate) const {
    const Entry& now = _matches.after()[place];
    if (isUmbrella(place)) {
      explainUmbrella(place, fate);
    } else if (_matches.entryVersion() <= kDeviceLocalFrom &&
               fate.type == kOnMyDeviceAccountType.view()) {
      fate.changes.add("7A153", "the account of the device itself");
    } else if (!now.parent) {
      fate.changes.unexplained.emplace_back("added");
    }
  }

  void explainUmbrella(std::size_t place, Fate& fate) const {
    const std::vector<Entry>& after = _matches.after();
    const DictionaryRef given = after[place].record->mutableCopy();
    // Its dataclasses are those of the account that it was made for, which is its last child.
    for (std::size_t child = place + 1; child < after.size() && after[child].parent == place;
         ++child) {
      const auto was = _matches.placeBefore(child);
      if (!was || _matches.before()[*was].parent) continue;
      given->remove(kAccountEnabledDataclasses);
      const Value& enabled = (*_matches.before()[*was].record)[kAccountEnabledDataclasses];
      if (!enabled.isNull()) given->set(kAccountEnabledDataclasses, enabled);
    }
    fate.changes = explain({*given, *after[place].record, nullptr}, _matches.entryVersion());
    fate.changes.add("8B117", "umbrella account");
  }

  Fate fateOfGone(const Entry& was) {
    Fate fate = described(was, _matches.before());
    if (was.parent) {
      const auto parent = _placesOfGone.find(*was.parent);
      if (parent != _placesOfGone.end()) {
        fate.outcome = _fates[parent->second].outcome;
        fate.why = "with its parent";
        fate.parent = parent->second;
        return fate;
      }
    }
    std::tie(fate.outcome, fate.why) = _gone.reasonOf(was);
    if (fate.outcome == Outcome::Folded) fate.changes.add("7A242", "calendar of a mail account");
    if (fate.why.empty()) fate.changes.unexplained.emplace_back("dropped");
    return fate;
  }

  /// Says where accounts may stand that could not be read.
  void addUnreadable(const LegacyFile& before, const LegacyFile& after,
                     std::initializer_list<Source> sources) {
    std::string why = before.state == State::Unreadable ? before.problem : "";
    for (const Source source : sources) {
      const std::string_view key = keyOfAccounts(source);
      const Value list = before.content ? (*before.content)[key] : Value();
      if (!list.isNull() && !list.array()) why = "\"" + std::string(key) + "\" is no array";
    }
    if (why.empty()) return;
    Fate fate;
    fate.name = "(" + nameOfFile(*sources.begin()) + ")";
    const bool isGone = after.state == State::Missing;
    fate.outcome = isGone ? Outcome::Dropped : Outcome::NotConverted;
    fate.why = why + (isGone ? "; it is gone" : "; it stays where it is");
    _fates.push_back(std::move(fate));
  }

  const DeviceState& _stateBefore;
  const DeviceState& _stateAfter;
  AccountMatches _matches;
  GoneAccounts _gone;
  std::unordered_set<std::string> _identifiersBefore;
  std::unordered_map<std::size_t, std::size_t> _placesOfGone;
  std::vector<Fate> _fates;
};

}  // namespace

std::string Fate::text() const {
  std::string text = why;
  const auto begin = [&](const std::string& part) { text += (text.empty() ? "" : "; ") + part; };
  for (const auto& [step, what] : changes.steps) {
    begin(step + ":");
    for (std::size_t index = 0; index < what.size(); ++index) {
      text += (index == 0 ? " " : ", ") + what[index];
    }
  }
  for (const std::string& change : changes.unexplained) begin("no step explains: " + change);
  return text;
}

std::vector<Fate> fatesOfAccounts(const DeviceState& before, const DeviceState& after,
                                  const std::function<std::string(const Value&)>& whyDropped) {
  return Fates(before, after, whyDropped).run();
}

}  // namespace tallbook::migrate
