// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook-migrate/Module.h"

// A migration host loads its plug-ins itself, as the operating system's own host does; the
// library's loader of modules is for modules of the library.
#include <dlfcn.h>

#include "tallbook/PlugInClass.h"

namespace tallbook::migrate {
namespace {

[[noreturn]] void fail(const std::string& what, const std::string& advice) {
  throw ModuleFailure("the " + what + "; give another with " + advice);
}

std::string lastError() {
  const char* const text = ::dlerror();
  return text ? text : "unknown reason";
}

}  // namespace

std::unique_ptr<DataMigrator> migratorOfModule(const std::string& path,
                                               const std::string& className) {
  const std::string module = "module " + path;
  void* const loaded = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!loaded) fail(module + " cannot be loaded: " + lastError(), "--module");
  using LookUp = const PlugInClass* (*)(const char*);
  const auto lookUp = reinterpret_cast<LookUp>(::dlsym(loaded, "tallbookClassNamed"));
  if (!lookUp) fail(module + " is no migration plug-in: " + lastError(), "--module");
  // A second library would not know the root that this one was given, and migrate the running
  // system instead.
  if (lookUp != &tallbookClassNamed) {
    fail(module + " brings a library of its own, not the one that this program uses", "--module");
  }
  const PlugInClass* const found = lookUp(className.c_str());
  if (!found) fail(module + " has no class \"" + className + "\"", "--class");
  auto migrator = found->makeDataMigrator ? found->makeDataMigrator() : nullptr;
  if (!migrator) fail("class \"" + className + "\" migrates nothing", "--class");
  return migrator;
}

}  // namespace tallbook::migrate
