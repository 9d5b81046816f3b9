// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/RecordKeys.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/FileBytes.h"
#include "tools/common/Nearest.h"
#include "tools/common/Output.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/Records.h"
#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

/// How a text is taken that is to be of a kind.
std::string spellingOf(Value::Kind kind) {
  switch (kind) {
    case Value::Kind::Null:
      return "string";
    case Value::Kind::Array:
    case Value::Kind::Dictionary:
      return "json";
    default:
      return std::string(nameOfKind(kind));
  }
}

/// Throws Failure for a key that would be new in the record and differs in capitals alone from one
/// of the record's or one that has a meaning: it would hardly be what was meant.
void requireNoOtherCapitals(const std::string& key, const Dictionary& record) {
  if (record.contains(key)) return;
  std::string other;
  const auto compare = [&](const String& known) {
    if (isSameWord(known, key)) other = known.str();
  };
  for (const auto& [known, kind] : kindsOfKeys()) compare(known);
  for (const auto& [known, value] : record) compare(known);
  if (other.empty() || other == key) return;
  throw Failure(ExitCode::Usage, "\"" + key + "\" would be a new key, and differs from \"" + other +
                                     "\" in capitals alone; if it is meant, repeat the command "
                                     "with --new-key");
}

/// Without the end of its last line, which whoever wrote it hardly means.
std::string textOfStandardInput() {
  std::error_code error;
  std::string text = bytesOfStandardInput(error);
  if (error) {
    throw Failure(ExitCode::Unreadable, "standard input cannot be read: " + error.message());
  }
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace

ExitCode set(const Options& options) {
  const std::string& key = options.key;
  if (key.empty()) throw Failure(ExitCode::Usage, "a key is not empty; name the one to change");
  refuseBecause(whyKeyIsFixed(key));
  requireUnicode(key);
  const std::string text = options.value == "-" ? textOfStandardInput() : options.value;
  const EditableStore store(options);
  const auto record = recordNamed(*store, options.account);
  if (!options.mayBeNew) requireNoOtherCapitals(key, *record->properties());
  const Value present = (*record->properties())[key];
  const Value::Kind usual = present.isNull() ? kindOfKey(key) : present.kind();
  const bool isGuessed = options.kind.empty() && usual == Value::Kind::Null;
  const Value value = valueFromText(text, options.kind.empty() ? spellingOf(usual) : options.kind);
  // JSON spells every kind.
  if (options.kind.empty() && !isGuessed && value.kind() != usual) {
    throw Failure(ExitCode::Usage, "the value for \"" + key + "\" " +
                                       textOfWrongKind(value, nameOfKind(usual)) +
                                       "; if it is meant, repeat the command with --type json");
  }
  if (value == present) return ExitCode::Done;
  if (key == kAccountClass.view()) {
    if (value.string().empty()) {
      throw Failure(ExitCode::Usage, "\"Class\" is a string that is not empty");
    }
    record->setAccountClass(value.string());
    if (!record->parentAccount()) {
      refuseBecause(AccountsManager::whyNotLoaded(record->properties()));
    }
  } else {
    record->setAccountPropertyForKey(value, key);
  }
  store->takeUpChangesOfAccount(record);
  store.save();
  const std::string looks(kindThatTextLooksLike(text));
  if (isGuessed && looks != "string") {
    note("\"" + key + "\" is new and stored as a string; if it is meant as the " + looks +
         " that it looks like, repeat the command with --type " + looks);
  }
  return ExitCode::Done;
}

}  // namespace tallbook::tool
