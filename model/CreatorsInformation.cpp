// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "model/CreatorsInformation.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "model/DictionaryFile.h"
#include "model/DropIns.h"
#include "platform/Platform.h"

namespace tallbook {
namespace {

constexpr std::string_view kResource = "AccountCreators";

/// What a drop-in adds; nothing, with its first fault, for one that has any: whoever meets a faulty
/// entry fails, and no component may bring that upon the others.
std::vector<CreatorEntries> entriesIn(const DropIn& dropIn, std::vector<AccountCreator>& faults) {
  if (!dropIn.content) {
    faults.push_back(faultyCreator(dropIn.path, dropIn.fault));
    return {};
  }
  std::vector<CreatorEntries> added;
  added.reserve(dropIn.content->size());
  for (const auto& [type, list] : *dropIn.content) {
    added.push_back({dropIn.path, type, list});
    for (AccountCreator& creator : creatorsIn(added.back())) {
      if (creator.fault.empty()) continue;
      faults.push_back(std::move(creator));
      return {};
    }
  }
  return added;
}

}  // namespace

CreatorsInformation CreatorsInformation::read() {
  CreatorsInformation information;
  auto& [isReadable, first, entries, faults] = information;
  const std::vector<std::string> files =
      Platform::current().resourceBundle().pathsForResource(kResource, "plist");
  first = files.empty() ? std::string(kResource) + ".plist" : files.front();
  if (files.empty()) faults.push_back(faultyCreator(first, "it is not there"));
  for (const std::string& file : files) {
    std::string why;
    const DictionaryRef content = dictionaryFromFile(file, &why);
    if (!content) faults.push_back(faultyCreator(file, why));
    if (file == first) isReadable = static_cast<bool>(content);
    if (!isReadable) break;
    for (const auto& [type, list] : content) {
      // What a file before has counts.
      if (std::ranges::find(entries, type, &CreatorEntries::type) == entries.end()) {
        entries.push_back({file, type, list});
      }
    }
  }
  if (!isReadable) return information;
  for (const DropIn& dropIn : dropInsOf(kResource)) {
    const std::size_t known = faults.size();
    std::ranges::move(entriesIn(dropIn, faults), std::back_inserter(entries));
    if (faults.size() > known) logLeftOut(faults.back().place, faults.back().fault);
  }
  return information;
}

DictionaryRef CreatorsInformation::merged() const {
  if (!isReadable) return nullptr;
  const DictionaryRef all = Dictionary::make();
  for (const CreatorEntries& each : entries) {
    const ArrayRef present = (*all)[each.type].array();
    if (!present) {
      if (!all->contains(each.type)) all->set(each.type, each.list);
      continue;
    }
    const ArrayRef both = present->mutableCopy();
    for (const Value& entry : each.list.array()) both->append(entry);
    all->set(each.type, both);
  }
  return all->frozenCopy();
}

}  // namespace tallbook
