#include "tools/tallbook-migrate/GoneAccounts.h"

#include "tallbook/Vocabulary.h"

#include "tools/tallbook-migrate/UpgradeSteps.h"

namespace tallbook::migrate {
namespace {

using State = LegacyFile::State;

}  // namespace

GoneAccounts::GoneAccounts(const DeviceState& before, const DeviceState& after,
                           const AccountMatches& matches, const WhyDropped& whyDropped)
    : _stateBefore(before), _stateAfter(after), _matches(matches), _whyDropped(whyDropped) {
  for (const Entry& entry : matches.after()) {
    _identifiersAfter.insert(entry.text(kAccountIdentifier));
  }
  _identifiersAfter.erase("");
  for (const Entry& entry : matches.before()) {
    const std::string username = entry.text(kAccountUsername);
    for (const std::string& user : {username, username.substr(0, username.find('@'))}) {
      _namesOfUsers.emplace(entry.text(kAccountClass) + "/" + user,
                            nameOf(entry, matches.before()));
    }
  }
}

bool GoneAccounts::isFileThere(const Entry& was) const {
  const LegacyFile& file =
      was.source == Source::LegacyExchange ? _stateAfter.legacyExchange : _stateAfter.legacyMail;
  return file.state != State::Missing;
}

GoneAccounts::Reason GoneAccounts::reasonOf(const Entry& was) const {
  if (was.isLegacy()) return reasonOfLegacy(was);
  if (!was.parent) {
    if (std::string fault = _whyDropped(was.element); !fault.empty()) {
      return {Outcome::Dropped, std::move(fault)};
    }
  }
  if (_matches.isReplaced(was)) return {Outcome::Replaced, "by the accounts of a legacy file"};
  const std::string type = was.text(kAccountType);
  if (!was.parent && type == kOnMyDeviceAccountType.view() &&
      _matches.entryVersion() <= kDeviceLocalFrom) {
    return {Outcome::Replaced, "by the new account of the device itself"};
  }
  const bool isMail = type == kMailAccountType.view() || type == kSMTPAccountType.view();
  const LegacyFile& claimant = isMail ? _stateBefore.legacyMail : _stateBefore.legacyExchange;
  if ((isMail || type == kExchangeAccountType.view()) && claimant.state != State::Missing) {
    return {Outcome::Replaced, "by the accounts of a legacy file that is still there"};
  }
  return foldedOrUnknown(was);
}

GoneAccounts::Reason GoneAccounts::reasonOfLegacy(const Entry& was) const {
  if (isFileThere(was)) {
    return {Outcome::NotConverted, was.text(kAccountClass).empty()
                                       ? "it has no class; kept in the " + nameOfFile(was.source)
                                       : "kept in the " + nameOfFile(was.source)};
  }
  if (_identifiersAfter.contains(was.text(kAccountIdentifier))) {
    return {Outcome::Replaced, "the accounts file has an account of its identifier already"};
  }
  if (_stateBefore.isRemovalInterrupted) {
    return {Outcome::Dropped, "an earlier migration had begun to remove its file"};
  }
  return foldedOrUnknown(was);
}

GoneAccounts::Reason GoneAccounts::foldedOrUnknown(const Entry& was) const {
  if (_matches.entryVersion() <= kFoldingFrom && was.text(kAccountClass) == "MobileCalDAVAccount") {
    const std::string into = mailAccountOf(*was.record);
    if (!into.empty()) return {Outcome::Folded, "into " + into};
  }
  return {Outcome::Dropped, ""};
}

/// Name of the provider's mail account to which a separate CalDAV account belongs, by its path and
/// its user; empty where there is none.
std::string GoneAccounts::mailAccountOf(const Dictionary& calDAV) const {
  const DictionaryRef principal = calDAV["CalDAVPrincipalConfiguration"].dictionary();
  const DictionaryRef configuration = calDAV["CalDAVAccountConfiguration"].dictionary();
  if (!principal || !configuration) return {};
  const String path = (*configuration)["CalDAV_PrincipalPath_Key"].string();
  std::string className;
  if (path.view().starts_with("/calendar/dav/")) className = "GmailAccount";
  if (path.view().starts_with("/principals/users/")) className = "YahooAccount";
  const auto found = _namesOfUsers.find(className + "/" + (*principal)["Login_Key"].string().str());
  return found == _namesOfUsers.end() ? std::string() : found->second;
}

}  // namespace tallbook::migrate
