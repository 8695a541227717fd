// What script/record writes down is a transcript that plays.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>

#include "simulator/simulation.h"
#include "tests/transcripts/collection.h"

namespace tarqo::transcripts {
namespace {

std::string recorded(const std::string& scene, const std::string& requests) {
  const std::string file = testing::TempDir() + "/requests_" + scene + ".txt";
  std::ofstream(file) << requests;
  const std::string command = std::string("PYTHONDONTWRITEBYTECODE=1 python3 " TARQO_RECORDER " ") +
                              TARQO_SIM_PROGRAM + " " + scene + " < " + file;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string text;
  for (int c = std::getc(pipe.get()); c != EOF; c = std::getc(pipe.get())) {
    text += static_cast<char>(c);
  }
  std::remove(file.c_str());
  return text;
}

TEST(Recorder, WritesATranscriptThatPlays) {
  const std::string text =
      recorded("notes", R"({"id":1,"method":"connect","args":{"bundleId":"com.example.Notes"}}
{"id":2,"method":"observe"}
{"id":3,"method":"observe","args":{"image":false,"previousNodeId":"$save"}}
{"id":4,"method":"click","args":{"nodeId":"$save"}}
{"id":5,"method":"click","args":{"nodeId":"$save"}}
{"id":6,"method":"settle"}
{"id":7,"method":"geometry"}
{"id":8,"method":"close"}
)");
  const Transcript transcript = parseTranscript(text);
  EXPECT_EQ(transcript.scene, "notes");
  ASSERT_EQ(transcript.exchanges.size(), 8U);
  EXPECT_EQ(transcript.exchanges[3].request,
            R"({"id":4,"method":"click","args":{"nodeId":"$save"}})");
  EXPECT_EQ(transcript.exchanges[3].response->at("result").at("nodeId"), "$save");
  EXPECT_EQ(transcript.exchanges[4].response->at("error").at("code"), "stale_snapshot");
  sim::Simulation simulation(sim::SceneFile::read(scenePath(transcript.scene)));
  EXPECT_EQ(play(transcript,
                 [&](const std::string& request) { return simulation.serve(request).response; }),
            "");
}

}  // namespace
}  // namespace tarqo::transcripts
