// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <string>

#include "tallbook/AccountsManager.h"
#include "tallbook/ScalarText.h"
#include "tallbook/Vocabulary.h"

namespace tallbook {
namespace {

std::string valueText(const Value& value) {
  return value.isNull() ? "nothing" : shortened(value.description());
}

String displayNameIn(const Value& properties) {
  const DictionaryRef record = properties.dictionary();
  return record ? (*record)[kAccountDisplayName].string() : String();
}

/// The account's name, as the store has it, or else as either side of the clash has it.
String nameOfAccount(const SaveClash& clash, const AccountsManager& store) {
  if (clash.account) {
    const auto record = store.accountWithIdentifier(clash.account);
    if (record && !record->displayName().empty()) return record->displayName();
  }
  if (clash.kind != SaveClash::Kind::Account || clash.child) return {};
  const String here = displayNameIn(clash.here);
  return here.empty() ? displayNameIn(clash.elsewhere) : here;
}

std::string subject(const SaveClash& clash, const AccountsManager& store) {
  std::string text = clash.child ? "the child " + shortened(clash.child.view()) + " of " : "";
  text += "the account " + (clash.account ? shortened(clash.account.view()) : "without identifier");
  if (const String name = nameOfAccount(clash, store); !name.empty()) {
    text += " \"" + shortened(name.view()) + "\"";
  }
  return text;
}

}  // namespace

std::string AccountsManager::textOfClash(const SaveClash& clash) const {
  const std::string of = subject(clash, *this);
  if (clash.kind == SaveClash::Kind::Key) {
    return "clash: \"" + shortened(clash.key.view()) + "\" of " + of + " is saved as " +
           valueText(clash.here) + "; others had changed it to " + valueText(clash.elsewhere);
  }
  return "clash: " + of +
         (clash.here.isNull() ? " is removed, though others had changed it to "
                              : " is saved, though others had removed it: ") +
         valueText(clash.here.isNull() ? clash.elsewhere : clash.here);
}

}  // namespace tallbook
