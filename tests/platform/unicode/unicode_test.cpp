#include "platform/unicode.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace tarqo::unicode {
namespace {

using Texts = std::vector<std::string>;

// A family of four people: seven code points, one cluster, 25 bytes.
const std::string kFamily = "👨‍👩‍👧‍👦";
const std::string kFlag = "🇰🇷";
const std::string kAccented = "e\u0301";  // "e" and a combining acute accent
const std::string kReplacement = "\xEF\xBF\xBD";

Texts clustersOf(const std::string& text) {
  Texts clusters;
  forEachCluster(text, [&](std::string_view cluster) { clusters.emplace_back(cluster); });
  return clusters;
}

TEST(Unicode, RepairsNothingInValidText) {
  for (const std::string& text :
       {std::string(), std::string("plain"), "한글 " + kFamily, std::string("a\0b", 3),
        kReplacement, std::string("\xF4\x8F\xBF\xBF")}) {
    EXPECT_EQ(repaired(text), text);
  }
}

TEST(Unicode, ReplacesMalformedSequences) {
  EXPECT_EQ(repaired("a\xFF"
                     "b"),
            "a" + kReplacement + "b");
  EXPECT_EQ(repaired("\x80"), kReplacement);
  EXPECT_EQ(repaired("caf\xC3"), "caf" + kReplacement) << "cut off within a character";
  EXPECT_EQ(repaired("\xED\xA0\x80"), kReplacement + kReplacement + kReplacement)
      << "a surrogate half is no character";
  EXPECT_EQ(repaired("\xC0\xAF"), kReplacement + kReplacement) << "longer than need be";
  EXPECT_EQ(repaired("\xE2\x82"
                     "x"),
            kReplacement + "x");
}

TEST(Unicode, RepairedTextIsValid) {
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) {
    everyByte += static_cast<char>(byte);
  }
  const std::string once = repaired(everyByte);

  EXPECT_NE(once, everyByte);
  EXPECT_EQ(repaired(once), once);
}

TEST(Unicode, TrimsWhiteSpaceAndNewlinesAtBothEnds) {
  EXPECT_EQ(trimmed(" \t\r\n a b \n"), "a b");
  EXPECT_EQ(trimmed("\u00A0\u3000한\u2028\u0085"), "한") << "white space beyond ASCII";
  EXPECT_EQ(trimmed("\u200Ba"), "\u200Ba") << "a zero-width space is no white space";
  EXPECT_EQ(trimmed(" \n\t"), "");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed("ab"), "ab");
}

TEST(Unicode, TakesWholeClustersAsPrefix) {
  EXPECT_EQ(prefix("abc", 2), "ab");
  EXPECT_EQ(prefix("abc", 3), "abc");
  EXPECT_EQ(prefix("abc", 9), "abc");
  EXPECT_EQ(prefix("abc", 0), "");
  EXPECT_EQ(prefix(kFamily + kFlag + "x", 2), kFamily + kFlag);
  EXPECT_EQ(prefix(kAccented + kAccented, 1), kAccented);
}

TEST(Unicode, CutsALongTextAtTheCluster) {
  std::string text;
  for (int i = 0; i < 3000; ++i) {
    text += i % 2 == 0 ? "가" : "x";
  }

  const std::string cut = prefix(text, 2048);

  EXPECT_EQ(cut.size(), 1024U * 3 + 1024);
  EXPECT_EQ(clusterCount(cut, 10'000), 2048U);
}

TEST(Unicode, WalksClusters) {
  EXPECT_EQ(clustersOf("a" + kFamily + "한" + kAccented + kFlag),
            (Texts{"a", kFamily, "한", kAccented, kFlag}));
  EXPECT_EQ(clustersOf("\r\n"), Texts{"\r\n"});
  EXPECT_EQ(clustersOf(""), Texts{});
}

TEST(Unicode, JoinsTheLettersOfAHangulSyllable) {
  EXPECT_EQ(clustersOf("\u1112\u1161\u11AB\u1100\u1173\u11AF"),
            (Texts{"\u1112\u1161\u11AB", "\u1100\u1173\u11AF"}));
}

TEST(Unicode, AllowsAWalkWithinAWalk) {
  Texts seen;
  forEachCluster("ab", [&](std::string_view outer) {
    seen.emplace_back(outer);
    EXPECT_EQ(clusterCount("xyz", 9), 3U);
    forEachCluster("c", [&](std::string_view inner) { seen.emplace_back(inner); });
  });
  EXPECT_EQ(seen, (Texts{"a", "c", "b", "c"}));
}

TEST(Unicode, CountsClustersUpToALimit) {
  EXPECT_EQ(clusterCount("abc", 10), 3U);
  EXPECT_EQ(clusterCount("abc", 2), 2U);
  EXPECT_EQ(clusterCount(kFamily, 10), 1U);
  EXPECT_EQ(clusterCount("", 10), 0U);
}

TEST(Unicode, CountsUtf16Units) {
  EXPECT_EQ(utf16Length("abc"), 3U);
  EXPECT_EQ(utf16Length("한글"), 2U);
  EXPECT_EQ(utf16Length("😀"), 2U);
  EXPECT_EQ(utf16Length(kFamily), 11U);
  EXPECT_EQ(utf16Length("\xFF"), 1U) << "a malformed byte counts as U+FFFD";
  EXPECT_EQ(utf16Length(""), 0U);
}

TEST(Unicode, LowersByNoLanguage) {
  EXPECT_EQ(lowered("AXButton"), "axbutton");
  EXPECT_EQ(lowered("ÄÖÜ ΑΒΓ"), "äöü αβγ");
  EXPECT_EQ(lowered("I"), "i") << "not the dotless i of Turkish";
  EXPECT_EQ(lowered("한글 123"), "한글 123");
}

TEST(Unicode, SortsForDisplayWithoutRegardToCase) {
  EXPECT_LT(compareForDisplay("alpha", "Beta"), 0);
  EXPECT_GT(compareForDisplay("beta", "Alpha"), 0);
  EXPECT_EQ(compareForDisplay("NOTES", "notes"), 0);
  EXPECT_NE(compareForDisplay("resume", "résumé"), 0);
  EXPECT_LT(compareForDisplay("", "a"), 0);
}

TEST(Unicode, FindsControlAndFormatCharacters) {
  for (const char* text : {"a\nb", "\t", "\x1b", "\x7F", "\u0085", "a\u200Bb", "\u200D", "\u00AD",
                           "\uFEFF", "\U000E0001"}) {
    EXPECT_TRUE(hasControlOrFormat(text)) << repaired(text);
  }
  EXPECT_TRUE(hasControlOrFormat(std::string_view("\0", 1)));
  for (const std::string& text : {std::string(), std::string("plain text"), std::string("한글"),
                                  std::string("😀\u00A0\u3000"), std::string("\u2028")}) {
    EXPECT_FALSE(hasControlOrFormat(text)) << text;
  }
}

TEST(Unicode, WorksOnSeveralThreadsAtOnce) {
  std::vector<std::size_t> counts(4);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    threads.emplace_back([&counts, i] {
      for (int round = 0; round < 200; ++round) {
        counts[i] += clusterCount(kFamily + "abc", 100);
        counts[i] += compareForDisplay("a", "B") < 0 ? 0 : 1;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(counts, std::vector<std::size_t>(4, 800));
}

}  // namespace
}  // namespace tarqo::unicode
