#include <string>

#include "tallbook/BasicAccount.h"
#include "tallbook/Vocabulary.h"

namespace tallbook {
namespace {

std::string otherKind(const Value& value, std::string_view wanted) {
  return "is of the kind " + std::string(nameOfKind(value.kind())) + ", not " + std::string(wanted);
}

}  // namespace

std::string BasicAccount::whyNoRecord(const Value& properties) {
  using Kind = Value::Kind;
  initialize();
  const DictionaryRef record = properties.dictionary();
  if (!record) return "it " + otherKind(properties, "dictionary");
  const Value& type = (*record)[kAccountType];
  if (type.isNull()) return "it has no \"Type\"";
  if (type.kind() != Kind::String) return "its \"Type\" " + otherKind(type, "string");
  if (!_isValidAccountType(*type.stringView())) {
    return "there is no account type \"" + type.string().str() + "\"";
  }
  const Value& className = (*record)[kAccountClass];
  if (className.isNull()) return "it has no \"Class\"";
  if (className.kind() != Kind::String) return "its \"Class\" " + otherKind(className, "string");
  return className.string().empty() ? "its \"Class\" is empty" : "";
}

}  // namespace tallbook
