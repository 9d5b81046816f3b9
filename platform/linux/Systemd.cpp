// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/Systemd.h"

#include <optional>

#include "platform/linux/LibraryOnDemand.h"

namespace tallbook {
namespace {

std::optional<Systemd> loaded() {
  Systemd systemd;
  LibraryOnDemand library("libsystemd.so.0");
  library.find(systemd.journal_sendv, "sd_journal_sendv");
  library.find(systemd.bus_new, "sd_bus_new");
  library.find(systemd.bus_set_address, "sd_bus_set_address");
  library.find(systemd.bus_set_bus_client, "sd_bus_set_bus_client");
  library.find(systemd.bus_start, "sd_bus_start");
  library.find(systemd.bus_open_system, "sd_bus_open_system");
  library.find(systemd.bus_open_user, "sd_bus_open_user");
  library.find(systemd.bus_message_new_signal, "sd_bus_message_new_signal");
  library.find(systemd.bus_message_append_basic, "sd_bus_message_append_basic");
  library.find(systemd.bus_message_append_strv, "sd_bus_message_append_strv");
  library.find(systemd.bus_message_unref, "sd_bus_message_unref");
  library.find(systemd.bus_send, "sd_bus_send");
  library.find(systemd.bus_is_ready, "sd_bus_is_ready");
  library.find(systemd.bus_get_n_queued_write, "sd_bus_get_n_queued_write");
  library.find(systemd.bus_process, "sd_bus_process");
  library.find(systemd.bus_wait, "sd_bus_wait");
  library.find(systemd.bus_close, "sd_bus_close");
  library.find(systemd.bus_unref, "sd_bus_unref");
  return library.isComplete() ? std::optional(systemd) : std::nullopt;
}

}  // namespace

const Systemd* Systemd::library() {
  static const std::optional<Systemd> library = loaded();
  return library ? &*library : nullptr;
}

}  // namespace tallbook
