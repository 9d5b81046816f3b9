// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "model/PlugInRegistry.h"

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tallbook/InternalConsistencyFailure.h"

#include "platform/Platform.h"

namespace tallbook {
namespace {

using MakeClass = PlugInClass (*)();

/// What the static registrations of a module asked for while it was being loaded. Nothing of it
/// counts before the load is over: a module that fails to load is gone, and its code with it.
struct ModuleLoad {
  std::vector<MakeClass> classes;
  std::optional<unsigned> foreignVersion;
};

/// A module's registrations run on the thread that loads it; this is how they find its load.
thread_local ModuleLoad* currentLoad = nullptr;

class PlugInRegistry {
 public:
  /// Never destroyed: modules and threads may look classes up until the process ends.
  static PlugInRegistry& shared() {
    static auto* const registry = new PlugInRegistry;
    return *registry;
  }

  /// The class is made when one is looked up. Most programs that have the library never do, and
  /// need not have the pages of all its parts in their memory.
  void add(MakeClass make) {
    std::scoped_lock guard(_lookingUp);
    _unmade.push_back(make);
  }

  const PlugInClass* classNamed(std::string_view name) {
    std::scoped_lock guard(_lookingUp);
    for (const MakeClass make : std::exchange(_unmade, {})) {
      PlugInClass made = make();
      std::string ownName = made.name;
      _classes.try_emplace(std::move(ownName), std::move(made));
    }
    const auto found = _classes.find(name);
    return found == _classes.end() ? nullptr : &found->second;
  }

  /// The reason why the module at `path` cannot be used; nullopt when its classes are registered.
  std::optional<std::string> load(const std::string& path) {
    // One load at a time, so that a thread that finds a module loaded finds its classes as well.
    // Recursive, because a module may load others while it is being loaded.
    std::scoped_lock guard(_loading);
    ModuleLoad load;
    ModuleLoad* const outerLoad = std::exchange(currentLoad, &load);
    std::string error;
    const void* const module = Platform::current().moduleLoader().load(path, error);
    currentLoad = outerLoad;
    if (!module) return error;

    if (load.foreignVersion) _refused.emplace(module, *load.foreignVersion);
    if (const auto refused = _refused.find(module); refused != _refused.end()) {
      return "built for version " + std::to_string(refused->second) +
             " of the plug-in interface, not for version " +
             std::to_string(kPlugInInterfaceVersion);
    }
    for (const MakeClass make : load.classes) add(make);
    return std::nullopt;
  }

 private:
  std::mutex _lookingUp;
  std::vector<MakeClass> _unmade;
  std::map<std::string, PlugInClass, std::less<>> _classes;
  std::recursive_mutex _loading;
  /// Modules of another interface version, by the loader's answer, with that version. Their
  /// registrations ran once and will not run again, so the refusal has to be remembered.
  std::map<const void*, unsigned, std::less<>> _refused;
};

std::string pathBelowRoot(std::string_view framework) {
  framework.remove_prefix(std::min(framework.find_first_not_of('/'), framework.size()));
  return Platform::current().directories().systemRoot().append("/").append(framework);
}

/// The library's own classes are registered when it starts. It is never loaded from another place,
/// such as the one that an older device tree names: a second copy would make the first copy's
/// constants anew, and both would destroy them at the end.
bool isThisLibrary(std::string_view framework) {
  return framework.substr(framework.rfind('/') + 1) == TALLBOOK_LIBRARY;
}

}  // namespace

void loadAccountCreatorFramework(std::string_view framework) {
  if (isThisLibrary(framework)) return;
  const std::string path = pathBelowRoot(framework);
  if (const auto reason = PlugInRegistry::shared().load(path)) {
    throw InternalConsistencyFailure("Could not load the account creator framework " + path +
                                     ". Error " + *reason);
  }
}

std::string whyNoModule(std::string_view framework) {
  if (isThisLibrary(framework)) return {};
  const std::string path = pathBelowRoot(framework);
  std::error_code error;
  if (Platform::current().fileSystem().exists(path, error)) return {};
  return "there is no module " + path + (error ? ": " + error.message() : "");
}

const PlugInClass* classNamed(std::string_view name) {
  return PlugInRegistry::shared().classNamed(name);
}

PlugInRegistration::PlugInRegistration(unsigned interfaceVersion, PlugInClass (*make)()) {
  const bool foreign = interfaceVersion != kPlugInInterfaceVersion;
  if (!currentLoad) {
    if (!foreign) PlugInRegistry::shared().add(make);
  } else if (foreign) {
    currentLoad->foreignVersion = interfaceVersion;
  } else {
    currentLoad->classes.push_back(make);
  }
}

}  // namespace tallbook

const tallbook::PlugInClass* tallbookClassNamed(const char* name) {
  return name ? tallbook::classNamed(name) : nullptr;
}
