#include "tools/tallbook-migrate/Module.h"

// A migration host loads its plug-ins itself, as the operating system's own host does; the
// library's loader of modules is for modules of the library.
#include <dlfcn.h>

#include "tallbook/PlugInClass.h"

namespace tallbook::migrate {
namespace {

std::string lastError() {
  const char* const text = ::dlerror();
  return text ? text : "unknown reason";
}

}  // namespace

std::unique_ptr<DataMigrator> migratorOfModule(const std::string& path,
                                               const std::string& className) {
  void* const module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!module) {
    throw ModuleFailure("the module " + path + " cannot be loaded: " + lastError() +
                        "; give the path of a migration plug-in with --module");
  }
  using LookUp = const PlugInClass* (*)(const char*);
  const auto lookUp = reinterpret_cast<LookUp>(::dlsym(module, "tallbookClassNamed"));
  if (!lookUp) {
    throw ModuleFailure("the module " + path + " is no migration plug-in: " + lastError() +
                        "; give another with --module");
  }
  // A second library would not know the root that this one was given, and migrate the running
  // system instead.
  if (lookUp != &tallbookClassNamed) {
    throw ModuleFailure("the module " + path +
                        " brings a library of its own; link it to the library that this program "
                        "uses, or run the program that belongs to it");
  }
  const PlugInClass* const found = lookUp(className.c_str());
  if (!found) {
    throw ModuleFailure("the module " + path + " has no class \"" + className +
                        "\"; give the name of its principal class with --class");
  }
  auto migrator = found->makeDataMigrator ? found->makeDataMigrator() : nullptr;
  if (!migrator) {
    throw ModuleFailure("the class \"" + className +
                        "\" migrates nothing; give another with --class");
  }
  return migrator;
}

}  // namespace tallbook::migrate
