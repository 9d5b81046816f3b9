// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <string>

#include "tallbook/BasicAccount.h"
#include "tallbook/Vocabulary.h"

namespace tallbook {

std::string BasicAccount::whyNoRecord(const Value& properties) {
  using Kind = Value::Kind;
  initialize();
  const DictionaryRef record = properties.dictionary();
  if (!record) return "it " + textOfWrongKind(properties, "dictionary");
  const Value& type = (*record)[kAccountType];
  if (type.isNull()) return "it has no \"Type\"";
  if (type.kind() != Kind::String) return "its \"Type\" " + textOfWrongKind(type, "string");
  if (!_isValidAccountType(*type.stringView())) {
    return "there is no account type \"" + type.string().str() + "\"";
  }
  const Value& className = (*record)[kAccountClass];
  if (className.isNull()) return "it has no \"Class\"";
  if (className.kind() != Kind::String)
    return "its \"Class\" " + textOfWrongKind(className, "string");
  return className.string().empty() ? "its \"Class\" is empty" : "";
}

}  // namespace tallbook
