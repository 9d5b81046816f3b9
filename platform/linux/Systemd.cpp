#include "platform/linux/Systemd.h"

#include <dlfcn.h>
#include <optional>

namespace tallbook {
namespace {

class Functions {
 public:
  explicit Functions(void* library) : _library(library) {}

  template <class Function>
  void find(Function*& function, const char* name) {
    function = reinterpret_cast<Function*>(::dlsym(_library, name));
    _isComplete &= function != nullptr;
  }
  bool isComplete() const { return _isComplete; }

 private:
  void* _library;
  bool _isComplete = true;
};

std::optional<Systemd> loaded() {
  void* const library = ::dlopen("libsystemd.so.0", RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
  if (!library) return std::nullopt;
  Systemd systemd;
  Functions functions(library);
  functions.find(systemd.journal_sendv, "sd_journal_sendv");
  functions.find(systemd.bus_new, "sd_bus_new");
  functions.find(systemd.bus_set_address, "sd_bus_set_address");
  functions.find(systemd.bus_set_bus_client, "sd_bus_set_bus_client");
  functions.find(systemd.bus_start, "sd_bus_start");
  functions.find(systemd.bus_open_system, "sd_bus_open_system");
  functions.find(systemd.bus_open_user, "sd_bus_open_user");
  functions.find(systemd.bus_message_new_signal, "sd_bus_message_new_signal");
  functions.find(systemd.bus_message_append_basic, "sd_bus_message_append_basic");
  functions.find(systemd.bus_message_unref, "sd_bus_message_unref");
  functions.find(systemd.bus_send, "sd_bus_send");
  functions.find(systemd.bus_is_ready, "sd_bus_is_ready");
  functions.find(systemd.bus_get_n_queued_write, "sd_bus_get_n_queued_write");
  functions.find(systemd.bus_process, "sd_bus_process");
  functions.find(systemd.bus_wait, "sd_bus_wait");
  functions.find(systemd.bus_close, "sd_bus_close");
  functions.find(systemd.bus_unref, "sd_bus_unref");
  return functions.isComplete() ? std::optional(systemd) : std::nullopt;
}

}  // namespace

const Systemd* Systemd::library() {
  static const std::optional<Systemd> library = loaded();
  return library ? &*library : nullptr;
}

}  // namespace tallbook
