// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/DeviceBus.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <utility>

#include "platform/linux/Systemd.h"

namespace tallbook {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr microseconds kPatience = std::chrono::seconds(1);

/// A connection, closed with its owner.
class Bus {
 public:
  Bus(const Systemd& systemd, sd_bus* bus) : _systemd(systemd), _bus(bus, Close{systemd}) {}

  explicit operator bool() const { return _bus != nullptr; }

  /// Connecting, greeting and sending happen here, in steps that never outlast the deadline.
  bool deliver(const MessageBus::Signal& signal,
               const std::vector<MessageBus::Arguments>& each) const {
    for (const MessageBus::Arguments& arguments : each) {
      const Message message = makeSignal(signal, arguments);
      if (!message || _systemd.bus_send(_bus.get(), message.get(), nullptr) < 0) return false;
    }
    const auto deadline = Clock::now() + kPatience;
    while (!isDelivered()) {
      const auto left = std::chrono::duration_cast<microseconds>(deadline - Clock::now());
      if (left.count() <= 0) return false;
      const int progress = _systemd.bus_process(_bus.get(), nullptr);
      if (progress < 0) return false;
      if (progress > 0) continue;
      if (_systemd.bus_wait(_bus.get(), static_cast<std::uint64_t>(left.count())) < 0) return false;
    }
    return true;
  }

 private:
  struct Close {
    const Systemd& systemd;
    void operator()(sd_bus* bus) const {
      systemd.bus_close(bus);
      systemd.bus_unref(bus);
    }
  };
  struct Drop {
    const Systemd& systemd;
    void operator()(sd_bus_message* message) const { systemd.bus_message_unref(message); }
  };
  using Message = std::unique_ptr<sd_bus_message, Drop>;

  Message makeSignal(const MessageBus::Signal& signal,
                     const MessageBus::Arguments& arguments) const {
    sd_bus_message* made = nullptr;
    const bool begun = _systemd.bus_message_new_signal(_bus.get(), &made, signal.path,
                                                       signal.interface, signal.member) >= 0;
    Message message(made, Drop{_systemd});
    const bool complete = begun && std::ranges::all_of(arguments, [&](const auto& argument) {
                            return append(made, argument);
                          });
    if (!complete) message.reset();
    return message;
  }

  bool append(sd_bus_message* message, const MessageBus::Argument& argument) const {
    if (const auto* text = std::get_if<std::string>(&argument)) {
      return _systemd.bus_message_append_basic(message, 's', text->c_str()) >= 0;
    }
    const auto& texts = std::get<std::vector<std::string>>(argument);
    std::vector<char*> words;
    words.reserve(texts.size() + 1);
    for (const std::string& text : texts) words.push_back(const_cast<char*>(text.c_str()));
    words.push_back(nullptr);
    return _systemd.bus_message_append_strv(message, words.data()) >= 0;
  }

  bool isDelivered() const {
    std::uint64_t waiting = 0;
    return _systemd.bus_is_ready(_bus.get()) > 0 &&
           _systemd.bus_get_n_queued_write(_bus.get(), &waiting) >= 0 && waiting == 0;
  }

  const Systemd& _systemd;
  std::unique_ptr<sd_bus, Close> _bus;
};

Bus connectTo(const Systemd& systemd, const std::string& address) {
  sd_bus* made = nullptr;
  systemd.bus_new(&made);
  Bus bus(systemd, made);
  const bool started = made && systemd.bus_set_address(made, address.c_str()) >= 0 &&
                       systemd.bus_set_bus_client(made, 1) >= 0 && systemd.bus_start(made) >= 0;
  return started ? std::move(bus) : Bus(systemd, nullptr);
}

Bus busOfRunningSystem(const Systemd& systemd) {
  sd_bus* bus = nullptr;
  if (systemd.bus_open_system(&bus) < 0 && systemd.bus_open_user(&bus) < 0) bus = nullptr;
  return Bus(systemd, bus);
}

}  // namespace

bool DeviceBus::emit(const Signal& signal, const std::vector<Arguments>& each) {
  if (_isMute) return false;
  // By the socket's own inode: a link in the tree must not lead to the bus of the machine around
  // it.
  FileDescriptor socket;
  if (!_root.path().empty()) {
    std::error_code error;
    socket = _root.open(_root.path() + "/run/dbus/system_bus_socket", O_PATH, 0, error);
    if (!socket) return false;
  }
  const Systemd* const systemd = Systemd::library();
  if (!systemd) return false;
  const Bus bus =
      socket ? connectTo(*systemd, "unix:path=/proc/self/fd/" + std::to_string(socket.get()))
             : busOfRunningSystem(*systemd);
  return bus && bus.deliver(signal, each);
}

}  // namespace tallbook
