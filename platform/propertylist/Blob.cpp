// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cstring>
#include <new>

#include "tallbook/String.h"

namespace tallbook {

Ref<Blob> Blob::uninitialised(std::size_t size) {
  void* memory = ::operator new(sizeof(Blob) + size);
  return Ref<Blob>(new (memory) Blob(size));
}

Ref<Blob> Blob::copyOf(std::string_view bytes) {
  return make(bytes.size(), [bytes](char* to) {
    if (!bytes.empty()) std::memcpy(to, bytes.data(), bytes.size());
  });
}

void Blob::destroy(Blob* blob) noexcept {
  blob->~Blob();
  ::operator delete(blob);
}

}  // namespace tallbook
