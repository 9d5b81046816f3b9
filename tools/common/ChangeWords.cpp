// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/common/ChangeWords.h"

#include "tallbook/DataclassNames.h"
#include "tallbook/Vocabulary.h"

namespace tallbook::tool {
namespace {

/// Words for the dataclasses that the one list holds and the other lacks.
void addWords(std::vector<std::string>& words, const ArrayRef& of, const ArrayRef& without,
              const char* what) {
  for (const Value& dataclass : of) {
    if (!dataclass.string() || (without && without->contains(dataclass))) continue;
    words.push_back(shortNameOfDataclass(*dataclass.stringView()) + what);
  }
}

}  // namespace

std::vector<std::string> wordsFor(const ChangedKey& change) {
  std::vector<std::string> words;
  const ArrayRef before = change.before ? change.before->array() : nullptr;
  const ArrayRef now = change.now ? change.now->array() : nullptr;
  const bool areLists = (before || !change.before) && (now || !change.now);
  if (areLists && change.key == kAccountEnabledDataclasses) {
    addWords(words, now, before, " on");
    addWords(words, before, now, " off");
  } else if (areLists && change.key == kAccountProvisionedDataclasses) {
    addWords(words, now, before, " provisioned");
    addWords(words, before, now, " no longer provisioned");
  }
  if (!words.empty()) return words;
  return {change.key.str() + (!change.before ? " added" : !change.now ? " removed" : " changed")};
}

}  // namespace tallbook::tool
