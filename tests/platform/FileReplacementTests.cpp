// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <iostream>
#include <list>
#include <map>
#include <random>
#include <sstream>

#include "platform/linux/LinuxFileSystem.h"
#include "tests/platform/Interleavings.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Device.h"
#include "tests/support/FailingFileSystem.h"

namespace tallbook {
namespace {

using test::changeFile;
using test::Interleavings;

constexpr const char* kFile = "file";

struct Case {
  const char* name;
  Interleavings::Start start;
};

class ReplacingAFileAmong : public testing::TestWithParam<Case> {};

TEST_P(ReplacingAFileAmong, LosesNothingInAnyOrderAndWaitsForNobody) {
  const Interleavings::Figures figures = Interleavings(GetParam().start).explore();
  // An attempt is in vain only where another's mark was added, and takes ten operations.
  const auto marks = static_cast<unsigned>(GetParam().start.processes) * GetParam().start.marks;
  EXPECT_LE(figures.mostAttempts, marks);
  EXPECT_LE(figures.longestAlone, 10 * marks);
  std::cout << figures.orders << " orders through " << figures.states << " states, at most "
            << figures.longestAlone << " operations to the end of one alone, "
            << figures.mostAttempts << " attempts\n";
  RecordProperty("orders", std::to_string(figures.orders));
  RecordProperty("states", std::to_string(figures.states));
}

INSTANTIATE_TEST_SUITE_P(
    , ReplacingAFileAmong,
    testing::Values(Case{"Two", {2, true, 1}}, Case{"TwoTwice", {2, true, 2}},
                    Case{"TwoTwiceWithOneFailure", {2, true, 2, 1}},
                    Case{"TwoThatMakeTheFirst", {2, false, 1}},
                    Case{"TwoWithOneFailure", {2, true, 1, 1}},
                    Case{"TwoThatMakeTheFirstWithOneFailure", {2, false, 1, 1}},
                    Case{"TwoWithTwoFailures", {2, true, 1, 2}}, Case{"Three", {3, true, 1}},
                    Case{"ThreeThatMakeTheFirst", {3, false, 1}},
                    Case{"ThreeThatMakeTheFirstWithOneFailure", {3, false, 1, 1}}),
    [](const auto& given) { return given.param.name; });

#ifdef __OPTIMIZE__
// More than a minute where nothing is optimised.
INSTANTIATE_TEST_SUITE_P(AtLength, ReplacingAFileAmong,
                         testing::Values(Case{"ThreeWithOneFailure", {3, true, 1, 1}}),
                         [](const auto& given) { return given.param.name; });
#endif

TEST(ReplacingAFileWithoutSymbolicLinks, LosesOnlyWhatAnotherDoesBetweenTheLookAndTheRename) {
  EXPECT_EQ(Interleavings({1, true, 1, 0, false}).explore().mostLostMarks, 0U);
  EXPECT_EQ(Interleavings({1, false, 1, 0, false}).explore().mostLostMarks, 0U);
  EXPECT_EQ(Interleavings({2, true, 1, 0, false}).explore().mostLostMarks, 1U);
  // The kernel sees to the first file.
  EXPECT_EQ(Interleavings({2, false, 1, 0, false}).explore().mostLostMarks, 0U);
}

/// A file that a save was to replace that was killed just before its rename.
class AClaimedFile : public ThrowAwayDevice {
 protected:
  AClaimedFile() {
    EXPECT_EQ(add("0"), Replacement::Done);
    failing.heal();
    EXPECT_EQ(add("1"), Replacement::Done);
    const auto renaming = std::find(failing.names().begin(), failing.names().end(), "rename");
    ownersRename = static_cast<std::size_t>(renaming - failing.names().begin()) + 1;
    failing.stopAt(ownersRename);
    EXPECT_THROW(add("2"), Stopped);
    failing.heal();
    std::error_code error;
    for (const std::string& name : folder->names(error)) {
      if (name.starts_with(".tallbook-claim-")) claim = name;
    }
    finished = folder->noteText(claim, error);
    EXPECT_FALSE(error) << error.message();
    failing.heal();
  }

  Replacement add(const std::string& more) {
    return changeFile(*folder, kFile, [&](const std::string& bytes) { return bytes + more; });
  }

