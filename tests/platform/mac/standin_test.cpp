// The stand-in itself: that it notices what the tests rely on it to notice.
#include <gtest/gtest-spi.h>

#include "tests/platform/mac/mac_test.h"

namespace tarqo::mac {
namespace {

using standin::Heap;
using standin::Owned;
using Living = std::vector<std::string>;

class StandinTest : public MacTest {};

TEST_F(StandinTest, NoticesAReferenceThatIsNotGivenBack) {
  const Owned text = standin::text("Save");
  CFRetain(text.get());
  EXPECT_EQ(Heap::instance().living(), Living{"text Save x2"});
  CFRelease(text.get());
}

TEST_F(StandinTest, NoticesAReleaseTooMany) {
  static CFTypeRef text;  // Static, as the check below runs it in a function of its own.
  text = nullptr;
  {
    const Owned owner = standin::text("Save");
    text = owner.get();
  }
  EXPECT_NONFATAL_FAILURE(CFRelease(text), "CFRelease was given what had ended: text Save");
}

TEST_F(StandinTest, NoticesAUseAfterTheEnd) {
  static CFTypeRef text;
  {
    const Owned owner = standin::text("Save");
    text = owner.get();
  }
  EXPECT_NONFATAL_FAILURE((void)CFGetTypeID(text), "CFGetTypeID was given what had ended");
}

TEST_F(StandinTest, NoticesTheReleaseOfAConstant) {
  EXPECT_NONFATAL_FAILURE(CFRelease(kCFBooleanTrue), "a constant was released: boolean true");
  CFRetain(kCFBooleanTrue);
  EXPECT_EQ(Heap::instance().living(), Living{"constant boolean true"});
  CFRelease(kCFBooleanTrue);
}

TEST_F(StandinTest, NoticesAListThatOutlivesWhatItHolds) {
  static CFTypeRef item;
  CfRef<CFArrayRef> list;
  {
    const Owned owner = standin::text("Save");
    item = owner.get();
    list = adopt(CFArrayCreate(nullptr, &item, 1, nullptr));
  }
  EXPECT_NONFATAL_FAILURE((void)standin::describe(item), "had ended");
}

TEST_F(StandinTest, CrashesOnNullAsTheSystemDoes) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_DEATH(CFRelease(nullptr), "CFRelease was given null");
  EXPECT_DEATH((void)CFGetTypeID(nullptr), "CFGetTypeID was given null");
}

TEST_F(StandinTest, TakesNoMoreThanTwentyUnitsOnAKey) {
  const auto event = adopt(CGEventCreateKeyboardEvent(nullptr, 0, true));
  const std::vector<UniChar> units(25, u'a');
  CGEventKeyboardSetUnicodeString(event.get(), units.size(), units.data());
  CGEventPost(kCGHIDEventTap, event.get());
  EXPECT_EQ(quartz.posted.at(0).event.text.size(), 20u);
}

}  // namespace
}  // namespace tarqo::mac
