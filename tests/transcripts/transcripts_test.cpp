#include <gtest/gtest.h>

#include <set>

#include "simulator/simulation.h"
#include "tests/transcripts/collection.h"
#include "tests/transcripts/piped_program.h"

namespace tarqo::transcripts {
namespace {

class Transcripts : public testing::TestWithParam<std::string> {};

TEST_P(Transcripts, ArePlayedInProcess) {
  const Transcript transcript = transcriptNamed(GetParam());
  sim::Simulation simulation(sim::SceneFile::read(scenePath(transcript.scene)));
  EXPECT_EQ(play(transcript,
                 [&](const std::string& request) { return simulation.serve(request).response; }),
            "");
}

TEST_P(Transcripts, ArePlayedThroughThePipesOfTheProgram) {
  const Transcript transcript = transcriptNamed(GetParam());
  PipedProgram program({TARQO_SIM_PROGRAM, scenePath(transcript.scene)});
  EXPECT_EQ(play(transcript, [&](const std::string& request) { return program.ask(request); }), "");
  EXPECT_EQ(program.finish(), 0);
}

INSTANTIATE_TEST_SUITE_P(All, Transcripts, testing::ValuesIn(transcriptNames()),
                         [](const auto& each) { return each.param; });

TEST(TranscriptCollection, HoldsASuccessAndARefusalOfEveryMethod) {
  // The first two never fail: they report that they found nothing.
  std::set<std::string> missing{"host succeeds",     "listTargets succeeds", "preflight succeeds",
                                "preflight refuses", "connect succeeds",     "connect refuses",
                                "observe succeeds",  "observe refuses",      "geometry succeeds",
                                "geometry refuses",  "settle succeeds",      "settle refuses",
                                "click succeeds",    "click refuses",        "showMenu succeeds",
                                "showMenu refuses",  "hover succeeds",       "hover refuses",
                                "input succeeds",    "input refuses",        "close ends"};
  for (const std::string& name : transcriptNames()) {
    for (const Exchange& exchange : transcriptNamed(name).exchanges) {
      const Json request = Json::parse(exchange.request, nullptr, false);
      if (request.is_object() && request.contains("method") && request["method"].is_string()) {
        const std::string method = request["method"];
        const bool succeeds = exchange.response && exchange.response->contains("result");
        missing.erase(method + (!exchange.response ? " ends"
                                : succeeds         ? " succeeds"
                                                   : " refuses"));
      }
    }
  }
  EXPECT_EQ(missing, std::set<std::string>{});
}

TEST(TranscriptCollection, PlaysOnEveryScene) {
  std::set<std::string> unused;
  for (const std::string& scene : sceneNames()) {
    unused.insert(scene);
  }
  for (const std::string& name : transcriptNames()) {
    unused.erase(transcriptNamed(name).scene);
  }
  EXPECT_EQ(unused, std::set<std::string>{});
}

std::string compared(const char* expected, const char* actual) {
  Remembered remembered{{"known", "value"}};
  return mismatch(Json::parse(expected), Json::parse(actual), remembered);
}

TEST(TranscriptMatch, FindsEveryDifference) {
  EXPECT_EQ(compared(R"({"a":1})", R"({"a":1})"), "");
  EXPECT_EQ(compared(R"({"a":1})", R"({"a":2})"), "/a should be 1 and is 2");
  EXPECT_EQ(compared(R"({"a":1})", R"({})"), "/a is missing");
  EXPECT_EQ(compared(R"({})", R"({"a":1})"), "/a should not be there");
  EXPECT_EQ(compared(R"(["b"])", R"(["c"])"), R"(/0 should be "b" and is "c")");
  EXPECT_EQ(compared(R"([1])", R"([1,2])"), " has 2 items, not 1");
  EXPECT_EQ(compared(R"({"a":[]})", R"({"a":{}})"), "/a should be [] and is {}");
}

TEST(TranscriptMatch, AllowsMoreOnlyWhereTheExpectedSaysSo) {
  EXPECT_EQ(compared(R"({"a":1,"...":true})", R"({"a":1,"b":2})"), "");
  EXPECT_EQ(compared(R"([1,"..."])", R"([1,2,3])"), "");
  EXPECT_EQ(compared(R"([1,2,"..."])", R"([1])"), " has 1 items, not 2");
}

TEST(TranscriptMatch, ChecksTheKindOfAPlaceholder) {
  EXPECT_EQ(compared(R"(["<time>"])", R"(["2026-11-14T23:30:16.123Z"])"), "");
  EXPECT_NE(compared(R"(["<time>"])", R"(["2026-11-14T23:30:16Z"])"), "");
  EXPECT_EQ(compared(R"(["<node>"])", R"(["01234567-89ab-4def-8123-456789abcdef:12"])"), "");
  EXPECT_NE(compared(R"(["<node>"])", R"(["01234567-89ab-4def-8123-456789abcdef:"])"), "");
  EXPECT_NE(compared(R"(["<snapshot>"])", R"(["01234567-89ab-4def-8123-456789abcdef:12"])"), "");
  EXPECT_EQ(compared(R"(["<number>","<any>"])", R"([1.5,null])"), "");
  EXPECT_NE(compared(R"(["<number>"])", R"(["1"])"), "");
  EXPECT_NE(compared(R"(["<text>"])", R"([""])"), "");
  EXPECT_NE(compared(R"(["<png>"])", R"(["R0lGOD"])"), "");
  EXPECT_NE(compared(R"(["<unknown>"])", R"(["<unknown>"])"), "");
}

TEST(TranscriptMatch, RemembersAndRecalls) {
  EXPECT_EQ(compared(R"(["$known"])", R"(["value"])"), "");
  EXPECT_NE(compared(R"(["$known"])", R"(["other"])"), "");
  EXPECT_EQ(compared(R"(["<text:new>","$new"])", R"(["a","a"])"), "");
  EXPECT_NE(compared(R"(["<text:new>","$new"])", R"(["a","b"])"), "");
}

TEST(TranscriptText, SendsWhatWasRememberedAndStopsAtTheEnd) {
  const Transcript transcript = parseTranscript(
      "# comment\nscene: any\n\n> {}\n< {\"id\":\n   \"<text:a>\"}\n> \"$a!\"\n<\n");
  std::vector<std::string> asked;
  EXPECT_EQ(play(transcript,
                 [&](const std::string& request) {
                   asked.push_back(request);
                   return asked.size() == 1 ? std::optional<std::string>(R"({"id":"x"})")
                                            : std::nullopt;
                 }),
            "");
  EXPECT_EQ(asked, (std::vector<std::string>{"{}", "\"x!\""}));
}

TEST(TranscriptText, TellsWhereAResponseIsWrong) {
  const Transcript transcript = parseTranscript("scene: any\n> {}\n< {\"a\": 1}\n");
  const auto playedWith = [&](std::optional<std::string> answer) {
    return play(transcript, [&](const std::string&) { return answer; });
  };
  EXPECT_EQ(playedWith(R"({"a":1})"), "");
  EXPECT_EQ(playedWith(R"({"a":2})"), "line 2: /a should be 1 and is 2\n  the response: {\"a\":2}");
  EXPECT_EQ(playedWith(R"({"a": 1})"),
            R"(line 2: the response is not written as it should be: {"a": 1})");
  EXPECT_EQ(playedWith("a"), "line 2: the response is no JSON: a");
  EXPECT_EQ(playedWith(std::nullopt), "line 2: no response came");
}

TEST(TranscriptText, IsRefusedWhenItIsNone) {
  for (const char* text : {"", "> {}\n< {}\n", "scene: any\n", "scene: any\n> {}\n",
                           "scene: any\n< {}\n", "scene: any\n> {}\n< {\n", " a\n",
                           "scene: any\n> {}\n> {}\n< {}\n", "scene: any\nother\n"}) {
    EXPECT_THROW((void)parseTranscript(text), std::runtime_error) << text;
  }
}

}  // namespace
}  // namespace tarqo::transcripts
