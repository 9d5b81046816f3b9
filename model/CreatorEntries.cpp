// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "model/CreatorEntries.h"

#include <cstddef>

#include "tallbook/BasicAccount.h"
#include "tallbook/Vocabulary.h"

#include "model/CanonicalDataclasses.h"
#include "model/PlugInRegistry.h"

namespace tallbook {
namespace {

std::string quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

/// Why a notifier hears of nothing, or not of all that it is to hear of.
std::string faultOfDataclasses(const Value& dataclasses) {
  const std::string key = quoted(kAccountSupportedDataclasses);
  if (!dataclasses.array()) return key + " " + textOfWrongKind(dataclasses, "array");
  const ArrayRef known = BasicAccount::allSupportedDataclasses();
  for (const Value& each : dataclasses.array()) {
    if (known->contains(each)) continue;
    const std::string name = each.string().str();
    const std::string full = std::string(kDataclassPrefix) + name;
    return key + " holds " + (each.string() ? quoted(name) : each.description()) +
           (known->contains(Value(full)) ? ", which is spelled " + quoted(full) : ", no dataclass");
  }
  return {};
}

std::string faultOf(const AccountCreator& creator, const Dictionary& entry) {
  const bool isNotifier = creator.role == "NotifierAccount";
  if (!isNotifier && creator.role != "FullAccount" && creator.role != "SyncAccount") {
    return "its \"Type\" is " + quoted(creator.role) +
           ", none of \"FullAccount\", \"SyncAccount\" and \"NotifierAccount\"";
  }
  const DictionaryRef description = entry["Description"].dictionary();
  if (!description) {
    return "its \"Description\" " + textOfWrongKind(entry["Description"], "dictionary");
  }
  if (creator.className.empty()) return "its \"Class\" names no class";
  if (isNotifier) {
    std::string fault = faultOfDataclasses((*description)[kAccountSupportedDataclasses]);
    if (!fault.empty()) return fault;
  }
  if (creator.framework.empty()) {
    // A program may bring full accounts along itself.
    return creator.role == "FullAccount" ? "" : "its \"Framework\" names no module";
  }
  return whyNoModule(creator.framework);
}

AccountCreator creatorFrom(const std::string& place, const String& type, const Value& element) {
  AccountCreator creator{place, type, {}, {}, {}, {}};
  const DictionaryRef entry = element.dictionary();
  if (!entry) {
    creator.fault = "it " + textOfWrongKind(element, "dictionary");
    return creator;
  }
  creator.role = (*entry)["Type"].string().str();
  if (const DictionaryRef description = (*entry)["Description"].dictionary()) {
    creator.framework = (*description)["Framework"].string().str();
    creator.className = (*description)["Class"].string().str();
  }
  creator.fault = faultOf(creator, *entry);
  return creator;
}

}  // namespace

AccountCreator faultyCreator(const std::string& place, const std::string& why) {
  return {place, {}, {}, {}, {}, why};
}

std::vector<AccountCreator> creatorsIn(const CreatorEntries& entries) {
  const std::string place = entries.file + ", " + entries.type.str();
  if (!BasicAccount::_isValidAccountType(entries.type)) {
    return {faultyCreator(place, "there is no account type " + quoted(entries.type))};
  }
  const ArrayRef list = entries.list.array();
  if (!list) return {faultyCreator(place, "it " + textOfWrongKind(entries.list, "array"))};
  std::vector<AccountCreator> creators;
  creators.reserve(list->size());
  for (std::size_t index = 0; index < list->size(); ++index) {
    creators.push_back(
        creatorFrom(place + "[" + std::to_string(index) + "]", entries.type, (*list)[index]));
  }
  return creators;
}

}  // namespace tallbook
