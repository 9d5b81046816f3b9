// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// libplist: a dictionary an account, in the binary encoding. The library gives and takes bytes, so
// that the file is read and replaced as by any program that minds its data.

#include <plist/plist.h>

#include "bench/peers/WholeFile.h"

namespace tallbook::peers {
namespace {

constexpr const char* kFile = "accounts.plist";

plist_t valueOf(Kind kind, const char* text) {
  switch (kind) {
    case Kind::List: {
      plist_t list = plist_new_array();
      plist_array_append_item(list, plist_new_string(text));
      return list;
    }
    case Kind::Integer:
      return plist_new_uint(std::strtoull(text, nullptr, 10));
    case Kind::Boolean:
      return plist_new_bool(*text == '1');
    case Kind::Date:
      return plist_new_date(std::atoi(text), 0);
    case Kind::Text:
      break;
  }
  return plist_new_string(text);
}

plist_t load() {
  const std::string_view bytes = readFile(kFile);
  plist_t records = nullptr;
  plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &records);
  if (!records) fail("cannot load");
  return records;
}

void save(plist_t records) {
  char* bytes = nullptr;
  std::uint32_t size = 0;
  plist_to_bin(records, &bytes, &size);
  if (!replaceFile(".", kFile, {bytes, size})) fail("cannot save");
}

void make() {
  plist_t records = plist_new_array();
  forEachRecord([&](const Record& record) {
    plist_t account = plist_new_dict();
    plist_dict_set_item(account, kIdentifier, plist_new_string(record.identifier));
    for (std::size_t at = 0; at < std::size(kKeys); ++at) {
      plist_dict_set_item(account, kKeys[at].name, valueOf(kKeys[at].kind, record.values[at]));
    }
    plist_array_append_item(records, account);
  });
  save(records);
}

/// Calls `work` with each member.
template <class Work>
void forEachMember(plist_t array, Work work) {
  plist_array_iter at = nullptr;
  plist_array_new_iter(array, &at);
  plist_t member = nullptr;
  for (plist_array_next_item(array, at, &member); member;
       plist_array_next_item(array, at, &member)) {
    work(member);
  }
}

std::string_view text(plist_t value) {
  std::uint64_t size = 0;
  const char* bytes = plist_get_string_ptr(value, &size);
  return {bytes, size};
}

void addValue(plist_t value, const Key& key, Checksum& checksum) {
  switch (key.kind) {
    case Kind::Text:
      checksum.add(key.name, text(value));
      break;
    case Kind::List:
      forEachMember(value, [&](plist_t member) { checksum.add(key.name, text(member)); });
      break;
    case Kind::Integer: {
      std::uint64_t number = 0;
      plist_get_uint_val(value, &number);
      checksum.add(key.name, static_cast<std::int64_t>(number));
      break;
    }
    case Kind::Boolean: {
      std::uint8_t isTrue = 0;
      plist_get_bool_val(value, &isTrue);
      checksum.add(key.name, isTrue);
      break;
    }
    case Kind::Date: {
      std::int32_t seconds = 0;
      std::int32_t microseconds = 0;
      plist_get_date_val(value, &seconds, &microseconds);
      checksum.add(key.name, seconds);
      break;
    }
  }
}

void read(Checksum& checksum) {
  forEachMember(load(), [&](plist_t account) {
    checksum.add(kIdentifier, text(plist_dict_get_item(account, kIdentifier)));
    for (const Key& key : kKeys) {
      addValue(plist_dict_get_item(account, key.name), key, checksum);
    }
  });
}

void change(const Change& change) {
  plist_t records = load();
  forEachMember(records, [&](plist_t account) {
    if (text(plist_dict_get_item(account, kIdentifier)) != change.identifier) return;
    plist_dict_set_item(account, kPort, plist_new_uint(static_cast<std::uint64_t>(change.port)));
  });
  save(records);
}

}  // namespace
}  // namespace tallbook::peers

int main(int count, char** words) {
  using namespace tallbook::peers;
  return run({PEER_VERSION, make, read, change}, count, words);
}
