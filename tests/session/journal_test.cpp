#include "session/journal.h"

#include <gtest/gtest.h>

#include <thread>

namespace tarqo {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

const Instant kStart{std::chrono::hours(1)};

TEST(Journal, HasHeardNothingAtFirst) {
  const Journal journal;
  EXPECT_EQ(journal.lastHeard(kDistantPast).names, Names{});
  EXPECT_EQ(journal.lastHeard(kDistantPast).at, std::nullopt);
}

TEST(Journal, TellsDistinctNamesInSortedOrder) {
  Journal journal;
  for (const char* name : {"b", "a", "b", "C"}) {
    journal.note(name, kStart);
  }
  EXPECT_EQ(journal.lastHeard(kDistantPast).names, (Names{"C", "a", "b"}));
}

TEST(Journal, TellsWhenTheLastWasHeard) {
  Journal journal;
  journal.note("a", kStart);
  journal.note("b", kStart + 5ms);
  EXPECT_EQ(journal.lastHeard(kDistantPast).at, kStart + 5ms);
}

TEST(Journal, LeavesOutWhatWasHeardAtOrBeforeTheInstant) {
  Journal journal;
  journal.note("before", kStart - 1ms);
  journal.note("at", kStart);
  EXPECT_EQ(journal.lastHeard(kStart).names, Names{});
  EXPECT_EQ(journal.lastHeard(kStart).at, std::nullopt);
  journal.note("after", kStart + Duration(1));
  EXPECT_EQ(journal.lastHeard(kStart).names, Names{"after"});
}

TEST(Journal, KeepsItsEntriesWhenTheyAreRead) {
  Journal journal;
  journal.note("a", kStart);
  EXPECT_EQ(journal.lastHeard(kDistantPast).names, Names{"a"});
  EXPECT_EQ(journal.lastHeard(kDistantPast).names, Names{"a"});
}

TEST(Journal, Holds500Entries) {
  Journal journal;
  journal.note("first", kStart);
  for (int i = 1; i < 500; ++i) {
    journal.note("more", kStart);
  }
  EXPECT_EQ(journal.lastHeard(kDistantPast).names, (Names{"first", "more"}));
}

TEST(Journal, DropsTheOldestForThe501st) {
  Journal journal;
  journal.note("first", kStart);
  journal.note("second", kStart);
  for (int i = 2; i < 501; ++i) {
    journal.note("z", kStart);
  }
  EXPECT_EQ(journal.lastHeard(kDistantPast).names, (Names{"second", "z"}));
}

TEST(Journal, IsWrittenByOneThreadWhileAnotherReads) {
  Journal journal;
  std::thread writer([&] {
    for (int i = 0; i < 5000; ++i) {
      journal.note("a", kStart + std::chrono::milliseconds(i));
    }
  });
  std::optional<Instant> last;
  while (last != kStart + 4999ms) {
    const auto at = journal.lastHeard(kDistantPast).at;
    EXPECT_GE(at, last) << "the last one heard never goes back";
    last = at;
  }
  writer.join();
}

}  // namespace
}  // namespace tarqo
