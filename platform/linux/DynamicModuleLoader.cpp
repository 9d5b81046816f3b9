#include "platform/linux/DynamicModuleLoader.h"

#include <algorithm>
#include <dlfcn.h>

namespace tallbook {

const void* DynamicModuleLoader::load(const std::string& path, std::string& error) {
  const bool loadable =
      std::all_of(path.begin(), path.end(), [](unsigned char c) { return c != 0 && c < 0x80; });
  // The linker answers the program itself for an empty path.
  if (!loadable || path.empty()) {
    error = path + ": not a path in 7-bit text";
    return nullptr;
  }
  const void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module) return module;
  const char* reason = ::dlerror();
  error = reason ? reason : path;
  return nullptr;
}

}  // namespace tallbook
