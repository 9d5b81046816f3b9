#include "tools/tallbook-migrate/AccountMatches.h"

#include <algorithm>
#include <deque>
#include <string_view>
#include <unordered_map>

#include "tallbook/Vocabulary.h"

#include "tools/tallbook-migrate/UpgradeSteps.h"

namespace tallbook::migrate {
namespace {

std::uint64_t entryVersionOf(const DeviceState& state) {
  const bool hasLegacy = state.legacyMail.state != LegacyFile::State::Missing ||
                         state.legacyExchange.state != LegacyFile::State::Missing;
  const DictionaryRef& file = state.accounts.topLevel;
  const Value* version = file ? file->find(kPlistVersionKey) : nullptr;
  // Without legacy files, a file without a version counts as current.
  if (state.isRemovalInterrupted || (!hasLegacy && !version)) return kNoStep;
  return version ? std::min(version->unsignedValue(), kNoStep) : 0;
}

/// The identifiers to look for, the likeliest first.
std::vector<std::string> identifiersOf(const Entry& entry, std::uint64_t entryVersion) {
  std::vector<std::string> identifiers;
  const std::string type = entry.text(kAccountType);
  const bool isRenamed = !entry.isLegacy() && !entry.parent && entryVersion <= kIdentifiersFrom &&
                         (type == kVeltroAccountType || type == kMailAccountType ||
                          type == kExchangeAccountType || type == kSMTPAccountType);
  if (isRenamed) identifiers.push_back(entry.text("uniqueId"));
  identifiers.push_back(entry.text(kAccountIdentifier));
  std::erase(identifiers, std::string());
  return identifiers;
}

std::string contentOf(const Entry& entry) {
  return entry.record ? lastingContent(*entry.record) : entry.element.description();
}

/// Accounts after the migration that nobody has claimed yet, by some text about them; those of one
/// text in their order.
class Unclaimed {
 public:
  void add(std::string text, std::size_t place) { _places[std::move(text)].push_back(place); }
  template <class IsFree>
  std::optional<std::size_t> take(const std::string& text, IsFree isFree) {
    const auto found = _places.find(text);
    while (found != _places.end() && !found->second.empty()) {
      const std::size_t place = found->second.front();
      found->second.pop_front();
      if (isFree(place)) return place;
    }
    return std::nullopt;
  }

 private:
  std::unordered_map<std::string, std::deque<std::size_t>> _places;
};

}  // namespace

AccountMatches::AccountMatches(const DeviceState& before, const DeviceState& after)
    : _before(entriesOf(before)),
      _after(entriesOf(after.accounts)),
      _placesBefore(_after.size()),
      _placesAfter(_before.size()),
      _entryVersion(entryVersionOf(before)),
      _isRemovalOnly(before.isRemovalInterrupted),
      _mail(claimOf(before.legacyMail, after.legacyMail,
                    {kMailAccountType.str(), kSMTPAccountType.str()}, false)),
      _exchange(claimOf(before.legacyExchange, after.legacyExchange, {kExchangeAccountType.str()},
                        true)) {
  match();
}

AccountMatches::Claim AccountMatches::claimOf(const LegacyFile& before, const LegacyFile& after,
                                              std::vector<std::string> types,
                                              bool isExchange) const {
  Claim claim;
  // A file that was converted is gone. One that was not claims nothing, or was kept for a reason
  // that does not tell whether it did.
  claim.isMade = !_isRemovalOnly && before.state != LegacyFile::State::Missing &&
                 after.state == LegacyFile::State::Missing;
  claim.types = std::move(types);
  for (const Entry& entry : _before) {
    if (entry.isLegacy() && (entry.source == Source::LegacyExchange) == isExchange) {
      claim.identifiers.insert(entry.text(kAccountIdentifier));
    }
  }
  claim.identifiers.erase("");
  return claim;
}

bool AccountMatches::isReplaced(const Entry& entry) const {
  if (entry.isLegacy() || isMet(entry)) return false;
  if (entry.parent) return isReplaced(_before[*entry.parent]);
  const auto isClaimedBy = [&](const Claim& claim) {
    return claim.isMade &&
           std::ranges::find(claim.types, entry.text(kAccountType)) != claim.types.end();
  };
  return isClaimedBy(_mail) || isClaimedBy(_exchange);
}

bool AccountMatches::isMet(const Entry& entry) const {
  if (entry.isLegacy() || entry.parent) return false;
  const auto isMetBy = [&](const Claim& claim) {
    return claim.isMade && claim.identifiers.contains(entry.text(kAccountIdentifier));
  };
  return isMetBy(_mail) || isMetBy(_exchange);
}

void AccountMatches::pair(std::size_t before, std::size_t after) {
  _placesAfter[before] = after;
  _placesBefore[after] = before;
}

void AccountMatches::match() {
  const auto isFree = [this](std::size_t place) { return !_placesBefore[place]; };
  Unclaimed byIdentifier;
  Unclaimed byContent;
  for (std::size_t place = 0; place < _after.size(); ++place) {
    byIdentifier.add(_after[place].text(kAccountIdentifier), place);
  }
  std::vector<std::size_t> nameless;
  for (std::size_t place = 0; place < _before.size(); ++place) {
    const Entry& entry = _before[place];
    if (isReplaced(entry)) continue;
    const auto identifiers = identifiersOf(entry, _entryVersion);
    if (identifiers.empty()) nameless.push_back(place);
    for (const std::string& identifier : identifiers) {
      const auto found = byIdentifier.take(identifier, isFree);
      if (!found) continue;
      pair(place, *found);
      break;
    }
  }
  if (nameless.empty()) return;
  for (std::size_t place = 0; place < _after.size(); ++place) {
    if (isFree(place)) byContent.add(contentOf(_after[place]), place);
  }
  for (const std::size_t place : nameless) {
    const auto found = byContent.take(contentOf(_before[place]), isFree);
    if (found) pair(place, *found);
  }
}

}  // namespace tallbook::migrate