  DeviceRoot device{root()};
  LinuxFileSystem files{device};
  FailingFileSystem failing{files};
  std::error_code opening = files.createDirectories(path("/claimed"), 0700);
  std::unique_ptr<Folder> folder = failing.openFolder(path("/claimed"), opening);
  std::size_t ownersRename = 0;  ///< which of a save's operations it is
  std::string claim;
  std::string finished;  ///< the file that the claim names
};

TEST_F(AClaimedFile, GoesToTheNextClaimWhereTheFirstIsWithdrawnAtTheLastMoment) {
  // A helper reads the claim besides.
  const std::size_t helpersRename = ownersRename + 1;
  failing.callAt(helpersRename, [&] { ASSERT_FALSE(files.remove(path("/claimed/" + finished))); });
  EXPECT_EQ(add("3"), Replacement::Done);
  EXPECT_EQ(failing.names().at(helpersRename - 1), "rename");
  EXPECT_EQ(folder->read(kFile).bytes, "013");
  EXPECT_EQ(test::namesIn(path("/claimed")), std::vector<std::string>{kFile});
}

TEST_F(AClaimedFile, TakesNoFileFromOutsideTheFolder) {
  test::writeFile(path("/secret"), "secret");
  ASSERT_FALSE(folder->remove(claim));
  ASSERT_FALSE(folder->makeNote(claim, "../secret"));
  EXPECT_EQ(add("3"), Replacement::Done);
  EXPECT_EQ(folder->read(kFile).bytes, "013");
  EXPECT_EQ(test::readFile(path("/secret")), "secret");
}

/// Adds lines "NAME:1" to "NAME:`count`" to the file, and tells the parent of each.
bool addLines(Folder& folder, const std::string& name, int count,
              test::ChildProcess::Parent& parent) {
  for (int number = 1; number <= count; ++number) {
    const std::string line = name + ":" + std::to_string(number) + "\n";
    Replacement replacement;
    do {
      replacement =
          changeFile(folder, kFile, [&](const std::string& bytes) { return bytes + line; });
    } while (replacement == Replacement::NotTheFileRead);
    if (replacement == Replacement::Failed) return false;
    parent.say('+');
  }
  return true;
}

class ProcessesThatReplaceAFile : public ThrowAwayDevice {};

TEST_F(ProcessesThatReplaceAFile, LoseNothingWhereSomeAreKilled) {
  constexpr int kWorkers = 4;
  constexpr int kVictims = 20;
  constexpr int kLines = 100;
  const DeviceRoot device{root()};
  const LinuxFileSystem files{device};
  std::error_code error;
  const auto folder = files.openFolder(root(), error);
  ASSERT_TRUE(folder) << error.message();

  std::list<test::ChildProcess> workers;
  std::map<std::string, int> told;  // lines that must be there, by name
  for (int worker = 0; worker < kWorkers; ++worker) {
    const std::string name = "worker" + std::to_string(worker);
    workers.emplace_back(
        [&, name](auto& parent) { return addLines(*folder, name, kLines, parent); });
    told[name] = kLines;
  }
  std::mt19937 random(20);
  for (int number = 0; number < kVictims; ++number) {
    const std::string name = "victim" + std::to_string(number);
    test::ChildProcess victim(
        [&](auto& parent) { return addLines(*folder, name, kLines, parent); });
    int& lines = told[name];
    for (unsigned left = random() % 4; left > 0; --left) lines += victim.hear() == '+';
    // Any moment of the next save.
    const auto until =
        std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 2000);
    while (std::chrono::steady_clock::now() < until) {
    }
    victim.kill();
    while (victim.hear() == '+') ++lines;
  }
  for (auto& worker : workers) EXPECT_EQ(worker.wait(), 0);

  std::map<std::string, int> found;
  std::istringstream content(folder->read(kFile).bytes);
  for (std::string line; std::getline(content, line);) {
    const std::string name = line.substr(0, line.find(':'));
    // Each once and in order.
    EXPECT_EQ(line, name + ":" + std::to_string(++found[name]));
  }
  for (const auto& [name, lines] : told) {
    const bool isVictim = name.starts_with("victim");
    EXPECT_GE(found[name], lines) << name;
    EXPECT_LE(found[name], lines + isVictim) << name;
  }
  EXPECT_EQ(changeFile(*folder, kFile, [](const std::string& bytes) { return bytes; }),
            Replacement::Done);
}

}  // namespace
}  // namespace tallbook
