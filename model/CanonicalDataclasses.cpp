// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "model/CanonicalDataclasses.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "tallbook/Vocabulary.h"

namespace tallbook {

const ArrayRef& canonicalDataclasses() {
  static const ArrayRef dataclasses = Array::makeFrozen(
      {kAccountDataclassMail, kAccountDataclassContacts, kAccountDataclassCalendars,
       kAccountDataclassReminders, kAccountDataclassBookmarks, kAccountDataclassNotes,
       kAccountDataclassMediaStream, kAccountDataclassDeviceLocator,
       kAccountDataclassContactsSearch, kAccountDataclassBackup, kAccountDataclassUbiquity,
       kAccountDataclassKeyValue, kAccountDataclassPouchet, kAccountDataclassSharedStreams});
  return dataclasses;
}

std::optional<std::size_t> canonicalPositionOf(std::string_view dataclass) {
  const Array& canonical = *canonicalDataclasses();
  for (std::size_t position = 0; position < canonical.size(); ++position) {
    if (canonical[position].stringView() == dataclass) return position;
  }
  return std::nullopt;
}

bool isInCanonicalOrder(const ArrayRef& dataclasses) {
  if (!dataclasses) return false;
  std::size_t next = 0;
  for (const Value& dataclass : *dataclasses) {
    const auto position = canonicalPositionOf(dataclass.stringView().value_or(""));
    if (!position || *position < next) return false;
    next = *position + 1;
  }
  return true;
}

std::vector<Value> inCanonicalOrder(const ArrayRef& dataclasses) {
  if (!dataclasses) return {};
  const Array& canonical = *canonicalDataclasses();
  std::vector<bool> isListed(canonical.size());
  std::vector<Value> others;
  for (const Value& dataclass : *dataclasses) {
    const auto name = dataclass.stringView();
    if (!name) continue;
    if (const auto position = canonicalPositionOf(*name)) {
      isListed[*position] = true;
    } else {
      others.push_back(dataclass);
    }
  }
  std::vector<Value> ordered;
  ordered.reserve(dataclasses->size());
  for (std::size_t position = 0; position < canonical.size(); ++position) {
    if (isListed[position]) ordered.push_back(canonical[position]);
  }
  std::ranges::move(others, std::back_inserter(ordered));
  return ordered;
}

}  // namespace tallbook
