#pragma once

#include "platform/ModuleLoader.h"

namespace tallbook {

/// The dynamic linker. A module's symbols are its own: two modules may use one name.
class DynamicModuleLoader final : public ModuleLoader {
 public:
  const void* load(const std::string& path, std::string& error) override;
};

}  // namespace tallbook
