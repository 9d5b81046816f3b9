// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/RecordPairing.h"

#include "tallbook/Vocabulary.h"

#include "store/IdentifierTable.h"

namespace tallbook {
namespace {

/// The records of one identifier, one of each list unless they share it.
struct Holders {
  std::size_t base = kNoRecord;
  std::size_t here = kNoRecord;
  std::size_t file = kNoRecord;
  bool isShared = false;

  void add(std::size_t Holders::*list, std::size_t position) {
    if (this->*list != kNoRecord) isShared = true;
    this->*list = position;
  }
};

void addAll(IdentifierTable<Holders>& table, std::size_t Holders::*list,
            const std::vector<DictionaryRef>& records) {
  for (std::size_t at = 0; at < records.size(); ++at) {
    if (const String identifier = records[at][kAccountIdentifier].string()) {
      table[identifier].add(list, at);
    }
  }
}

/// Whether the record was read without an identifier and received one of its own then, under which
/// nobody else can know it.
bool wasNameless(const HeldRecord& record) {
  return !record.original.empty() && !record.original[kAccountIdentifier].stringView();
}

}  // namespace

RecordPairing::RecordPairing(const std::vector<DictionaryRef>& base,
                             const std::vector<HeldRecord>& here,
                             const std::vector<DictionaryRef>& file)
    : ofHere(here.size()), ofFile(file.size()) {
  IdentifierTable<Holders> table;
  table.reserve(file.size());
  addAll(table, &Holders::base, base);
  addAll(table, &Holders::file, file);
  for (std::size_t at = 0; at < here.size(); ++at) {
    const String identifier = here[at].properties[kAccountIdentifier].string();
    if (!identifier) continue;
    Holders& holders = table[identifier];
    if (holders.file == kNoRecord && wasNameless(here[at])) continue;
    holders.add(&Holders::here, at);
  }

  std::vector<bool> isBaseKnown(base.size());
  std::vector<bool> isFileKnown(file.size());
  table.forEach([&](const String&, const Holders& holders) {
    if (holders.isShared) return;
    if (holders.base != kNoRecord) isBaseKnown[holders.base] = true;
    if (holders.here != kNoRecord) ofHere[holders.here] = {holders.base, holders.file, false};
    if (holders.file != kNoRecord) {
      isFileKnown[holders.file] = true;
      ofFile[holders.file] = {holders.here, holders.base};
    }
  });

  RecordsByContent baseLeft;
  RecordsByContent fileLeft;
  for (std::size_t at = 0; at < base.size(); ++at) {
    if (!isBaseKnown[at]) baseLeft.file(base[at], at);
  }
  for (std::size_t at = 0; at < file.size(); ++at) {
    if (!isFileKnown[at]) fileLeft.file(file[at], at);
  }
  for (std::size_t at = 0; at < here.size(); ++at) {
    OfHere& others = ofHere[at];
    if (!others.isKnownByContent) continue;
    const auto& [properties, original] = here[at];
    const DictionaryRef& content = original.empty() ? properties : original;
    others = {baseLeft.take(content), fileLeft.take(content), true};
    if (others.base != kNoRecord) isBaseKnown[others.base] = true;
    if (others.file != kNoRecord) ofFile[others.file] = {at, others.base};
  }
  // What nobody here accounts for any more was deleted here.
  for (std::size_t at = 0; at < base.size(); ++at) {
    if (isBaseKnown[at]) continue;
    const std::size_t deleted = fileLeft.take(base[at]);
    if (deleted != kNoRecord) ofFile[deleted].base = at;
  }
}

}  // namespace tallbook
