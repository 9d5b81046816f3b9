// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/Expat.h"

#include <cerrno>
#include <system_error>

#include "platform/linux/LibraryOnDemand.h"

namespace tallbook {
namespace {

Expat loaded() {
  Expat expat;
  LibraryOnDemand library("libexpat.so.1");
  library.find(expat.ParserCreate, "XML_ParserCreate");
  library.find(expat.ParserFree, "XML_ParserFree");
  library.find(expat.SetUserData, "XML_SetUserData");
  library.find(expat.SetElementHandler, "XML_SetElementHandler");
  library.find(expat.SetCharacterDataHandler, "XML_SetCharacterDataHandler");
  library.find(expat.SetEntityDeclHandler, "XML_SetEntityDeclHandler");
  library.find(expat.SetSkippedEntityHandler, "XML_SetSkippedEntityHandler");
  library.find(expat.Parse, "XML_Parse");
  library.find(expat.StopParser, "XML_StopParser");
  library.find(expat.GetErrorCode, "XML_GetErrorCode");
  library.find(expat.ErrorString, "XML_ErrorString");
  if (!library.isComplete()) {
    throw std::system_error(ELIBACC, std::generic_category(), "libexpat.so.1");
  }
  return expat;
}

}  // namespace

const Expat& Expat::library() {
  static const Expat library = loaded();
  return library;
}

}  // namespace tallbook
