// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <dlfcn.h>

namespace tallbook {

/// A shared library that is loaded when it is first needed, and stays.
class LibraryOnDemand {
 public:
  explicit LibraryOnDemand(const char* soname)
      : _handle(::dlopen(soname, RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE)) {}

  /// Leaves `function` as it is where there is no such function, or no such library.
  template <class Function>
  void find(Function*& function, const char* name) {
    void* const found = _handle ? ::dlsym(_handle, name) : nullptr;
    _isComplete &= found != nullptr;
    if (found) function = reinterpret_cast<Function*>(found);
  }
  /// Whether all that was looked for was found.
  bool isComplete() const { return _isComplete; }

 private:
  void* _handle;
  bool _isComplete = true;
};

}  // namespace tallbook
