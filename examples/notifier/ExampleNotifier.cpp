// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A notifier: told about every change of the accounts that concern it. It writes what it is told
// to the file named by EXAMPLE_NOTIFIER_LOG, or to standard error.

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

#include "tallbook/PlugInClass.h"
#include "tallbook/Vocabulary.h"

namespace {

using namespace tallbook;

void write(const std::string& text) {
  if (const char* path = std::getenv("EXAMPLE_NOTIFIER_LOG")) {
    std::ofstream(path, std::ios::app) << text;
  } else {
    std::cerr << text;
  }
}

std::string nameOfChange(std::int64_t changeType) {
  switch (changeType) {
    case 0:
      return "added";
    case 1:
      return "changed";
    case 2:
      return "removed";
  }
  return "change " + std::to_string(changeType);
}

// A record says what the account carried before; what it carries now is asked of a store.
std::string describe(const DictionaryRef& change) {
  const Value& dataclasses = (*change)[kTBChangeAccountOriginallyEnabledDataclassesKey];
  return "  " + nameOfChange((*change)[kTBChangeAccountChangeTypeKey].integerValue()) + " " +
         (*change)[kTBChangeAccountTypeKey].string().str() + " " +
         (*change)[kTBChangeAccountIdentifierKey].string().str() +
         ", enabled before: " + dataclasses.description() + "\n";
}

void noteAccountChanges(const ArrayRef& changes) {
  std::string text = "batch of " + std::to_string(changes->size()) + ":\n";
  for (const Value& change : *changes) text += describe(change.dictionary());
  write(text);
}

PlugInClass makeNotifier() {
  PlugInClass notifier;
  notifier.name = "ExampleNotifier";
  notifier.accountWillChangeForDataclass = [](const String& identifier, const String& dataclass) {
    write("will switch " + dataclass.str() + " of " + identifier.str() + "\n");
  };
  notifier.accountDidChangeForDataclass = [](const String& identifier, const String& dataclass) {
    write("did switch " + dataclass.str() + " of " + identifier.str() + "\n");
  };
  notifier.noteAccountChanges = noteAccountChanges;
  return notifier;
}

const PlugInRegistration registration(kPlugInInterfaceVersion, makeNotifier);

}  // namespace
