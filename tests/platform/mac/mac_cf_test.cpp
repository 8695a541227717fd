#include "platform/mac/mac_cf.h"

#include <utility>

#include "platform/mac/mac_cf_text.h"
#include "tests/platform/mac/mac_test.h"

namespace tarqo::mac {
namespace {

using standin::Heap;
using standin::Owned;
using Living = std::vector<std::string>;

class CfRefTest : public MacTest {};

TEST_F(CfRefTest, TakesOverWhatItAdopts) {
  {
    const CfRef<CFStringRef> text = makeString("Save");
    EXPECT_EQ(Heap::instance().living(), Living{"text Save x1"});
  }
  EXPECT_EQ(Heap::instance().living(), Living{});
}

TEST_F(CfRefTest, SharesWhatItRetains) {
  const Owned owner = standin::text("Save");
  {
    const CfRef<CFTypeRef> shared = retain(owner.get());
    EXPECT_EQ(Heap::instance().living(), Living{"text Save x2"});
  }
  EXPECT_EQ(Heap::instance().living(), Living{"text Save x1"});
}

TEST_F(CfRefTest, CountsEveryCopyAndNoMove) {
  CfRef<CFStringRef> first = makeString("Save");
  CfRef<CFStringRef> second = first;
  EXPECT_EQ(Heap::instance().living(), Living{"text Save x2"});
  CfRef<CFStringRef> third = std::move(second);
  EXPECT_EQ(Heap::instance().living(), Living{"text Save x2"});
  first = third;
  EXPECT_EQ(Heap::instance().living(), Living{"text Save x2"});
  first = makeString("Open");
  EXPECT_EQ(Heap::instance().living(), (Living{"text Save x1", "text Open x1"}));
  third.reset();
  EXPECT_EQ(Heap::instance().living(), Living{"text Open x1"});
}

TEST_F(CfRefTest, MayBeAssignedToItself) {
  CfRef<CFStringRef> text = makeString("Save");
  const CfRef<CFStringRef>& same = text;
  text = same;
  EXPECT_EQ(textOf(text.get()), "Save");
}

TEST_F(CfRefTest, HoldsNothingWithoutATouchOfNull) {
  CfRef<CFStringRef> none = CfRef<CFStringRef>::adopt(nullptr);
  const CfRef<CFStringRef> also = retain<CFStringRef>(nullptr);
  CfRef<CFStringRef> copy = none;
  copy = also;
  EXPECT_FALSE(none);
  EXPECT_FALSE(copy);
}

TEST_F(CfRefTest, LetsGoBeforeAnotherReferenceIsHandedOut) {
  CfRef<CFStringRef> text = makeString("Save");
  *text.out() = static_cast<CFStringRef>(CFRetain(standin::text("Open").get()));
  EXPECT_EQ(Heap::instance().living(), Living{"text Open x1"});
}

TEST_F(CfRefTest, AsksAnObjectForItsTypeBeforeACast) {
  const Owned text = standin::text("Save");
  EXPECT_EQ(asString(text.get()), text.get());
  EXPECT_EQ(asNumber(text.get()), nullptr);
  EXPECT_EQ(asBoolean(text.get()), nullptr);
  EXPECT_EQ(asArray(text.get()), nullptr);
  EXPECT_EQ(asDictionary(text.get()), nullptr);
  EXPECT_EQ(asUrl(text.get()), nullptr);
  EXPECT_EQ(asString(nullptr), nullptr);
}

class CfTextTest : public MacTest {
 protected:
  static std::string read(std::u16string units) {
    return textIn(standin::text16(std::move(units)).get()).value_or("not a text");
  }
};

TEST_F(CfTextTest, ReadsEveryPlaneAsUtf8) {
  EXPECT_EQ(read(u""), "");
  EXPECT_EQ(read(u"Save"), "Save");
  EXPECT_EQ(read(u"\u00e9\uba54\U0001F600"), "\u00e9\uba54\U0001F600");
}

TEST_F(CfTextTest, KeepsANulInATextThatIsRead) {
  EXPECT_EQ(read(std::u16string(u"a\0b", 3)), std::string("a\0b", 3));
}

TEST_F(CfTextTest, ReadsHalvesOfSurrogatePairsAsReplacementCharacters) {
  EXPECT_EQ(read({u'a', 0xD83D, u'b'}), "a\uFFFDb");
  EXPECT_EQ(read({0xDE00, 0xD83D}), "\uFFFD\uFFFD");
  EXPECT_EQ(read({0xD83D, 0xD83D, 0xDE00}), "\uFFFD\U0001F600");
}

TEST_F(CfTextTest, ReadsNoTextFromNothing) { EXPECT_EQ(textOf(nullptr), ""); }

TEST_F(CfTextTest, MakesTextsThatReadTheSame) {
  for (const std::string text : {"", "Save", "\u00e9\uba54\U0001F600"}) {
    EXPECT_EQ(textOf(makeString(text).get()), text);
  }
}

TEST_F(CfTextTest, MakesNoTextOfWhatIsNotUtf8) {
  EXPECT_FALSE(makeString("\xff"));
  EXPECT_FALSE(makeString("\xe2\x82"));
}

TEST_F(CfTextTest, CutsTextsIntoUtf16WithoutAMark) {
  EXPECT_EQ(utf16Of("a\U0001F600"), (std::vector<UniChar>{u'a', 0xD83D, 0xDE00}));
  EXPECT_EQ(utf16Of("\xff"), std::vector<UniChar>{});
  EXPECT_EQ(utf16Of(""), std::vector<UniChar>{});
}

class CfPlainValueTest : public MacTest {};

TEST_F(CfPlainValueTest, TakesBooleansAndNumbersApart) {
  EXPECT_EQ(booleanIn(standin::boolean(true).get()), true);
  EXPECT_EQ(booleanIn(standin::boolean(false).get()), false);
  EXPECT_EQ(booleanIn(standin::integer(1).get()), std::nullopt);
  EXPECT_EQ(numberIn(standin::boolean(true).get()), std::nullopt);
  EXPECT_EQ(integerIn(standin::boolean(true).get()), std::nullopt);
}

TEST_F(CfPlainValueTest, ReadsNumbersOfBothKinds) {
  EXPECT_EQ(numberIn(standin::number(2.5).get()), 2.5);
  EXPECT_EQ(numberIn(standin::integer(-7).get()), -7.0);
  EXPECT_EQ(integerIn(standin::integer(-7).get()), -7);
  EXPECT_EQ(integerIn(standin::number(3.0).get()), 3);
}

TEST_F(CfPlainValueTest, KeepsANumberThatLosesDigits) {
  EXPECT_EQ(numberIn(standin::integer((SInt64{1} << 60) + 1).get()), 1152921504606846976.0);
}

TEST_F(CfPlainValueTest, ReadsNoIntegerFromAFraction) {
  EXPECT_EQ(integerIn(standin::number(2.5).get()), std::nullopt);
  EXPECT_EQ(integerIn(standin::number(1e30).get()), std::nullopt);
}

TEST_F(CfPlainValueTest, ReadsNothingFromNothing) {
  EXPECT_EQ(booleanIn(nullptr), std::nullopt);
  EXPECT_EQ(numberIn(nullptr), std::nullopt);
  EXPECT_EQ(integerIn(nullptr), std::nullopt);
  EXPECT_EQ(textIn(nullptr), std::nullopt);
}

}  // namespace
}  // namespace tarqo::mac
