// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/DataclassNames.h"

#include "model/CanonicalDataclasses.h"
#include "model/UpperCase.h"

namespace tallbook {

std::string shortNameOfDataclass(std::string_view dataclass) {
  if (dataclass.starts_with(kDataclassPrefix)) dataclass.remove_prefix(kDataclassPrefix.size());
  return std::string(dataclass);
}

std::string shortNamesOfDataclasses(const ArrayRef& dataclasses) {
  if (!dataclasses) return "not set";
  std::string names;
  for (const Value& dataclass : *dataclasses) {
    if (!names.empty()) names += ", ";
    names += shortNameOfDataclass(dataclass.stringView().value_or(""));
  }
  return names.empty() ? "none" : names;
}

String dataclassNamed(std::string_view name) {
  for (const Value& dataclass : *canonicalDataclasses()) {
    const String full = dataclass.string();
    if (full == name || upperCase(shortNameOfDataclass(full)) == upperCase(name)) return full;
  }
  return nullptr;
}

}  // namespace tallbook
