// An error in a scene file is one sentence that says what is wrong, and where.

#include <gtest/gtest.h>

#include "simulator/scene_file.h"

namespace tarqo::sim {
namespace {

std::string wrongWith(const std::string& json) {
  try {
    const SceneFile scene(json);
  } catch (const SceneError& error) {
    return error.what();
  }
  return "";
}

/// An application with one window of these nodes.
std::string withNodes(const std::string& nodes) {
  return R"({"applications":[{"bundleId":"a","windows":[{"id":"w","frame":[0,0,9,9],"nodes":[)" +
         nodes + "]}]}]}";
}

std::string withChange(const std::string& effect) {
  return R"({"applications":[{"bundleId":"a","windows":[{"id":"w","frame":[0,0,9,9]}]}],)"
         R"("changes":[{"after":{},"do":[)" +
         effect + "]}]}";
}

TEST(SceneErrors, NameTheTextThatIsNoJson) {
  EXPECT_TRUE(
      wrongWith("{\n  5}").starts_with("the scene is no JSON: parse error at line 2, column 3:"));
  EXPECT_EQ(wrongWith("[]"), "the scene must be an object");
}

TEST(SceneErrors, NameThePathToAValueOfTheWrongType) {
  EXPECT_EQ(wrongWith(withNodes(R"({"role":"AXGroup"},{"role":7})")),
            "applications[0].windows[0].nodes[1].role must be a text");
  EXPECT_EQ(wrongWith(withNodes(R"({"role":"AXGroup","nodes":[{"role":"AXButton","enabled":1}]})")),
            "applications[0].windows[0].nodes[0].nodes[0].enabled must be true or false");
  EXPECT_EQ(wrongWith(withNodes(R"({"role":"AXGroup","frame":[1,2,3]})")),
            "applications[0].windows[0].nodes[0].frame must be a list of 4 numbers");
  EXPECT_EQ(wrongWith(withNodes(R"({"role":"AXGroup","value":[]})")),
            "applications[0].windows[0].nodes[0].value must be a text, a number, true or false");
  EXPECT_EQ(wrongWith(R"({"applications":{}})"), "applications must be a list");
  EXPECT_EQ(wrongWith(R"({"session":true})"), "session must be an object");
  EXPECT_EQ(
      wrongWith(R"({"capture":{"windowImages":"no"}})"),
      R"(capture.windowImages must be "works", "fails", "never" or a number of milliseconds)");
  EXPECT_EQ(wrongWith(R"({"capture":{"encoding":"no"}})"),
            R"(capture.encoding must be "works", "fails" or "missing")");
}

TEST(SceneErrors, NameWhatIsMissing) {
  EXPECT_EQ(wrongWith(R"({"applications":[{}]})"), "applications[0].bundleId is missing");
  EXPECT_EQ(wrongWith(withNodes("{}")), "applications[0].windows[0].nodes[0].role is missing");
  EXPECT_EQ(wrongWith(R"({"changes":[{"do":[]}]})"), "changes[0].after is missing");
}

TEST(SceneErrors, NameMembersThatNothingReads) {
  EXPECT_EQ(wrongWith(R"({"window":[]})"), "window is not known");
  EXPECT_EQ(wrongWith(withNodes(R"({"role":"AXGroup","rolle":"a"})")),
            "applications[0].windows[0].nodes[0].rolle is not known");
  EXPECT_EQ(wrongWith(R"({"permissions":{"microphone":true}})"),
            "permissions.microphone is not known");
  EXPECT_EQ(wrongWith(R"({"applications":[{"bundleId":"a","keys":{"Return":[]}}]})"),
            "applications[0].keys.Return must be a key that the protocol knows");
}

TEST(SceneErrors, NameTimesThatCannotBe) {
  EXPECT_EQ(wrongWith(R"({"changes":[{"after":{"requests":1.5},"do":[]}]})"),
            "changes[0].after.requests must be a whole number of 0 or more");
  EXPECT_EQ(wrongWith(R"({"changes":[{"after":{"requests":1e300},"do":[]}]})"),
            "changes[0].after.requests must be a whole number of 0 or more");
  EXPECT_EQ(wrongWith(R"({"changes":[{"after":{"ms":-1},"do":[]}]})"),
            "changes[0].after.ms must be a number of milliseconds, 0 or more");
  EXPECT_EQ(wrongWith(R"({"changes":[{"after":{"ms":1e300},"do":[]}]})"),
            "changes[0].after.ms must be a number of milliseconds, 0 or more");
}

TEST(SceneErrors, NameNamesThatNothingHas) {
  EXPECT_EQ(wrongWith(withChange(R"({"close":"v"})")),
            R"(changes[0].do[0].close must name a window: none is called "v")");
  EXPECT_EQ(wrongWith(withChange(R"({"set":{"node":"v"}})")),
            R"(changes[0].do[0].set.node must name a node or a window: none is called "v")");
  EXPECT_EQ(wrongWith(withChange(R"({"quit":"w"})")),
            R"(changes[0].do[0].quit must name an application: none is called "w")");
  EXPECT_EQ(wrongWith(R"({"host":{"application":"a"}})"),
            R"(host.application must name an application: none is called "a")");
  EXPECT_EQ(wrongWith(R"({"capture":{"windowImagesOf":{"w":"fails"}}})"),
            R"(capture.windowImagesOf.w must name a window or another window: none is called "w")");
}

TEST(SceneErrors, NameNamesThatAreTaken) {
  EXPECT_EQ(wrongWith(withNodes(R"({"role":"AXGroup","id":"w"})")),
            R"(applications[0].windows[0].nodes[0].id must differ from every other: "w" is taken)");
}

TEST(SceneErrors, AskForOneEffectAtATime) {
  EXPECT_EQ(wrongWith(withChange("{}")), "changes[0].do[0] must be one effect");
  EXPECT_EQ(wrongWith(withChange(R"({"afterMs":5})")), "changes[0].do[0] must be one effect");
  EXPECT_EQ(wrongWith(withChange(R"({"close":"w","minimize":"w"})")),
            "changes[0].do[0] must be one effect");
  EXPECT_EQ(wrongWith(withChange(R"({"explode":"w"})")), "changes[0].do[0].explode is not known");
}

TEST(SceneErrors, NameNumbersThatCannotBe) {
  const auto withLine = [](const std::string& members) {
    return R"({"recognizedText":{"lines":[{"text":"a",)" + members + "}]}}";
  };
  for (const char* confidence : {"1e300", "-0.1", "1.1", "\"1\""}) {
    EXPECT_EQ(wrongWith(withLine(R"("box":[0,0,1,1],"confidence":)" + std::string(confidence))),
              "recognizedText.lines[0].confidence must be a number from 0 to 1");
  }
  EXPECT_EQ(wrongWith(withLine(R"("box":[0,0,1,1e300])")),
            "recognizedText.lines[0].box must not go beyond a million");
  EXPECT_EQ(wrongWith(withNodes(R"({"role":"AXGroup","frame":[-1e7,2,3,4]})")),
            "applications[0].windows[0].nodes[0].frame must not go beyond a million");
  EXPECT_EQ(wrongWith(R"({"screens":[{"frame":[0,0,9,9],"scale":1e300}]})"),
            "screens[0].scale must be a number from 1 to 8");
}

std::string wrongWithFile(const std::string& path) {
  try {
    (void)SceneFile::read(path);
  } catch (const SceneError& error) {
    return error.what();
  }
  return "";
}

TEST(SceneErrors, TellOfAFileThatCannotBeRead) {
  EXPECT_EQ(wrongWithFile("/nowhere/scene.json"), "the file cannot be read");
  EXPECT_EQ(wrongWithFile("/"), "the scene must be a file, and this is a folder");
}

TEST(SceneErrors, AreNoneWhereAUseComesBeforeItsName) {
  EXPECT_EQ(wrongWith(withNodes(R"({"role":"AXButton","press":[{"remove":"b"}]},)"
                                R"({"role":"AXGroup","id":"b"})")),
            "");
  EXPECT_EQ(wrongWith("{}"), "");
}

}  // namespace
}  // namespace tarqo::sim
