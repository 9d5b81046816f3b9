// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/platform/Interleavings.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "tests/support/FailingFileSystem.h"

namespace tallbook::test {
namespace {

using Disk = MemoryFileSystem::Disk;
using std::errc;

constexpr const char* kFile = "file";

/// The folder as one attempt of a process meets it: it answers what it answered before, then does
/// one more operation; what is asked after that throws `Stopped`.
class RecordedFolder final : public Folder {
 public:
  RecordedFolder(Folder& inner, std::vector<Answer>& answers, std::string freshName, bool fails,
                 bool hasNotes)
      : _inner(inner),
        _answers(answers),
        _known(answers.size()),
        _freshName(std::move(freshName)),
        _fails(fails),
        _hasNotes(hasNotes) {}

  /// The one more operation.
  const std::string& what() const { return _what; }

  FileContent read(const std::string& name) const override {
    return next("read " + name,
                [&](Answer& answer) {
                  answer.content = _inner.read(name);
                  // The harder case: the inode may be another file's from now on.
                  answer.content.held.reset();
                  answer.error = answer.content.error;
                })
        .content;
  }
  FileLook look(const std::string& name, std::error_code& error) const override {
    const Answer answer =
        next("look " + name, [&](Answer& given) { given.look = _inner.look(name, given.error); });
    error = answer.error;
    return answer.look;
  }
  std::vector<std::string> names(std::error_code& error) const override {
    error = make_error_code(errc::not_supported);
    return {};
  }
  std::string freshName() const override { return _freshName; }
  std::unique_ptr<NewFile> create(const std::string& name, std::error_code& error) override {
    error.clear();
    return std::make_unique<RecordedNewFile>(*this, name);
  }
  std::error_code remove(const std::string& name) override {
    return change("remove " + name, [&] { return _inner.remove(name); });
  }
  std::error_code rename(const std::string& from, const std::string& to) override {
    return change("rename " + from + " -> " + to, [&] { return _inner.rename(from, to); });
  }
  std::error_code renameToNew(const std::string& from, const std::string& to) override {
    return change("renameToNew " + from + " -> " + to,
                  [&] { return _inner.renameToNew(from, to); });
  }
  std::error_code link(const std::string&, Folder&, const std::string&) override {
    return make_error_code(errc::not_supported);
  }
  std::error_code makeNote(const std::string& name, const std::string& text) override {
    if (!_hasNotes) return make_error_code(errc::operation_not_supported);
    return change("makeNote " + name + " -> " + text, [&] { return _inner.makeNote(name, text); });
  }
  std::string noteText(const std::string& name, std::error_code& error) const override {
    const Answer answer = next("noteText " + name, [&](Answer& given) {
      given.text = _inner.noteText(name, given.error);
    });
    error = answer.error;
    return answer.text;
  }
  std::unique_ptr<Folder> folder(const std::string&, std::error_code& error) override {
    error = make_error_code(errc::not_supported);
    return nullptr;
  }
  std::error_code makeFolder(const std::string&, const std::string&, const std::string&) override {
    return make_error_code(errc::not_supported);
  }
  std::error_code flush() override { return {}; }

 private:
  class RecordedNewFile final : public NewFile {
   public:
    RecordedNewFile(RecordedFolder& folder, std::string name)
        : _folder(folder), _name(std::move(name)) {}
    std::error_code write(std::string_view bytes) override {
      _bytes += bytes;
      return {};
    }
    std::error_code giveTo(const std::string&, const std::string&) override { return {}; }
    std::error_code finish(const FileVersion& replaced) override {
      return _folder.change("make " + _name + " " + _bytes, [&] {
        std::error_code error;
        const auto file = _folder._inner.create(_name, error);
        if (!error) error = file->write(_bytes);
        return error ? error : file->finish(replaced);
      });
    }

   private:
    RecordedFolder& _folder;
    const std::string _name;
    std::string _bytes;
  };

  template <class Operation>
  Answer next(const std::string& what, const Operation& operation) const {
    if (_position < _known) return _answers[_position++];
    if (_answers.size() > _known) throw Stopped();
    Answer answer;
    if (_fails) {
      answer.error = answer.content.error = make_error_code(errc::io_error);
    } else {
      operation(answer);
    }
    _what = what + (answer.error ? ": " + answer.error.message() : "");
    _answers.push_back(answer);
    return answer;
  }
  template <class Operation>
  std::error_code change(const std::string& what, const Operation& operation) {
    return next(what, [&](Answer& answer) { answer.error = operation(); }).error;
  }

