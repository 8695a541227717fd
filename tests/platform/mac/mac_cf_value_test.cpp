#include "platform/mac/mac_cf_value.h"

#include <chrono>
#include <cmath>
#include <limits>

#include "platform/mac/mac_element.h"
#include "tests/platform/mac/mac_test.h"

namespace tarqo::mac {
namespace {

using standin::Owned;

constexpr Duration kTimeout = std::chrono::milliseconds(300);

class CfValueTest : public MacTest {
 protected:
  /// The value that an application's answer becomes; another when there is none.
  template <typename T>
  static std::optional<T> read(const Owned& object) {
    const std::optional<Value> value = valueOf(object.get(), kTimeout);
    const T* is = value ? value->as<T>() : nullptr;
    return is == nullptr ? std::nullopt : std::optional(*is);
  }
  static std::string sent(const Value& value) {
    const CfRef<CFTypeRef> object = objectOf(value);
    return object ? standin::describe(object.get()) : "nothing";
  }
  Element element(int number) {
    return makeElement(retain(static_cast<AXUIElementRef>(applications.element(7, number).get())),
                       kTimeout);
  }
};

TEST_F(CfValueTest, ReadsTextsBooleansAndNumbers) {
  EXPECT_EQ(read<std::string>(standin::text("Save")), "Save");
  EXPECT_EQ(read<bool>(standin::boolean(true)), true);
  EXPECT_EQ(read<bool>(standin::boolean(false)), false);
  EXPECT_EQ(read<double>(standin::integer(1)), 1.0);
  EXPECT_EQ(read<double>(standin::number(0.25)), 0.25);
}

TEST_F(CfValueTest, ReadsPointsAndSizesAsTheyAre) {
  EXPECT_EQ(read<Point>(standin::point(-4.5, 10)), (Point{-4.5, 10}));
  EXPECT_EQ(read<Size>(standin::size(0, -3)), (Size{0, -3}));
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(read<Point>(standin::point(infinity, 0)), (Point{infinity, 0}));
  EXPECT_TRUE(std::isnan(read<Size>(standin::size(std::nan(""), 1))->width));
}

TEST_F(CfValueTest, KnowsThatOtherStructuresAreThere) {
  EXPECT_EQ(read<OtherValue>(standin::rect(1, 2, 3, 4)), OtherValue{});
  EXPECT_EQ(read<OtherValue>(standin::foreign()), OtherValue{});
  EXPECT_EQ(read<OtherValue>(standin::dictionary({})), OtherValue{});
}

TEST_F(CfValueTest, ReadsNothingFromNullAndFromAnError) {
  EXPECT_EQ(valueOf(nullptr, kTimeout), std::nullopt);
  EXPECT_EQ(valueOf(standin::null().get(), kTimeout), std::nullopt);
  EXPECT_EQ(valueOf(standin::axError(kAXErrorNoValue).get(), kTimeout), std::nullopt);
}

TEST_F(CfValueTest, ReadsAddressesWhole) {
  EXPECT_EQ(read<Url>(standin::url("https://example.com/a")), Url{"https://example.com/a"});
  EXPECT_EQ(read<Url>(standin::url("b", "https://example.com/")), Url{"https://example.com/b"});
  EXPECT_EQ(read<Url>(standin::url("b", "broken")), Url{"b"});
}

TEST_F(CfValueTest, ReadsAnElementAndKeepsIt) {
  std::optional<Element> kept = read<Element>(applications.element(7, 3));
  ASSERT_TRUE(kept);
  EXPECT_EQ(*kept, element(3));
  EXPECT_NE(*kept, element(4));
}

TEST_F(CfValueTest, ReadsListsInOrderAndKeepsThePlaceOfWhatIsNothing) {
  const auto values = read<Values>(
      standin::array({standin::text("a"), standin::null(), applications.element(7, 3)}));
  ASSERT_TRUE(values);
  ASSERT_EQ(values->size(), 3u);
  EXPECT_EQ(*values->at(0).as<std::string>(), "a");
  EXPECT_NE(values->at(1).as<OtherValue>(), nullptr);
  EXPECT_EQ(*values->at(2).as<Element>(), element(3));
}

TEST_F(CfValueTest, ReadsListsOfListsButNotWithoutEnd) {
  Owned nested = standin::array({standin::text("a")});
  for (int i = 0; i < 1000; ++i) {
    nested = standin::array({nested});
  }
  std::optional<Value> value = valueOf(nested.get(), kTimeout);
  int depth = 0;
  while (value && value->as<Values>() != nullptr) {
    ++depth;
    value = value->as<Values>()->at(0);
  }
  EXPECT_GE(depth, 2);
  EXPECT_LT(depth, 20);
  EXPECT_NE(value->as<OtherValue>(), nullptr);
}

TEST_F(CfValueTest, SendsWhatAnApplicationCanTake) {
  EXPECT_EQ(sent({std::string("메뉴")}), "text 메뉴");
  EXPECT_EQ(sent({true}), "boolean true");
  EXPECT_EQ(sent({false}), "boolean false");
  EXPECT_EQ(sent({2.5}), "number 2.5");
  EXPECT_EQ(sent({Point{1, 2}}), "point 1,2");
  EXPECT_EQ(sent({Size{3, 4}}), "size 3x4");
  EXPECT_EQ(sent({element(3)}), "element 7/3");
  EXPECT_EQ(sent({Values{{element(3)}, {true}}}), "list [element 7/3] [boolean true]");
  EXPECT_EQ(sent({Values{}}), "list");
}

TEST_F(CfValueTest, SendsNothingElse) {
  EXPECT_EQ(sent({std::string("\xff")}), "nothing");
  EXPECT_EQ(sent({Url{"https://example.com"}}), "nothing");
  EXPECT_EQ(sent({OtherValue{}}), "nothing");
  EXPECT_EQ(sent({Values{{true}, {OtherValue{}}}}), "nothing");
}

TEST_F(CfValueTest, SendsNoElementOfAnotherBackend) {
  class Stranger final : public ElementObject {
    bool same(const ElementObject& other) const override { return this == &other; }
  };
  EXPECT_EQ(sent({Element(std::make_shared<const Stranger>())}), "nothing");
}

}  // namespace
}  // namespace tarqo::mac
