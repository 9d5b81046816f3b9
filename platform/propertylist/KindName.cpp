// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/Value.h"

namespace tallbook {

std::string_view nameOfKind(Value::Kind kind) noexcept {
  switch (kind) {
    case Value::Kind::Null:
      return "null";
    case Value::Kind::Boolean:
      return "boolean";
    case Value::Kind::Integer:
      return "integer";
    case Value::Kind::Real:
      return "real";
    case Value::Kind::Date:
      return "date";
    case Value::Kind::UID:
      return "uid";
    case Value::Kind::String:
      return "string";
    case Value::Kind::Data:
      return "data";
    case Value::Kind::Array:
      return "array";
    case Value::Kind::Dictionary:
      return "dictionary";
  }
  return "unknown";
}

std::string textOfWrongKind(const Value& value, std::string_view wanted) {
  return std::string("is of the kind ")
      .append(nameOfKind(value.kind()))
      .append(", not ")
      .append(wanted);
}

}  // namespace tallbook
