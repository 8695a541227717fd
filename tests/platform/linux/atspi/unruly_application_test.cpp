// What an observation is while the application is slow, silent, gone, or does not report the truth:
// it ends soon, lists what can be listed, and the next one is right again.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/linux/atspi/made_up_application.h"
#include "tests/platform/linux/atspi/recorded_desktop.h"

namespace tarqo::lnx::atspi {
namespace {

using namespace std::chrono_literals;

class UnrulyApplication : public testing::TestWithParam<const char*> {
 protected:
  /// The desktop with the application as it is now.
  RecordedDesktop& start(ScriptedBus::Answer spoilt = {}) {
    desktop_.reset();
    recorded_ = std::make_unique<RecordedApplication>(app.application());
    desktop_ = std::make_unique<RecordedDesktop>(
        recorded_->windows(), [this, spoilt = std::move(spoilt)](sd_bus_message* call) {
          const int answered = spoilt ? spoilt(call) : 0;
          return answered != 0 ? answered : recorded_->answer(call);
        });
    return *desktop_;
  }

  /// The names of all nodes; the test fails when nothing could be listed or it took too long.
  std::multiset<std::string> namesAfter(Duration limit, const Json& args = Json::object()) {
    const Instant begun = std::chrono::steady_clock::now();
    const Json snapshot = desktop_->observe(args);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, limit);
    EXPECT_TRUE(snapshot.is_object()) << desktop_->error;
    std::multiset<std::string> names;
    if (snapshot.is_object()) {
      truncated = snapshot.at("truncated");
      for (const Json& node : snapshot.at("nodes")) {
        names.insert(node.at("name").get<std::string>());
      }
    }
    return names;
  }

  /// Whether everything in the window is there that is listed of the application as it is.
  [[nodiscard]] bool isWhole(const std::multiset<std::string>& names) const {
    return !truncated &&
           std::ranges::all_of(std::vector{"Made up", "object 2", "object 41", "object 42",
                                           "object 43", "object 7", "object 91", "object 92"},
                               [&names](const char* name) { return names.contains(name); });
  }

  MadeUpApplication app{GetParam()};
  bool truncated = false;

