#include "platform/tesseract/mixed_text.h"

#include <gtest/gtest.h>

namespace tarqo::ocr {
namespace {

TEST(FileExtension, IsSeenBehindKoreanOnly) {
  EXPECT_TRUE(endsInExtension("회의록.6<【"));
  EXPECT_TRUE(endsInExtension("휴가 신청서.0마"));
  EXPECT_FALSE(endsInExtension("회의가 있습니다."));
  EXPECT_FALSE(endsInExtension("있습니다.."));
  EXPECT_FALSE(endsInExtension("report.txt"));
  EXPECT_FALSE(endsInExtension("끝났다.다음 글"));
  EXPECT_FALSE(endsInExtension(".txt"));
  EXPECT_FALSE(endsInExtension("회의록"));
  EXPECT_FALSE(endsInExtension(""));
}

TEST(FileExtension, IsWhatEnglishDataReads) {
  EXPECT_EQ(withExtension("회의록.6<【", "S/Q|=.txt"), "회의록.txt");
  EXPECT_EQ(withExtension("휴가 신청서.0마", "#7} ALY.. pdf"), "휴가 신청서.pdf");
}

TEST(FileExtension, StaysWhereEnglishDataReadsNone) {
  EXPECT_EQ(withExtension("회의록.6<【", "SQtxt"), "회의록.6<【");
  EXPECT_EQ(withExtension("회의록.6<【", "SQ."), "회의록.6<【");
  EXPECT_EQ(withExtension("회의록.6<【", ""), "회의록.6<【");
}

TEST(DoubtfulWord, IsAnUnsureOneAmongKorean) {
  EXPECT_TRUE(hasDoubtfulWord("이 FSS 끄십시오", {{"이", 97}, {"FSS", 79}}));
  EXPECT_FALSE(hasDoubtfulWord("시스템 About", {{"시스템", 97}, {"About", 94}}));
  EXPECT_FALSE(hasDoubtfulWord("Only FSS", {{"Only", 97}, {"FSS", 40}}));
  EXPECT_FALSE(hasDoubtfulWord("오후 3 시", {{"3", 40}}));
}

TEST(DoubtfulWord, IsReplacedByItsKoreanReading) {
  EXPECT_EQ(withKoreanWords("이 FSS 끄십시오", {{"FSS", 79}}, "이 항목을 끄십시오"),
            "이 항목을 끄십시오");
  EXPECT_EQ(withKoreanWords("주문 HS 확인", {{"HS", 60}}, "주문 3개, 확인"), "주문 3개, 확인");
}

TEST(DoubtfulWord, StaysWhereTheKoreanReadingIsNone) {
  for (const char* reading :
       {"단축키 01+511[+ㅜ", "단축키 017", "단축키 \\1가", "단축키 가<", "단축키"}) {
    EXPECT_EQ(withKoreanWords("단축키 Ctrl+T", {{"Ctrl+T", 71}}, reading), "단축키 Ctrl+T");
  }
}

TEST(DoubtfulWord, IsNoWordThatIsSureOrKorean) {
  EXPECT_EQ(withKoreanWords("장치 AI 켜기", {{"AI", 95}}, "창치 시 커기"), "장치 AI 켜기");
}

}  // namespace
}  // namespace tarqo::ocr
