#include "tools/common/LoadFault.h"

#include "tallbook/AccountsManager.h"
#include "tallbook/Vocabulary.h"

#include "tools/common/KindName.h"

namespace tallbook::tool {
namespace {

using Kind = Value::Kind;

std::string otherKind(const Value& value, std::string_view wanted) {
  return "is of the kind " + std::string(nameOfKind(value.kind())) + ", not " + std::string(wanted);
}

std::string quoted(const String& text) {
  return "\"" + text.str() + "\"";
}

}  // namespace

std::string whyNoRecord(const Value& element) {
  const DictionaryRef record = element.dictionary();
  if (!record) return "it " + otherKind(element, "dictionary");
  const Value& type = (*record)[kAccountType];
  if (type.isNull()) return "it has no \"Type\"";
  if (type.kind() != Kind::String) return "its \"Type\" " + otherKind(type, "string");
  if (!BasicAccount::_isValidAccountType(*type.stringView())) {
    return "there is no account type " + quoted(type.string());
  }
  const Value& className = (*record)[kAccountClass];
  if (className.isNull()) return "it has no \"Class\"";
  if (className.kind() != Kind::String) return "its \"Class\" " + otherKind(className, "string");
  return className.string().empty() ? "its \"Class\" is empty" : "";
}

std::string whyDropped(const Value& element) {
  std::string fault = whyNoRecord(element);
  if (!fault.empty()) return fault;
  if (AccountsManager::initWithAccounsInfoArray(Array::make({element}))->count() > 0) return {};
  return "its class " + quoted(element.dictionary()[kAccountClass].string()) +
         " is none of a mail account, and \"AccountPath\" does not tell another";
}

}  // namespace tallbook::tool