 private:
  std::unique_ptr<RecordedApplication> recorded_;
  std::unique_ptr<RecordedDesktop> desktop_;
};

/// For what keeps the helper waiting.
class UnansweringApplication : public UnrulyApplication {};

std::string nameOf(const testing::TestParamInfo<const char*>& each) {
  const std::string name = each.param;
  return name.substr(0, name.find(' '));
}

// All properties in one answer; one by one; from a cache.
INSTANTIATE_TEST_SUITE_P(Of, UnrulyApplication,
                         testing::Values("gtk 3.24", "Qt 5.15", "Chromium 120"), nameOf);
INSTANTIATE_TEST_SUITE_P(Of, UnansweringApplication, testing::Values("gtk 3.24"), nameOf);

TEST_P(UnrulyApplication, IsListedWholeWhileItBehaves) {
  start();
  EXPECT_TRUE(isWhole(namesAfter(3s)));
}

TEST_P(UnansweringApplication, ThatIsSlowIsListedAsFarAsTheTimeReaches) {
  for (int i = 100; i < 180; ++i) {
    app.add(std::to_string(i), "1", 29);
  }
  start().bus().behave([](const auto&, const std::string& path) {
    return path.starts_with(std::string(kObjectPath) + "1") ? Conduct::answerLate : Conduct::answer;
  });
  const auto names = namesAfter(5s, {{"timeoutMs", 600}, {"menubar", false}});
  EXPECT_TRUE(truncated);
  EXPECT_TRUE(names.contains("Made up"));
  EXPECT_LT(names.size(), 80U);
}

TEST_P(UnansweringApplication, ThatFallsSilentIsListedAsFarAsItAnswered) {
  start().bus().behave([](const auto&, const std::string& path) {
    return path == std::string(kObjectPath) + "42" ? Conduct::ignore : Conduct::answer;
  });
  const auto names = namesAfter(4s);
  EXPECT_TRUE(truncated);
  EXPECT_TRUE(names.contains("Made up"));
}

TEST_P(UnansweringApplication, ThatAnswersNothingIsAWindowOfTheXServer) {
  RecordedDesktop& desktop = start();
  desktop.bus().behave([](const auto&, const auto&) { return Conduct::ignore; });
  EXPECT_EQ(namesAfter(5s), std::multiset<std::string>{"Made up"});
}

TEST_P(UnansweringApplication, ThatRecoversIsListedWholeAgain) {
  RecordedDesktop& desktop = start();
  EXPECT_TRUE(isWhole(namesAfter(3s)));
  desktop.bus().behave([](const auto&, const auto&) { return Conduct::ignore; });
  EXPECT_EQ(namesAfter(4s).size(), 1U);
  EXPECT_TRUE(truncated);
  desktop.bus().behave([](const auto&, const auto&) { return Conduct::answer; });
  std::this_thread::sleep_for(500ms);
  EXPECT_TRUE(isWhole(namesAfter(3s)));
}

TEST_P(UnrulyApplication, ThatIsGoneInMidAnswerKeepsNobodyWaiting) {
  RecordedDesktop& desktop = start();
  EXPECT_TRUE(isWhole(namesAfter(3s)));
  desktop.bus().behave([](const auto&, const std::string& path) {
    return path == std::string(kObjectPath) + "41" ? Conduct::breakOff : Conduct::answer;
  });
  const auto names = namesAfter(3s);
  EXPECT_TRUE(names.contains("Made up"));
  EXPECT_TRUE(truncated) << testing::PrintToString(names);
  desktop.bus().behave([](const auto&, const auto&) { return Conduct::answer; });
  EXPECT_TRUE(isWhole(namesAfter(3s)));
}

TEST_P(UnrulyApplication, IsFoundAgainAfterTheBusWasLost) {
  RecordedDesktop& desktop = start();
  EXPECT_TRUE(isWhole(namesAfter(3s)));
  desktop.bus().hangUp();
  EXPECT_TRUE(isWhole(namesAfter(3s)));
}

TEST_P(UnrulyApplication, MayRefuseEveryMethod) {
  RecordedDesktop& desktop = start();
  const auto known = desktop.bus().calls();
  EXPECT_TRUE(isWhole(namesAfter(3s)));
  for (const auto& [method, times] : desktop.bus().calls()) {
    desktop.bus().behave([method = method](const std::string& member, const auto&) {
      return member == method ? Conduct::refuse : Conduct::answer;
    });
    SCOPED_TRACE(method + " was asked " + std::to_string(times) + " times");
    EXPECT_FALSE(namesAfter(4s).empty());
  }
}

/// What one method is answered with instead of the truth. Set by the test, read by the bus's
/// thread, which may still have a call to answer when the test goes on.
class Lie {
 public:
  using Reply = std::function<int(sd_bus_message*)>;

  void set(const std::string& method, Reply reply) {
    const std::lock_guard lock(mutex_);
    method_ = method;
    reply_ = std::move(reply);
  }

  int answer(sd_bus_message* call) {
    const std::lock_guard lock(mutex_);
    const char* member = sd_bus_message_get_member(call);
    return reply_ && member != nullptr && method_ == member ? reply_(call) : 0;
  }

