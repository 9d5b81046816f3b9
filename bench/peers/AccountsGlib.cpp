// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// libaccounts-glib: an account of its own kind, the keys as its settings.

#include <libaccounts-glib.h>

#include "bench/peers/Peer.h"

namespace tallbook::peers {
namespace {

constexpr const char* kProvider = "example";

// Everything in the working directory, nothing of the user's, and no messages to other processes.
AgManager* manager() {
  for (const char* place :
       {"ACCOUNTS", "AG_PROVIDERS", "AG_SERVICES", "AG_SERVICE_TYPES", "AG_APPLICATIONS"}) {
    g_setenv(place, ".", TRUE);
  }
  gpointer made = g_initable_new(AG_TYPE_MANAGER, nullptr, nullptr, "use-dbus", FALSE, nullptr);
  if (!made) fail("cannot open");
  return AG_MANAGER(made);
}

void save(AgAccount* account) {
  GError* error = nullptr;
  if (!ag_account_store_blocking(account, &error)) fail(error->message);
}

GVariant* valueOf(Kind kind, const char* text) {
  switch (kind) {
    case Kind::List:
      return g_variant_new_strv(&text, 1);
    case Kind::Integer:
      return g_variant_new_int32(std::atoi(text));
    case Kind::Boolean:
      return g_variant_new_boolean(*text == '1');
    case Kind::Date:
      return g_variant_new_int64(std::strtoll(text, nullptr, 10));
    case Kind::Text:
      break;
  }
  return g_variant_new_string(text);
}

void make() {
  AgManager* accounts = manager();
  forEachRecord([&](const Record& record) {
    AgAccount* account = ag_manager_create_account(accounts, kProvider);
    ag_account_set_variant(account, kIdentifier, g_variant_new_string(record.identifier));
    for (std::size_t at = 0; at < std::size(kKeys); ++at) {
      ag_account_set_variant(account, kKeys[at].name, valueOf(kKeys[at].kind, record.values[at]));
    }
    save(account);
    g_object_unref(account);
  });
}

void addValue(const char* key, GVariant* value, Checksum& checksum) {
  if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING)) {
    checksum.add(key, g_variant_get_string(value, nullptr));
  } else if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING_ARRAY)) {
    const char** texts = g_variant_get_strv(value, nullptr);
    for (const char** text = texts; *text; ++text) checksum.add(key, *text);
    g_free(texts);
  } else if (g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN)) {
    checksum.add(key, g_variant_get_boolean(value));
  } else if (g_variant_is_of_type(value, G_VARIANT_TYPE_INT32)) {
    checksum.add(key, g_variant_get_int32(value));
  } else {
    checksum.add(key, g_variant_get_int64(value));
  }
}

void read(Checksum& checksum) {
  AgManager* accounts = manager();
  for (GList* at = ag_manager_list(accounts); at; at = at->next) {
    AgAccount* account = ag_manager_get_account(accounts, GPOINTER_TO_UINT(at->data));
    AgAccountSettingIter settings;
    ag_account_settings_iter_init(account, &settings, nullptr);
    const char* key = nullptr;
    GVariant* value = nullptr;
    while (ag_account_settings_iter_get_next(&settings, &key, &value)) {
      addValue(key, value, checksum);
    }
  }
}

// Accounts are numbered in the order in which they were made, from 1 on.
void change(const Change& change) {
  AgAccount* account = ag_manager_get_account(manager(), change.number + 1);
  ag_account_set_variant(account, kPort, g_variant_new_int32(change.port));
  save(account);
}

}  // namespace
}  // namespace tallbook::peers

int main(int count, char** words) {
  using namespace tallbook::peers;
  return run({PEER_VERSION, make, read, change}, count, words);
}
