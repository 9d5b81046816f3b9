// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

#include "platform/propertylist/DictionaryTable.h"

namespace tallbook {

/// Reads one file in the binary encoding. Each object is decoded once, when the first reference to
/// it is met, and shared by the others. Open containers are kept in a list, not on the stack.
///
/// What an object takes in memory is proportional to the bytes that it takes in the file, and all
/// objects together may not claim more bytes than there are: that bounds work and memory by the
/// file's size, whatever its offsets and references say.
class BinaryReader {
 public:
  static bool recognises(std::string_view bytes) noexcept;

  /// `bytes` must stay while the reader is used. Throws MalformedPropertyList.
  explicit BinaryReader(std::string_view bytes);
  /// The file's tree, frozen; to be asked once. Throws MalformedPropertyList.
  Value read();

 private:
  /// What is known about an object of a shared kind that was met. It does not own the object: the
  /// growing tree does.
  struct Slot {
    const Counted* object = nullptr;
    std::uint32_t unfolded = 1;  // values in the tree below it, itself included
    std::uint16_t nesting = 0;   // containers on the longest way down, itself included
    Value::Kind kind = Value::Kind::Null;
    bool isOpen = false;
  };
  /// A container whose values are being read.
  struct Frame {
    Slot* slot;
    Array* array;              // or else
    Dictionary::Table* table;  // the storage of a dictionary
    const char* next;          // the next value's reference
    const char* nextKey;
    std::size_t left;
    std::string_view keyReferences;
    const Dictionary::Entry* sameKeys;  // the next entry of a table with these very keys, or null
  };
  /// The keys of a dictionary, which are distinct: the references to them, and a table of them.
  struct KeyList {
    std::string_view references;
    Dictionary::Table* table = nullptr;
  };

  void checkOffsets() const;
  void count(std::size_t values);
  void readOpenContainers();
  void close(const Frame& frame);

  Value readObject(std::uint64_t reference);
  Value readNew(Slot& slot, const char* at);
  Value readAgain(const Slot& slot);
  static String sharedString(const Slot& slot);
  String readNextKey(Frame& frame);
  String readKey(std::uint64_t reference);
  String readString(Slot& slot, const char* at);
  Value readData(Slot& slot, const char* at);
  Value openArray(Slot& slot, const char* at);
  Value openDictionary(Slot& slot, const char* at);
  bool isContainer(std::uint64_t reference);
  void open(const Frame& frame, std::size_t size);

  Slot& slotOf(std::uint64_t reference);
  const char* objectAt(const Slot& slot) const;
  std::uint64_t referenceAt(const char* at) const noexcept;
  std::string_view claimBody(const char* at, std::size_t unit);
  void add(Slot& parent, const Slot& child) const;
  const Dictionary::Entry* entriesWithKeys(std::string_view keyReferences) const noexcept;

  std::string_view _bytes;
  const char* _end;  // of the objects: the offset table
  std::size_t _offsetSize;
  std::size_t _referenceSize;
  std::uint64_t _topObject;
  std::size_t _unclaimed;  // bytes of objects that no decoded object has taken yet
  std::size_t _mostValues;
  std::size_t _values = 1;  // of the decoded containers, each counted once
  std::vector<Slot> _slots;
  std::vector<Frame> _frames;
  // Records of one kind repeat one list of keys: the last lists that were met.
  std::array<KeyList, 8> _keyLists;
  std::size_t _nextKeyList = 0;
  // Settled when all is read, because slots may refer to what settling drops.
  std::vector<Dictionary::Table*> _unsettled;
};

}  // namespace tallbook