 private:
  std::mutex mutex_;
  std::string method_;
  Reply reply_;
};

TEST_P(UnrulyApplication, MayAnswerEveryMethodWithAnotherType) {
  const Lie::Reply kWrong[] = {
      [](auto* call) { return sd_bus_reply_method_return(call, "") + 1; },
      [](auto* call) { return sd_bus_reply_method_return(call, "s", "wrong") + 1; },
      [](auto* call) { return sd_bus_reply_method_return(call, "i", -1) + 1; },
      [](auto* call) { return sd_bus_reply_method_return(call, "au", 0) + 1; },
      [](auto* call) { return sd_bus_reply_method_return(call, "as", 1, "wrong") + 1; },
      [](auto* call) { return sd_bus_reply_method_return(call, "(so)", "", "/wrong") + 1; },
      [](auto* call) { return sd_bus_reply_method_return(call, "v", "b", 1) + 1; },
      [](auto* call) { return sd_bus_reply_method_return(call, "v", "s", "wrong") + 1; },
      [](auto* call) { return sd_bus_reply_method_return(call, "v", "v", "u", 7) + 1; },
      [](auto* call) {
        return sd_bus_reply_method_return(call, "a{sv}", 2, "Name", "i", 7, "Parent", "as", 0) + 1;
      },
      [](auto* call) { return replyWithBytes(call, "s", std::string("\2\0\0\0\xC3\x28\0", 7)); },
      [](auto* call) { return replyWithBytes(call, "as", std::string("\xFF\xFF\0\0", 4)); },
  };
  const auto lie = std::make_shared<Lie>();
  RecordedDesktop& desktop = start([lie](sd_bus_message* call) { return lie->answer(call); });
  EXPECT_TRUE(isWhole(namesAfter(3s)));
  for (const auto& [asked, times] : desktop.bus().calls()) {
    for (std::size_t shape = 0; shape < std::size(kWrong); ++shape) {
      SCOPED_TRACE(asked + " answered in shape " + std::to_string(shape));
      lie->set(asked, kWrong[shape]);
      EXPECT_FALSE(namesAfter(4s).empty());
    }
  }
  lie->set("", nullptr);
  EXPECT_TRUE(isWhole(namesAfter(3s)));
}

TEST_P(UnrulyApplication, MayHangItsObjectsInACircle) {
  app.object("43")["children"] = {"1", "43", "4", "root"};
  app.object("43")["properties"]["ChildCount"] = 4;
  start();
  const auto names = namesAfter(5s, {{"maxNodes", 300}});
  EXPECT_TRUE(names.contains("Made up"));
  EXPECT_LE(names.size(), 310U);
}

TEST_P(UnrulyApplication, MayBeItsOwnParent) {
  for (const char* id : {"1", "2", "4", "43", "61", "611"}) {
    app.object(id)["properties"]["Parent"] = id;
  }
  start();
  EXPECT_FALSE(namesAfter(4s).empty());
}

TEST_P(UnrulyApplication, MayHaveObjectsWithoutParentsOrChildren) {
  app.object("2")["properties"]["Parent"] = nullptr;
  app.object("61")["properties"].erase("Parent");
  app.object("4")["children"] = {nullptr, "41", nullptr, "nobody", {"other", "/elsewhere"}};
  start();
  const auto names = namesAfter(4s);
  EXPECT_TRUE(names.contains("object 41"));
  EXPECT_FALSE(names.contains("object 43"));
}

TEST_P(UnrulyApplication, MayCountItsChildrenAsItLikes) {
  for (const int count :
       {std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), -1, 0, 251, 1'000'000}) {
    SCOPED_TRACE(count);
    for (const char* id : {"1", "4", "9", "61", "root"}) {
      app.object(id)["properties"]["ChildCount"] = count;
    }
    app.object("9")["columns"] = count;
    RecordedDesktop& desktop = start();
    EXPECT_FALSE(namesAfter(4s).empty());
    for (const auto& [method, times] : desktop.bus().calls()) {
      EXPECT_LT(times, 5000) << method;
    }
  }
}

TEST_P(UnrulyApplication, MayReportAnyPlace) {
  constexpr int kLeast = std::numeric_limits<int>::min();
  constexpr int kMost = std::numeric_limits<int>::max();
  for (const Json& place : {Json{-1, -1, -1, -1}, Json{0, 0, 0, 0}, Json{kLeast, kLeast, 1, 1},
                            Json{kMost, kMost, kMost, kMost}, Json{100, 100, kMost, 1}}) {
    SCOPED_TRACE(place.dump());
    for (const char* id : {"1", "2", "4", "41", "9", "92", "61"}) {
      app.object(id)["onScreen"] = app.object(id)["inWindow"] = place;
    }
    start();
    EXPECT_FALSE(namesAfter(4s).empty());
  }
}

TEST_P(UnrulyApplication, WithARowAtEveryPointOfAHugeListIsAskedForSome) {
  app.object("9")["properties"]["ChildCount"] = 1'000'000'000;
  app.object("9")["onScreen"] = {0, 0, 90'000, 90'000};
  std::atomic<int> rows = 0;
  RecordedDesktop& desktop = start([&](sd_bus_message* call) {
    if (std::string_view(sd_bus_message_get_member(call)) != "GetAccessibleAtPoint") {
      return 0;
    }
    const std::string path = std::string(kObjectPath) + "92/" + std::to_string(++rows);
    return sd_bus_reply_method_return(call, "(so)", ScriptedBus::kApplicationName, path.c_str()) +
           1;
  });
  EXPECT_FALSE(namesAfter(6s).empty());
  EXPECT_LT(desktop.bus().calls()["GetAccessibleAtPoint"], 40'000);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
