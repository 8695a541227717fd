// What is requested of a sheet with more cells than anybody could list.
#include "platform/linux/atspi/read/cells_in_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/linux/atspi/read/property_request.h"
#include "platform/linux/linux_clock.h"
#include "tests/platform/linux/atspi/read/served_application.h"

namespace tarqo::lnx::atspi {
namespace {

using namespace std::chrono_literals;

constexpr int kAll = 0x7FFFFFFF;

/// A sheet at 100,50 of 200 x 90 points with cells of 80 x 20; the last ones are cut. Nothing lies
/// in its uppermost 20 points.
class Sheet {
 public:
  explicit Sheet(int count)
      : count_(count), application_([this](auto* call) { return on(call); }) {}

  /// Requests what an observation does.
  std::shared_ptr<Properties> read(bool onlyShown) {
    LinuxClock clock;
    Bus bus(application_.address(), clock);
    Batch batch(bus);
    auto properties = std::make_shared<Properties>();
    requestProperties(batch,
                      {{":1.1", "/sheet"},
                       Toolkit::other,
                       Property::basics | Property::name | Property::children,
                       onlyShown},
                      properties, {});
    EXPECT_EQ(batch.run({clock.now() + 5s, 2s}), BatchOutcome::complete);
    return properties;
  }

  /// How often each method was called.
  std::map<std::string, int> calls() {
    const std::lock_guard lock(lock_);
    return calls_;
  }

 private:
  static constexpr int kLeft = 100;
  static constexpr int kTop = 70;
  static constexpr int kWidth = 80;
  static constexpr int kHeight = 20;

  int on(sd_bus_message* call) {
    const std::string member = sd_bus_message_get_member(call);
    {
      const std::lock_guard lock(lock_);
      ++calls_[member];
    }
    const std::string path = sd_bus_message_get_path(call);
    if (member == "GetRole") {
      return sd_bus_reply_method_return(call, "u", static_cast<std::uint32_t>(Role::table)) + 1;
    }
    if (member == "GetState") {
      return sd_bus_reply_method_return(call, "au", 2, 0x82000000U, 0U) + 1;
    }
    if (member == "GetInterfaces") {
      return sd_bus_reply_method_return(call, "as", 1, "org.a11y.atspi.Component") + 1;
    }
    if (member == "Get") {
      return onProperty(call);
    }
    if (member == "GetExtents") {
      int column = 0;
      int row = 0;
      return std::sscanf(path.c_str(), "/cell/%d/%d", &column, &row) == 2
                 ? sd_bus_reply_method_return(call, "(iiii)", kLeft + column * kWidth,
                                              kTop + row * kHeight, kWidth, kHeight) +
                       1
                 : sd_bus_reply_method_return(call, "(iiii)", 100, 50, 200, 90) + 1;
    }
    if (member == "GetAccessibleAtPoint") {
      return onPoint(call);
    }
    if (member == "GetChildren") {
      return sd_bus_reply_method_return(call, "a(so)", 1, ":1.1", "/cell/0/0") + 1;
    }
    return 0;
  }

  int onProperty(sd_bus_message* call) const {
    const char* interface = nullptr;
    const char* property = nullptr;
    sd_bus_message_read(call, "ss", &interface, &property);
    return std::string(property) == "ChildCount"
               ? sd_bus_reply_method_return(call, "v", "i", count_) + 1
               : sd_bus_reply_method_return(call, "v", "s", "Sheet") + 1;
  }

  static int onPoint(sd_bus_message* call) {
    int x = 0;
    int y = 0;
    sd_bus_message_read(call, "ii", &x, &y);
    if (y < kTop) {
      return sd_bus_reply_method_return(call, "(so)", "", "/org/a11y/atspi/null") + 1;
    }
    const std::string cell = "/cell/" + std::to_string((x - kLeft) / kWidth) + "/" +
                             std::to_string((y - kTop) / kHeight);
    return sd_bus_reply_method_return(call, "(so)", ":1.1", cell.c_str()) + 1;
  }

  int count_;
  std::mutex lock_;
  std::map<std::string, int> calls_;
  ServedApplication application_;
};

TEST(CellsInView, AreFoundByTheirPlaceRowByRow) {
  Sheet sheet(kAll);
  const auto properties = sheet.read(true);
  ASSERT_TRUE(properties->children.has_value());
  std::vector<std::string> paths;
  for (const Ref& cell : *properties->children) {
    paths.push_back(cell.path);
  }
  EXPECT_EQ(paths, (std::vector<std::string>{"/cell/0/0", "/cell/1/0", "/cell/2/0", "/cell/0/1",
                                             "/cell/1/1", "/cell/2/1", "/cell/0/2", "/cell/1/2",
                                             "/cell/2/2", "/cell/0/3", "/cell/1/3", "/cell/2/3"}));
}

TEST(CellsInView, SpareTheApplicationARequestForAllItsCells) {
  Sheet sheet(kAll);
  static_cast<void>(sheet.read(true));
  EXPECT_EQ(sheet.calls()["GetChildren"], 0);
  EXPECT_LT(sheet.calls()["GetAccessibleAtPoint"], 60);
}

TEST(CellsInView, AreOfNoInterestToASearchForSomethingElse) {
  Sheet sheet(kAll);
  EXPECT_EQ(sheet.read(false)->children, std::vector<Ref>());
  EXPECT_EQ(sheet.calls()["GetAccessibleAtPoint"] + sheet.calls()["GetChildren"], 0);
}

TEST(CellsInView, AreAllChildrenWhereThereAreFew) {
  Sheet sheet(12);
  EXPECT_EQ(sheet.read(true)->children, (std::vector<Ref>{{":1.1", "/cell/0/0"}}));
  EXPECT_EQ(sheet.calls()["GetChildren"], 1);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
