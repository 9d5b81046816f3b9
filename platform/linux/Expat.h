// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <expat.h>

namespace tallbook {

/// What is called of expat, under the names that it has there. It is loaded with the first XML: the
/// accounts file and the shipped resources are binary, and most programs meet no other files.
struct Expat {
  decltype(&::XML_ParserCreate) ParserCreate = nullptr;
  decltype(&::XML_ParserFree) ParserFree = nullptr;
  decltype(&::XML_SetUserData) SetUserData = nullptr;
  decltype(&::XML_SetElementHandler) SetElementHandler = nullptr;
  decltype(&::XML_SetCharacterDataHandler) SetCharacterDataHandler = nullptr;
  decltype(&::XML_SetEntityDeclHandler) SetEntityDeclHandler = nullptr;
  decltype(&::XML_SetSkippedEntityHandler) SetSkippedEntityHandler = nullptr;
  decltype(&::XML_Parse) Parse = nullptr;
  decltype(&::XML_StopParser) StopParser = nullptr;
  decltype(&::XML_GetErrorCode) GetErrorCode = nullptr;
  decltype(&::XML_ErrorString) ErrorString = nullptr;

  /// Throws std::system_error where it cannot be loaded, and tries again the next time.
  /// Thread-safe.
  static const Expat& library();
};

}  // namespace tallbook
