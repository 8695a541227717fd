// The built program: what it says of a scene it cannot play, and how it ends.

#include <gtest/gtest.h>

#include <fstream>

#include "tests/transcripts/piped_program.h"

namespace tarqo {
namespace {

using transcripts::PipedProgram;

const std::string kExample = std::string(TARQO_SIM_EXAMPLES) + "/notes_editor.json";

std::string fileWith(const std::string& content) {
  std::string path = testing::TempDir() + "/tarqo-scene.json";
  std::ofstream(path) << content;
  return path;
}

TEST(SimulatorProgram, AnswersAndEndsWithItsInput) {
  PipedProgram program({TARQO_SIM_PROGRAM, kExample});
  EXPECT_EQ(program.ask(R"({"id":1,"method":"nothing"})"),
            R"({"error":{"code":"invalid_request","message":"Unknown native method"},"id":1})");
  EXPECT_EQ(program.finish(), 0);
}

TEST(SimulatorProgram, EndsWhenAskedTo) {
  PipedProgram program({TARQO_SIM_PROGRAM, kExample});
  EXPECT_EQ(program.ask(R"({"method":"close"})"), std::nullopt);
  EXPECT_EQ(program.finish(), 0);
}

TEST(SimulatorProgram, RefusesASceneThatIsWrong) {
  PipedProgram program({TARQO_SIM_PROGRAM, fileWith(R"({"windows":[]})")});
  EXPECT_EQ(program.ask(""), std::nullopt);
  EXPECT_EQ(program.finish(), 1);
}

TEST(SimulatorProgram, RefusesToStartWithoutAScene) {
  PipedProgram program({TARQO_SIM_PROGRAM});
  EXPECT_EQ(program.ask(""), std::nullopt);
  EXPECT_EQ(program.finish(), 2);
}

}  // namespace
}  // namespace tarqo
