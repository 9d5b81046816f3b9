#include "platform/linux/DeviceBus.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <systemd/sd-bus.h>

namespace tallbook {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr microseconds kPatience = std::chrono::seconds(1);

struct CloseBus {
  void operator()(sd_bus* bus) const {
    sd_bus_close(bus);
    sd_bus_unref(bus);
  }
};
struct DropMessage {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Bus = std::unique_ptr<sd_bus, CloseBus>;
using Message = std::unique_ptr<sd_bus_message, DropMessage>;

Bus connectTo(const std::string& address) {
  sd_bus* made = nullptr;
  if (sd_bus_new(&made) < 0) return nullptr;
  Bus bus(made);
  const bool started = sd_bus_set_address(made, address.c_str()) >= 0 &&
                       sd_bus_set_bus_client(made, 1) >= 0 && sd_bus_start(made) >= 0;
  return started ? std::move(bus) : nullptr;
}

Bus connectTo(int (*open)(sd_bus**)) {
  sd_bus* bus = nullptr;
  return open(&bus) >= 0 ? Bus(bus) : nullptr;
}

Bus busBelow(const DeviceRoot& root) {
  if (!root.path().empty()) {
    // By the socket's own inode: a link in the tree must not lead to the bus of the machine around
    // it.
    std::error_code error;
    const FileDescriptor socket =
        root.open(root.path() + "/run/dbus/system_bus_socket", O_PATH, 0, error);
    if (!socket) return nullptr;
    return connectTo("unix:path=/proc/self/fd/" + std::to_string(socket.get()));
  }
  Bus system = connectTo(sd_bus_open_system);
  return system ? std::move(system) : connectTo(sd_bus_open_user);
}

Message makeSignal(sd_bus* bus, const DeviceBus::Signal& signal,
                   std::initializer_list<std::string> arguments) {
  sd_bus_message* made = nullptr;
  if (sd_bus_message_new_signal(bus, &made, signal.path, signal.interface, signal.member) < 0) {
    return nullptr;
  }
  Message message(made);
  const bool complete =
      std::all_of(arguments.begin(), arguments.end(), [&](const std::string& argument) {
        return sd_bus_message_append_basic(made, 's', argument.c_str()) >= 0;
      });
  return complete ? std::move(message) : nullptr;
}

bool isDelivered(sd_bus* bus) {
  std::uint64_t waiting = 0;
  return sd_bus_is_ready(bus) > 0 && sd_bus_get_n_queued_write(bus, &waiting) >= 0 && waiting == 0;
}

// Connecting, greeting and sending happen here, in steps that never outlast the deadline.
void runUntilDelivered(sd_bus* bus) {
  const auto deadline = Clock::now() + kPatience;
  while (!isDelivered(bus)) {
    const auto left = std::chrono::duration_cast<microseconds>(deadline - Clock::now());
    if (left.count() <= 0) return;
    const int progress = sd_bus_process(bus, nullptr);
    if (progress < 0) return;
    if (progress == 0 && sd_bus_wait(bus, static_cast<std::uint64_t>(left.count())) < 0) return;
  }
}

}  // namespace

void DeviceBus::emit(const Signal& signal, std::initializer_list<std::string> arguments) const {
  const Bus bus = busBelow(_root);
  if (!bus) return;
  const Message message = makeSignal(bus.get(), signal, arguments);
  if (!message || sd_bus_send(bus.get(), message.get(), nullptr) < 0) return;
  runUntilDelivered(bus.get());
}

}  // namespace tallbook
