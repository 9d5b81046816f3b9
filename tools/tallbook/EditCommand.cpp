// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/Vocabulary.h"

#include "tools/common/Output.h"
#include "tools/tallbook/AccountsText.h"
#include "tools/tallbook/Commands.h"
#include "tools/tallbook/EditableStore.h"
#include "tools/tallbook/EditedText.h"
#include "tools/tallbook/JSONValue.h"
#include "tools/tallbook/Records.h"

namespace tallbook::tool {
namespace {

/// The whole file, or one record of it.
DictionaryRef contentToEdit(const EditableStore& store, const std::string& identifier) {
  if (!identifier.empty()) return recordNamed(*store, identifier)->properties();
  return store.file().records() ? store.file().topLevel : store.accounts();
}

/// `shown` is what the text was made of.
void takeEdited(const EditableStore& store, const std::string& identifier,
                const DictionaryRef& shown, const std::string& text) {
  if (identifier.empty()) {
    const AccountsFile wanted = accountsFromText(text, "the edited text");
    if (wanted.isUnusable()) throw unusable(wanted, "correct it");
    return store.apply(wanted.records(), true);
  }
  const DictionaryRef wanted = valueFromJSON(jsonFromText(text)).dictionary();
  if (!wanted) throw Failure(ExitCode::Usage, "the edited text is no dictionary");
  const auto record = recordNamed(*store, identifier);
  const DictionaryRef identified = wanted->mutableCopy();
  // What a record receives that has no identifier is another at every load.
  for (const String& key : {kAccountIdentifier, kAccountSyncIdentifier}) {
    if (wanted->contains(key) && (*wanted)[key] == (*shown)[key]) {
      identified->set(key, (*record->properties())[key]);
    }
  }
  refuseBecause(store->applyToAccount(identified, record));
}

void save(const Options& options, const EditableStore& store, const DictionaryRef& shown,
          const std::string& text) {
  const DictionaryRef before = store.accounts();
  takeEdited(store, options.account, shown, text);
  store.showAndSave(options, before);
}

}  // namespace

ExitCode edit(const Options& options) {
  // Of the file as it is now: what others change while the editor runs is merged with what is
  // edited.
  const EditableStore unedited(options);
  requirePrintable(unedited.file());
  const DictionaryRef shown = contentToEdit(unedited, options.account);
  const std::string before = jsonFromValue(shown).dump(2) + "\n";
  const EditedText edited(before);
  for (;;) {
    const bool hasSucceeded = edited.edit();
    try {
      const std::string text = edited.text();
      if (text == before) {
        edited.remove();
        note(hasSucceeded ? "nothing was edited" : "the editor failed, and nothing was edited");
        return hasSucceeded ? ExitCode::Done : ExitCode::NotSaved;
      }
      if (!hasSucceeded) throw Failure(ExitCode::NotSaved, "the editor failed");
      save(options, unedited.again(options), shown, text);
      edited.remove();
      return ExitCode::Done;
    } catch (const Failure& failure) {
      const std::string why = failure.what();
      if (isSomebodyThere() && isAgreed(why + "; edit the text again?")) continue;
      throw Failure(failure.code(), why + "; the edited text is kept in " + edited.path());
    }
  }
}

}  // namespace tallbook::tool
