// The example scenes can be played, and the sessions shown of them really go like that.

#include <gtest/gtest.h>

#include <filesystem>

#include "simulator/simulation.h"
#include "tests/transcripts/collection.h"

namespace tarqo::sim {
namespace {

const std::filesystem::path kExamples = TARQO_SIM_EXAMPLES;

/// The sessions in the document: code blocks that name a scene.
std::vector<transcripts::Transcript> documentedSessions() {
  const std::string fence = "```\n";
  const std::string document = transcripts::readFile(TARQO_SIM_DOCUMENT);
  std::vector<transcripts::Transcript> sessions;
  for (std::size_t at = document.find(fence + "scene: "); at != std::string::npos;
       at = document.find(fence + "scene: ", at)) {
    at += fence.size();
    sessions.push_back(
        transcripts::parseTranscript(document.substr(at, document.find(fence, at) - at)));
  }
  return sessions;
}

TEST(SimulatorExamples, AreScenesWithSomethingToObserve) {
  int examples = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kExamples)) {
    Simulation simulation(SceneFile::read(entry.path().string()));
    App* const front = simulation.desktop().frontmost();
    ASSERT_NE(front, nullptr) << entry.path();
    const Json connect = {{"method", "connect"}, {"args", {{"bundleId", *front->facts.bundleId}}}};
    (void)simulation.serve(connect.dump());
    const Json answer = Json::parse(*simulation.serve(R"({"method":"observe"})").response);
    ASSERT_TRUE(answer.contains("result")) << entry.path() << answer;
    EXPECT_GT(answer["result"]["snapshot"]["nodes"].size(), 2U) << entry.path();
    ++examples;
  }
  EXPECT_EQ(examples, 3);
}

TEST(SimulatorExamples, GoAsTheDocumentShows) {
  const auto sessions = documentedSessions();
  EXPECT_FALSE(sessions.empty());
  for (const transcripts::Transcript& session : sessions) {
    Simulation simulation(SceneFile::read((kExamples / session.scene).string()));
    EXPECT_EQ(transcripts::play(
                  session,
                  [&](const std::string& request) { return simulation.serve(request).response; }),
              "");
  }
}

}  // namespace
}  // namespace tarqo::sim
