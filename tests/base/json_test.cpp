#include "base/json.h"

#include <gtest/gtest.h>

#include <limits>

namespace tarqo {
namespace {

std::string nested(int depth) {
  return std::string(static_cast<std::size_t>(depth), '[') +
         std::string(static_cast<std::size_t>(depth), ']');
}

TEST(ParseJson, TakesObjectsAndArrays) {
  EXPECT_EQ(parseJson(R"( {"a": [1, null]} )"), (Json{{"a", {1, nullptr}}}));
  EXPECT_EQ(parseJson("[]"), Json::array());
}

TEST(ParseJson, RefusesScalarsAtTheTop) {
  for (const char* text : {"1", "\"text\"", "true", "null", "-0.5"}) {
    EXPECT_THROW((void)parseJson(text), JsonError) << text;
  }
}

TEST(ParseJson, RefusesWhatIsNoJson) {
  for (const char* text :
       {"",          " ",           "{",        "{\"a\":}",      "{'a':1}",
        "[1,]",      "{\"a\":1,}",  "[1] [2]",  "[NaN]",         "[Infinity]",
        "[01]",      "[.5]",        "[1.]",     "[+1]",          "[\"\t\"]",
        "[\"\\x\"]", "[\"\\u12\"]", "// c\n[]", "[\"\\ud800\"]", "[\"\\udc00\\ud800\"]"}) {
    EXPECT_THROW((void)parseJson(text), JsonError) << text;
  }
}

TEST(ParseJson, RefusesANulByteWhereverItStands) {
  using namespace std::string_view_literals;
  for (const std::string_view text : {"{}\0"sv, "{}\0garbage"sv, "\0{}"sv, "{\"a\0\":1}"sv}) {
    EXPECT_THROW((void)parseJson(text), JsonError);
  }
}

TEST(ParseJson, TakesSurrogatePairs) {
  EXPECT_EQ(parseJson(R"(["\ud83d\ude00"])")[0], "\U0001F600");
}

TEST(ParseJson, NestsDownToLevel512) {
  EXPECT_NO_THROW((void)parseJson(nested(512)));
  EXPECT_THROW((void)parseJson(nested(513)), JsonError);
}

std::string arrayOf(int count, const std::string& value) {
  std::string text = "[";
  for (int i = 0; i < count; ++i) {
    text += (i == 0 ? "" : " , ") + value;
  }
  return text + "]";
}

TEST(ParseJson, TakesOneHundredThousandValues) {
  // The array itself is one.
  for (const char* value : {"0", R"("a,\",[{")", "[]", "{ }"}) {
    EXPECT_NO_THROW((void)parseJson(arrayOf(99'999, value))) << value;
    EXPECT_THROW((void)parseJson(arrayOf(100'000, value)), JsonError) << value;
  }
  for (const char* value : {"[0]", R"({"a":0})"}) {
    EXPECT_NO_THROW((void)parseJson(arrayOf(49'999, value))) << value;
    EXPECT_THROW((void)parseJson(arrayOf(50'000, value)), JsonError) << value;
  }
}

TEST(ParseJson, RefusesADeepUnclosedTextWithoutRecursing) {
  EXPECT_THROW((void)parseJson(std::string(5'000'000, '[')), JsonError);
  std::string objects;
  for (int i = 0; i < 100'000; ++i) {
    objects += R"({"a":)";
  }
  EXPECT_THROW((void)parseJson(objects), JsonError);
}

TEST(ParseJson, DoesNotCountBracketsInsideTexts) {
  EXPECT_NO_THROW((void)parseJson("[\"\\\"" + std::string(600, '[') + "\"]"));
}

TEST(ParseJson, TheLastOfEqualKeysCounts) { EXPECT_EQ(parseJson(R"({"a":1,"a":2})")["a"], 2); }

TEST(ParseJson, TellsWhereTheTextGoesWrong) {
  try {
    (void)parseJson("{\"a\" 1}");
    FAIL() << "it was parsed";
  } catch (const JsonError& error) {
    const std::string what = error.what();
    EXPECT_TRUE(what.starts_with("The line is not valid JSON: ")) << what;
    EXPECT_NE(what.find("column 6"), std::string::npos) << what;
    EXPECT_EQ(what.find("json.exception"), std::string::npos) << what;
  }
}

TEST(SerializeJson, SortsKeysAndLeavesNoSpace) {
  EXPECT_EQ(serializeJson({{"b", 1}, {"a", {{"z", nullptr}, {"A", true}}}}),
            R"({"a":{"A":true,"z":null},"b":1})");
}

TEST(SerializeJson, EscapesSlashesInValuesAndKeys) {
  EXPECT_EQ(serializeJson({{"a/b", "https://x"}}), R"({"a\/b":"https:\/\/x"})");
}

TEST(SerializeJson, EscapesLineEndsSoThatOneResponseIsOneLine) {
  EXPECT_EQ(serializeJson({"a\nb\r\t\x01"}), R"(["a\nb\r\t\u0001"])");
}

TEST(SerializeJson, KeepsCharactersBeyondAsciiAsTheyAre) {
  EXPECT_EQ(serializeJson({"메뉴 막대"}), "[\"메뉴 막대\"]");
}

TEST(SerializeJson, WritesWholeDoublesWithoutAFraction) {
  EXPECT_EQ(serializeJson({100.0, -3.0, 0.5, 0.0}), "[100,-3,0.5,0]");
}

TEST(SerializeJson, KeepsTheDigitsOf64BitIntegers) {
  EXPECT_EQ(serializeJson({INT64_MIN, INT64_MAX, UINT64_MAX}),
            "[-9223372036854775808,9223372036854775807,18446744073709551615]");
}

TEST(SerializeJson, KeepsDoublesTooLargeForAnInteger) {
  EXPECT_EQ(Json::parse(serializeJson({1e300}).value_or(""))[0], 1e300);
}

TEST(SerializeJson, GivesNothingForNumbersThatJsonCannotExpress) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(serializeJson({std::numeric_limits<double>::quiet_NaN()}), std::nullopt);
  EXPECT_EQ(serializeJson({{"a", {{"b", {1, kInfinity}}}}}), std::nullopt);
  EXPECT_EQ(serializeJson({{"a", -kInfinity}}), std::nullopt);
}

TEST(SerializeJson, RepairsMalformedText) {
  EXPECT_EQ(serializeJson({"a\xFF"}), "[\"a\xEF\xBF\xBD\"]");
}

TEST(JsonMembers, AValueOfAnotherTypeCountsAsAbsent) {
  const Json object = parseJson(R"({"text":"a","flag":true,"number":1.5,"none":null})");
  EXPECT_EQ(textMember(object, "text"), "a");
  EXPECT_EQ(textMember(object, "number"), std::nullopt);
  EXPECT_EQ(textMember(object, "missing"), std::nullopt);
  EXPECT_EQ(booleanMember(object, "flag"), true);
  EXPECT_EQ(booleanMember(object, "text"), std::nullopt);
  EXPECT_EQ(booleanMember(object, "number"), std::nullopt);
  EXPECT_EQ(numberMember(object, "number"), 1.5);
  EXPECT_EQ(numberMember(object, "flag"), std::nullopt);
  EXPECT_EQ(numberMember(object, "none"), std::nullopt);
}

TEST(JsonMembers, AreAbsentWhereThereIsNoObject) {
  EXPECT_EQ(textMember(Json::array({"a"}), "text"), std::nullopt);
  EXPECT_EQ(integerMember(Json(5), "text"), std::nullopt);
}

TEST(JsonMembers, IntegersAreNumbersWithoutAFractionThatFit) {
  const Json object = parseJson(
      R"({"plain":7,"whole":7.0,"fraction":7.5,"flag":true,"text":"7","min":-9223372036854775808,)"
      R"("unsigned":9223372036854775808,"large":1e19,"edge":9223372036854775808.0,"tiny":-1e300})");
  EXPECT_EQ(integerMember(object, "plain"), 7);
  EXPECT_EQ(integerMember(object, "whole"), 7);
  EXPECT_EQ(integerMember(object, "min"), INT64_MIN);
  for (const char* key : {"fraction", "flag", "text", "unsigned", "large", "edge", "tiny"}) {
    EXPECT_EQ(integerMember(object, key), std::nullopt) << key;
  }
}

}  // namespace
}  // namespace tarqo
