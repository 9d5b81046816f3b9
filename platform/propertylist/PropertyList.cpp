// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/PropertyList.h"

#include "platform/propertylist/BinaryReader.h"
#include "platform/propertylist/BinaryWriter.h"
#include "platform/propertylist/MalformedPropertyList.h"
#include "platform/propertylist/XMLReader.h"
#include "platform/propertylist/XMLWriter.h"

namespace tallbook {

std::optional<Value> propertyListFromBytes(std::string_view bytes, std::string* problem) {
  try {
    if (BinaryReader::recognises(bytes)) return BinaryReader(bytes).read();
    return XMLReader::read(bytes);
  } catch (const MalformedPropertyList& malformed) {
    if (problem) *problem = malformed.what();
    return std::nullopt;
  }
}

std::optional<std::string> binaryPropertyList(const Value& root, std::string* errorDescription) {
  try {
    return BinaryWriter::encoded(root);
  } catch (const MalformedPropertyList& malformed) {
    if (errorDescription) *errorDescription = malformed.what();
    return std::nullopt;
  }
}

std::optional<XMLPropertyList> xmlPropertyList(const Value& root, std::string* errorDescription) {
  try {
    return xmlText(root);
  } catch (const MalformedPropertyList& malformed) {
    if (errorDescription) *errorDescription = malformed.what();
    return std::nullopt;
  }
}

}  // namespace tallbook
