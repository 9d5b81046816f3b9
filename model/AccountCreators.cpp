#include "tallbook/AccountCreators.h"

#include <algorithm>
#include <system_error>

#include "tallbook/BasicAccount.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "model/AccountTypeCatalogue.h"
#include "model/PlugInRegistry.h"
#include "platform/Platform.h"

namespace tallbook {
namespace {

using Kind = Value::Kind;

constexpr std::string_view kResource = "AccountCreators";
constexpr std::string_view kDataclassPrefix = "com.orvane.Dataclass.";

std::vector<std::string> files() {
  return Platform::current().resourceBundle().pathsForResource(kResource, "plist");
}

std::string quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

/// Why a notifier hears of nothing, or not of all that it is to hear of.
std::string faultOfDataclasses(const Value& dataclasses) {
  const std::string key = quoted(kAccountSupportedDataclasses);
  if (!dataclasses.array()) return key + " " + textOfWrongKind(dataclasses, "array");
  const ArrayRef known = BasicAccount::allSupportedDataclasses();
  for (const Value& each : dataclasses.array()) {
    if (known->contains(each)) continue;
    const std::string name = each.string().str();
    const std::string full = std::string(kDataclassPrefix) + name;
    return key + " holds " + (each.string() ? quoted(name) : each.description()) +
           (known->contains(Value(full)) ? ", which is spelled " + quoted(full) : ", no dataclass");
  }
  return {};
}

std::string faultOf(const AccountCreator& creator, const Dictionary& entry) {
  const bool isNotifier = creator.role == "NotifierAccount";
  if (!isNotifier && creator.role != "FullAccount" && creator.role != "SyncAccount") {
    return "its \"Type\" is " + quoted(creator.role) +
           ", none of \"FullAccount\", \"SyncAccount\" and \"NotifierAccount\"";
  }
  const DictionaryRef description = entry["Description"].dictionary();
  if (!description) {
    return "its \"Description\" " + textOfWrongKind(entry["Description"], "dictionary");
  }
  if (creator.className.empty()) return "its \"Class\" names no class";
  if (isNotifier) {
    std::string fault = faultOfDataclasses((*description)[kAccountSupportedDataclasses]);
    if (!fault.empty()) return fault;
  }
  if (creator.framework.empty()) {
    // A program may bring full accounts along itself.
    return creator.role == "FullAccount" ? "" : "its \"Framework\" names no module";
  }
  return whyNoModule(creator.framework);
}

AccountCreator creatorFrom(const std::string& place, const String& type, const Value& element) {
  AccountCreator creator{place, type, {}, {}, {}, {}};
  const DictionaryRef entry = element.dictionary();
  if (!entry) {
    creator.fault = "it " + textOfWrongKind(element, "dictionary");
    return creator;
  }
  creator.role = (*entry)["Type"].string().str();
  if (const DictionaryRef description = (*entry)["Description"].dictionary()) {
    creator.framework = (*description)["Framework"].string().str();
    creator.className = (*description)["Class"].string().str();
  }
  creator.fault = faultOf(creator, *entry);
  return creator;
}

/// The file's dictionary; null, with the reason, where it has none.
DictionaryRef contentOf(const std::string& file, std::string& fault) {
  std::error_code error;
  const std::string bytes = Platform::current().fileSystem().readFile(file, error);
  if (error) {
    fault = "it cannot be read: " + error.message();
    return nullptr;
  }
  const auto content = propertyListFromBytes(bytes, &fault);
  if (!content) {
    fault = "it is no property list: " + fault;
  } else if (!content->dictionary()) {
    fault = "it " + textOfWrongKind(*content, "dictionary");
  }
  return content ? content->dictionary() : nullptr;
}

class Reading {
 public:
  std::vector<AccountCreator> run() {
    const std::vector<std::string> paths = files();
    for (const std::string& file : paths) {
      addFile(file);
      // Without the first file's content nothing is looked up in the next.
      if (_types.empty() && !_creators.empty()) return std::move(_creators);
    }
    for (const auto& [type, unused] : AccountTypeCatalogue::shared().entries()) {
      if (isTold(type)) continue;
      addFault(paths.empty() ? std::string(kResource) + ".plist" : paths.front(),
               "it has nothing for the type " + quoted(type) + ", not even an empty array");
    }
    return std::move(_creators);
  }

 private:
  bool isTold(const String& type) const { return std::ranges::find(_types, type) != _types.end(); }
  void addFault(const std::string& place, const std::string& fault) {
    _creators.push_back({place, {}, {}, {}, {}, fault});
  }
  void addFile(const std::string& file) {
    std::string fault;
    const DictionaryRef content = contentOf(file, fault);
    if (!content) return addFault(file, fault);
    for (const auto& [type, entries] : *content) {
      const std::string place = file + ", " + type.str();
      // What a file before has counts.
      if (isTold(type)) continue;
      _types.push_back(type);
      if (!BasicAccount::_isValidAccountType(type)) {
        addFault(place, "there is no account type " + quoted(type));
      } else if (const ArrayRef list = entries.array()) {
        for (std::size_t index = 0; index < list->size(); ++index) {
          _creators.push_back(
              creatorFrom(place + "[" + std::to_string(index) + "]", type, (*list)[index]));
        }
      } else {
        addFault(place, "it " + textOfWrongKind(entries, "array"));
      }
    }
  }

  std::vector<AccountCreator> _creators;
  std::vector<String> _types;
};

}  // namespace

std::vector<AccountCreator> accountCreators() {
  return Reading().run();
}

}  // namespace tallbook
