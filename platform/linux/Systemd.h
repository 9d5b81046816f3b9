// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

// The journal would otherwise be told a line of the caller's as the origin of every message.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-bus.h>
#include <systemd/sd-journal.h>

namespace tallbook {

/// What is called of libsystemd, under the names that it has there. It is loaded when it is first
/// asked for, and stays: it brings half a dozen libraries along, compression and cryptography,
/// which a program that only reads accounts has no use for.
struct Systemd {
  decltype(&::sd_journal_sendv) journal_sendv = nullptr;

  decltype(&::sd_bus_new) bus_new = nullptr;
  decltype(&::sd_bus_set_address) bus_set_address = nullptr;
  decltype(&::sd_bus_set_bus_client) bus_set_bus_client = nullptr;
  decltype(&::sd_bus_start) bus_start = nullptr;
  decltype(&::sd_bus_open_system) bus_open_system = nullptr;
  decltype(&::sd_bus_open_user) bus_open_user = nullptr;
  decltype(&::sd_bus_message_new_signal) bus_message_new_signal = nullptr;
  decltype(&::sd_bus_message_append_basic) bus_message_append_basic = nullptr;
  decltype(&::sd_bus_message_append_strv) bus_message_append_strv = nullptr;
  decltype(&::sd_bus_message_unref) bus_message_unref = nullptr;
  decltype(&::sd_bus_send) bus_send = nullptr;
  decltype(&::sd_bus_is_ready) bus_is_ready = nullptr;
  decltype(&::sd_bus_get_n_queued_write) bus_get_n_queued_write = nullptr;
  decltype(&::sd_bus_process) bus_process = nullptr;
  decltype(&::sd_bus_wait) bus_wait = nullptr;
  decltype(&::sd_bus_close) bus_close = nullptr;
  decltype(&::sd_bus_unref) bus_unref = nullptr;

  /// Null where the library is not installed, or too old to have all of them. Thread-safe.
  static const Systemd* library();
};

}  // namespace tallbook