  Folder& _inner;
  std::vector<Answer>& _answers;
  const std::size_t _known;
  const std::string _freshName;
  const bool _fails;
  const bool _hasNotes;
  mutable std::size_t _position = 0;
  mutable std::string _what;
};

std::string text(const FileVersion& version) {
  return std::to_string(version.inode) + "/" + std::to_string(version.modifiedNanoseconds) + "/" +
         std::to_string(version.size);
}

/// The file says how many marks each process has, a digit each, so that its size tells nothing.
std::string withMark(const std::string& marks, std::size_t process) {
  std::string more = marks.empty() ? std::string(Interleavings::kMostProcesses, '0') : marks;
  ++more[process];
  return more;
}

}  // namespace

Replacement changeFile(Folder& folder, const std::string& name,
                       const std::function<std::string(const std::string&)>& change) {
  const FileContent content = folder.read(name);
  if (content.error && content.error != errc::no_such_file_or_directory) {
    return Replacement::Failed;
  }
  const std::string finished = folder.freshName();
  std::error_code error;
  if (const auto file = folder.create(finished, error)) {
    error = file->write(change(content.bytes));
    if (!error) error = file->finish(content.version);
  }
  if (error) {
    static_cast<void>(folder.remove(finished));
    return Replacement::Failed;
  }
  const Replacement replacement =
      replaceIfUnchanged(folder, name, content.version, finished, error);
  if (replacement == Replacement::NotTheFileRead) static_cast<void>(folder.remove(finished));
  return replacement;
}

std::size_t Interleavings::Hash::operator()(const State& state) const {
  std::uint64_t hash = state.disk;
  for (const std::uint32_t life : state.lives) hash = (hash + life) * 0x9E3779B97F4A7C15;
  return hash ^ hash >> 32;
}

Interleavings::Figures Interleavings::explore() {
  MemoryFileSystem files;
  if (_start.isFilePresent) {
    std::error_code error;
    const auto folder = files.openFolder("/", error);
    error = createFile(*folder, kFile, std::string(kMostProcesses, '0'));
    if (error) throw std::runtime_error(error.message());
  }
  State state;
  state.disk = numberOf(files.disk);
  for (std::size_t process = 0; process < kMostProcesses; ++process) {
    Life life;
    life.process = process;
    // Those that are too many have ended before they began.
    if (process >= _start.processes) life.outcome = Replacement::Failed;
    state.lives[process] = numberOf(std::move(life));
  }
  _figures.orders = follow(state).orders;
  _figures.states = _futures.size();
  return _figures;
}

const Interleavings::Future& Interleavings::follow(const State& state) {
  if (const auto known = _futures.find(state); known != _futures.end()) return known->second;
  check(state);
  Future future;
  bool isEnd = true;
  for (std::size_t process = 0; process < _start.processes; ++process) {
    if (_lives[state.lives[process]].outcome) continue;
    isEnd = false;
    for (const Step& step : stepsOf(state.lives[process], state.disk)) {
      State next = state;
      next.disk = step.disk;
      next.lives[process] = step.life;
      _path.push_back(&step);
      if (_start.hasNotes) checkNothingIsLost(_marks[state.disk], _marks[step.disk]);
      const Future& after = follow(next);
      _path.pop_back();
      future.orders += after.orders;
      future.alone[process] = std::max(future.alone[process], 1 + after.alone[process]);
    }
    _figures.longestAlone = std::max(_figures.longestAlone, future.alone[process]);
  }
  if (isEnd) future.orders = 1;
  return _futures.emplace(state, future).first->second;
}

const std::vector<Interleavings::Step>& Interleavings::stepsOf(std::uint32_t life,
                                                               std::uint32_t disk) {
  std::vector<Step>& steps = _steps[std::uint64_t{life} << 32 | disk];
  if (!steps.empty()) return steps;
  // Copies, as new lives and disks move the old ones.
  const Life before = _lives[life];
  const Disk at = _disks[disk];
  steps.push_back(step(before, at, false));
  if (before.process == 0 && before.failures < _start.failures) {
    steps.push_back(step(before, at, true));
  }
  return steps;
}

Interleavings::Step Interleavings::step(const Life& before, const Disk& disk, bool fails) {
  // More than this is no attempt that ends, however many fail before it.
  constexpr std::size_t kTooMany = 100;
  Life life = before;
  MemoryFileSystem files;
  files.disk = disk;
  std::error_code error;
  const auto inner = files.openFolder("/", error);
  const char letter = static_cast<char>('A' + life.process);
  RecordedFolder folder(*inner, life.answers,
                        ".tallbook-" + std::string(1, letter) + std::to_string(life.attempt), fails,
                        _start.hasNotes);
  if (fails) ++life.failures;
  try {
    const Replacement replacement = changeFile(
        folder, kFile, [&](const std::string& marks) { return withMark(marks, life.process); });
    life.answers.clear();
    if (replacement == Replacement::Done) ++life.added;
    if (replacement == Replacement::Failed || life.added == _start.marks) {
      life.outcome = replacement;
    } else {
      ++life.attempt;
      _figures.mostAttempts = std::max(_figures.mostAttempts, life.attempt);
    }
  } catch (const Stopped&) {
  }
  if (life.answers.size() > kTooMany || life.attempt > kTooMany) complain("does not end");
  return {numberOf(std::move(life)), numberOf(files.disk),
          std::string(1, letter) + ": " + folder.what()};
}

void Interleavings::check(const State& state) {
  const std::string& marks = _marks[state.disk];
  unsigned lost = 0;
  bool isEnd = true;
  bool isClean = true;
  for (std::size_t process = 0; process < _start.processes; ++process) {
    const Life& life = _lives[state.lives[process]];
    const unsigned found = static_cast<unsigned>(marks[process] - '0');
    if (found > life.added + 1) complain("a mark twice: " + marks);
    if (!life.outcome) isEnd = false;
    if (life.failures > 0) isClean = false;
    if (found < life.added) lost += life.added - found;
    // A second failure may hit what makes the first one undone.
    if (life.outcome == Replacement::Failed && found > life.added && life.failures < 2) {
      complain("reported as failed, and there: " + marks);
    }
  }
  if (lost > 0 && _start.hasNotes) complain("reported as done, and not there: " + marks);
  if (!isEnd) return;
  _figures.mostLostMarks = std::max(_figures.mostLostMarks, lost);
  if (isClean && _disks[state.disk].inodes.size() != 2) complain("something stays behind");
}

void Interleavings::checkNothingIsLost(const std::string& before, const std::string& after) const {
  for (std::size_t process = 0; process < before.size(); ++process) {
    if (after[process] < before[process]) complain("lost: " + before + " became " + after);
  }
}

std::uint32_t Interleavings::numberOf(Disk disk) {
  disk.held.clear();
  std::string key;
  for (const auto& [path, inode] : disk.inodes) {
    const Disk::Inode& content = disk.contents.at(inode);
    key += path + " " + std::to_string(inode) + " " + content.bytes + " " +
           std::to_string(content.modifiedNanoseconds) + "\n";
  }
  const auto [at, isNew] = _diskNumbers.try_emplace(std::move(key), _disks.size());
  if (isNew) {
    const auto file = disk.inodes.find(std::string("/") + kFile);
    _marks.push_back(file == disk.inodes.end() ? std::string(kMostProcesses, '0')
                                               : disk.contents.at(file->second).bytes);
    _disks.push_back(std::move(disk));
  }
  return at->second;
}

std::uint32_t Interleavings::numberOf(Life life) {
  std::string key = std::to_string(life.process) + " " + std::to_string(life.attempt) + " " +
                    std::to_string(life.added) + " " + std::to_string(life.failures) + " " +
                    (life.outcome ? std::to_string(static_cast<int>(*life.outcome)) : "-");
  for (const Answer& answer : life.answers) {
    key += "\n" + std::to_string(answer.error.value()) + " " + answer.content.bytes + " " +
           text(answer.content.version) + " " + std::to_string(static_cast<int>(answer.look.kind)) +
           " " + text(answer.look.version) + " " + answer.text;
  }
  const auto [at, isNew] = _lifeNumbers.try_emplace(std::move(key), _lives.size());
  if (isNew) _lives.push_back(std::move(life));
  return at->second;
}

void Interleavings::complain(const std::string& what) const {
  std::string message = what + ", after";
  for (const Step* step : _path) message += "\n  " + step->what;
  throw std::runtime_error(message);
}

}  // namespace tallbook::test
