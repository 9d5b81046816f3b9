// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "fuzz/PropertyListChecks.h"

#include <cmath>
#include <optional>
#include <string>

#include "tallbook/PropertyList.h"

#include "fuzz/Check.h"

namespace tallbook::fuzz {
namespace {

// A text that is shared by very many values stands in XML as often as they do.
constexpr std::size_t kMostInXML = 1 << 20;

/// What the XML encoding makes of a value.
struct XMLForm {
  std::size_t size = 0;      ///< about as many bytes; no longer counted past `kMostInXML`
  bool hasNoNumber = false;  ///< it has one form for all reals that are no number

  void add(const Value& value, std::size_t depth) {
    size += 64 + depth;
    if (size > kMostInXML) return;
    if (const auto text = value.stringView()) size += 6 * text->size();
    if (const auto data = value.data()) size += 2 * data->bytes().size();
    hasNoNumber |= std::isnan(value.realValue());
    for (const Value& element : value.array()) add(element, depth + 1);
    for (const auto& [key, below] : value.dictionary()) {
      size += 6 * key.view().size();
      add(below, depth + 1);
    }
  }
};

void checkXML(const Value& value) {
  XMLForm form;
  form.add(value, 0);
  if (form.size > kMostInXML) return;
  const auto xml = xmlPropertyList(value);
  if (!xml) return;
  const auto again = propertyListFromBytes(xml->text);
  check(again.has_value(), "XML that was written is read");
  check(xml->hasShortenedDates || form.hasNoNumber || *again == value, "XML keeps every value");
  check(xmlPropertyList(*again)->text == xml->text, "XML is written the same again");
}

}  // namespace

void checkPropertyList(std::string_view bytes) {
  std::string problem;
  const std::optional<Value> value = propertyListFromBytes(bytes, &problem);
  check(value.has_value() || !problem.empty(), "a refusal has a reason");
  if (!value) return;

  const auto written = binaryPropertyList(*value, &problem);
  check(written.has_value(), "what is read is written: " + problem);
  const auto again = propertyListFromBytes(*written, &problem);
  check(again.has_value(), "what is written is read: " + problem);
  check(*again == *value, "the binary encoding keeps every value");
  check(binaryPropertyList(*again) == written, "the binary encoding is the same again");

  check(value->frozenCopy() == *value, "a frozen copy is equal");
  check(value->description().size() < std::size_t{3} << 19, "a description is short");
  checkXML(*value);
}

}  // namespace tallbook::fuzz
