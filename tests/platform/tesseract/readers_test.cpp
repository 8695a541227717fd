#include "platform/tesseract/readers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace tarqo::ocr {
namespace {

Readers prepared(std::size_t most) {
  Readers readers("", most);
  EXPECT_EQ(readers.prepare(), std::nullopt);
  return readers;
}

TEST(Readers, DoEachPieceOfWorkOnce) {
  Readers readers = prepared(3);
  std::vector<std::atomic<int>> done(40);
  readers.forEach(done.size(), [&done](Tesseract&, std::size_t i) { ++done[i]; });
  for (const std::atomic<int>& each : done) {
    EXPECT_EQ(each, 1);
  }
  readers.forEach(0, [](Tesseract&, std::size_t) { ADD_FAILURE(); });
}

TEST(Readers, AreOfOneThreadEach) {
  Readers readers = prepared(2);
  std::mutex mutex;
  std::set<std::pair<Tesseract*, std::thread::id>> seen;
  std::set<Tesseract*> used;
  // The first waits for the second, so that both have some of it.
  const auto all = [&] {
    const std::lock_guard lock(mutex);
    return used.size() == 2;
  };
  readers.forEach(40, [&](Tesseract& reader, std::size_t) {
    {
      const std::lock_guard lock(mutex);
      used.insert(&reader);
      seen.insert({&reader, std::this_thread::get_id()});
    }
    while (!all()) {
      std::this_thread::yield();
    }
  });
  EXPECT_EQ(seen.size(), 2U);
  EXPECT_EQ(used.size(), 2U);
}

TEST(Readers, AreNotLoadedForALittleWork) {
  Readers readers = prepared(4);
  readers.forEach(4, [caller = std::this_thread::get_id()](Tesseract&, std::size_t) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
  });
}

TEST(Readers, ThrowWhatTheWorkThrowsWhereverThatWas) {
  Readers readers = prepared(2);
  const std::thread::id caller = std::this_thread::get_id();
  for (const bool onCaller : {true, false}) {
    std::atomic<bool> thrown = false;
    const auto work = [&](Tesseract&, std::size_t) {
      if ((std::this_thread::get_id() == caller) == onCaller) {
        thrown = true;
        throw std::runtime_error("of no use");
      }
      while (!thrown) {
        std::this_thread::yield();
      }
    };
    EXPECT_THROW(readers.forEach(40, work), std::runtime_error);
  }
}

}  // namespace
}  // namespace tarqo::ocr
