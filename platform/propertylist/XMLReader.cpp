// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/propertylist/XMLReader.h"

#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/linux/Expat.h"
#include "platform/propertylist/KeyedHash.h"
#include "platform/propertylist/Limits.h"
#include "platform/propertylist/MalformedPropertyList.h"
#include "platform/propertylist/XMLScalars.h"

namespace tallbook {
namespace {

/// Builds the tree from the parser's events, with a stack of its own for the open containers.
class TreeBuilder {
 public:
  void startElement(std::string_view name) {
    if (_scalar) throw MalformedPropertyList("an element inside <" + *_scalar + ">");
    if (name == "plist") {
      if (_inPropertyList || _root) throw MalformedPropertyList("a second <plist>");
      _inPropertyList = true;
      return;
    }
    if (!_inPropertyList) throw MalformedPropertyList("an element outside <plist>");
    if (name == "dict" || name == "array") {
      if (_open.size() == kMaximumNesting) throw MalformedPropertyList("nested too deeply");
      _open.push_back({name == "dict", {}, {}, {}});
    } else {
      _scalar = name;
      _text.clear();
    }
  }

  void endElement(std::string_view name) {
    if (_scalar) {
      endScalar(*std::exchange(_scalar, std::nullopt));
    } else if (name == "plist") {
      if (!_root) throw MalformedPropertyList("an empty <plist>");
      _inPropertyList = false;
    } else {
      Container closed = std::move(_open.back());
      _open.pop_back();
      if (closed.key) throw MalformedPropertyList("a key without a value");
      closed.isDictionary ? add(Dictionary::makeFrozen(std::move(closed.entries)))
                          : add(Array::makeFrozen(std::move(closed.elements)));
    }
  }

  void text(std::string_view characters) {
    if (_scalar) {
      _text += characters;
    } else if (characters.find_first_not_of(" \t\r\n") != std::string_view::npos) {
      throw MalformedPropertyList("text between elements");
    }
  }

  Value root() && {
    if (!_root) throw MalformedPropertyList("no <plist>");
    return *std::move(_root);
  }

 private:
  struct Container {
    bool isDictionary;
    std::vector<Value> elements;
    std::vector<Dictionary::Entry> entries;
    String key;  ///< read, its value not yet
  };

  void endScalar(const std::string& name) {
    if (name == "key") {
      if (_open.empty() || !_open.back().isDictionary || _open.back().key) {
        throw MalformedPropertyList("a key that is out of place");
      }
      _open.back().key = keyNamed(_text);
    } else if (name == "string") {
      add(_text);
    } else if (name == "integer") {
      add(integerFromXML(_text));
    } else if (name == "real") {
      add(realFromXML(_text));
    } else if (name == "date") {
      add(dateFromXML(_text));
    } else if (name == "data") {
      add(dataFromXML(_text));
    } else if (name == "true" || name == "false") {
      add(name == "true");
    } else {
      throw MalformedPropertyList("an unknown element <" + name + ">");
    }
  }

  void add(Value value) {
    if (++_values > kMostValues) throw MalformedPropertyList("there are too many values");
    if (_open.empty()) {
      if (_root) throw MalformedPropertyList("a second value");
      _root = std::move(value);
    } else if (Container& container = _open.back(); !container.isDictionary) {
      container.elements.push_back(std::move(value));
    } else if (!container.key) {
      throw MalformedPropertyList("a value without a key");
    } else {
      container.entries.push_back({std::exchange(container.key, nullptr), std::move(value)});
    }
  }

  // Records have the same few keys: each distinct text is stored once.
  const String& keyNamed(const std::string& name) {
    const auto found = _keys.find(std::string_view(name));
    return found != _keys.end() ? *found : *_keys.emplace(name).first;
  }

  bool _inPropertyList = false;
  std::optional<Value> _root;
  std::vector<Container> _open;
  std::optional<std::string> _scalar;  ///< name of the open element without elements inside
  std::string _text;
  std::size_t _values = 0;
  std::unordered_set<String, KeyedStringHash, StringEqual> _keys;
};

/// One parse. Exceptions must not cross the parser, which is C: the first one stops it.
struct Parse {
  const Expat& expat;
  XML_Parser parser;
  TreeBuilder tree;
  std::exception_ptr failure;

  template <class Event>
  void handle(Event&& event) noexcept {
    if (failure) return;
    try {
      event();
    } catch (...) {
      failure = std::current_exception();
      expat.StopParser(parser, XML_FALSE);
    }
  }
};

Parse& parseOf(void* userData) {
  return *static_cast<Parse*>(userData);
}

void onStart(void* userData, const XML_Char* name, const XML_Char**) {
  parseOf(userData).handle([&] { parseOf(userData).tree.startElement(name); });
}

void onEnd(void* userData, const XML_Char* name) {
  parseOf(userData).handle([&] { parseOf(userData).tree.endElement(name); });
}

void onText(void* userData, const XML_Char* text, int length) {
  parseOf(userData).handle([&] {
    parseOf(userData).tree.text({text, static_cast<std::size_t>(length)});
  });
}

void onEntity(void* userData, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
              const XML_Char*, const XML_Char*, const XML_Char*) {
  parseOf(userData).handle([] { throw MalformedPropertyList("an entity declaration"); });
}

// Where there is a DOCTYPE, whose text nobody reads, an entity that is declared nowhere is no error
// to the parser, and its text would be missing.
void onSkippedEntity(void* userData, const XML_Char* name, int) {
  parseOf(userData).handle(
      [&] { throw MalformedPropertyList("an unknown entity \"" + std::string(name) + "\""); });
}

}  // namespace

Value XMLReader::read(std::string_view bytes) {
  const Expat& expat = Expat::library();
  const std::unique_ptr<XML_ParserStruct, decltype(expat.ParserFree)> parser(
      expat.ParserCreate(nullptr), expat.ParserFree);
  if (!parser) throw std::bad_alloc();
  Parse parse{expat, parser.get(), {}, {}};
  expat.SetUserData(parser.get(), &parse);
  expat.SetElementHandler(parser.get(), onStart, onEnd);
  expat.SetCharacterDataHandler(parser.get(), onText);
  expat.SetEntityDeclHandler(parser.get(), onEntity);
  expat.SetSkippedEntityHandler(parser.get(), onSkippedEntity);

  // The whole in one piece: what a piece ends in the middle of is scanned anew with the next one,
  // and a comment or an attribute may be as long as the file.
  constexpr std::size_t kLongest = std::size_t{1} << 30;  // the parser's buffer grows no further
  if (bytes.size() > kLongest) throw MalformedPropertyList("XML of more than 1 GiB");
  if (expat.Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE) ==
      XML_STATUS_ERROR) {
    if (parse.failure) std::rethrow_exception(parse.failure);
    const XML_Error error = expat.GetErrorCode(parser.get());
    if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    throw MalformedPropertyList(expat.ErrorString(error));
  }
  return std::move(parse.tree).root();
}

}  // namespace tallbook
