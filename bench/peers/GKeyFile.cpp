// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// GLib's key files: a group an account, named by its identifier.

#include <glib.h>

#include "bench/peers/Peer.h"

namespace tallbook::peers {
namespace {

constexpr const char* kFile = "accounts.ini";

void save(GKeyFile* file) {
  std::size_t size = 0;
  char* bytes = g_key_file_to_data(file, &size, nullptr);
  constexpr auto kFlags = static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT |
                                                             G_FILE_SET_CONTENTS_DURABLE);
  if (!g_file_set_contents_full(kFile, bytes, static_cast<gssize>(size), kFlags, 0600, nullptr)) {
    fail("cannot save");
  }
  g_free(bytes);
}

GKeyFile* load() {
  GKeyFile* file = g_key_file_new();
  if (!g_key_file_load_from_file(file, kFile, G_KEY_FILE_NONE, nullptr)) fail("cannot load");
  return file;
}

void make() {
  GKeyFile* file = g_key_file_new();
  forEachRecord([&](const Record& record) {
    for (std::size_t at = 0; at < std::size(kKeys); ++at) {
      const char* value = record.values[at];
      if (kKeys[at].kind == Kind::List) {
        g_key_file_set_string_list(file, record.identifier, kKeys[at].name, &value, 1);
      } else if (kKeys[at].kind == Kind::Boolean) {
        g_key_file_set_boolean(file, record.identifier, kKeys[at].name, std::atoi(value));
      } else {
        g_key_file_set_string(file, record.identifier, kKeys[at].name, value);
      }
    }
  });
  save(file);
}

void addValue(GKeyFile* file, const char* group, const Key& key, Checksum& checksum) {
  switch (key.kind) {
    case Kind::Text: {
      char* text = g_key_file_get_string(file, group, key.name, nullptr);
      checksum.add(key.name, text);
      g_free(text);
      break;
    }
    case Kind::List: {
      char** texts = g_key_file_get_string_list(file, group, key.name, nullptr, nullptr);
      for (char** text = texts; *text; ++text) checksum.add(key.name, *text);
      g_strfreev(texts);
      break;
    }
    case Kind::Integer:
      checksum.add(key.name, g_key_file_get_integer(file, group, key.name, nullptr));
      break;
    case Kind::Boolean:
      checksum.add(key.name, g_key_file_get_boolean(file, group, key.name, nullptr));
      break;
    case Kind::Date:
      checksum.add(key.name, g_key_file_get_int64(file, group, key.name, nullptr));
      break;
  }
}

void read(Checksum& checksum) {
  GKeyFile* file = load();
  char** groups = g_key_file_get_groups(file, nullptr);
  for (char** group = groups; *group; ++group) {
    checksum.add(kIdentifier, *group);
    for (const Key& key : kKeys) addValue(file, *group, key, checksum);
  }
}

void change(const Change& change) {
  GKeyFile* file = load();
  g_key_file_set_integer(file, change.identifier, kPort, change.port);
  save(file);
}

}  // namespace
}  // namespace tallbook::peers

int main(int count, char** words) {
  using namespace tallbook::peers;
  return run({PEER_VERSION, make, read, change}, count, words);
}
