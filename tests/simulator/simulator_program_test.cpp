// The built program: what it says of a scene it cannot play, and how it ends.

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

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

TEST(SimulatorProgram, WaitsForItsPipesAlsoWhereTheyDoNot) {
  PipedProgram program({TARQO_SIM_PROGRAM, kExample}, PipedProgram::Pipes::notWaiting);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // It has nothing to read meanwhile.
  // An answer that is longer than a pipe holds.
  const std::string id(std::size_t{1} << 20U, 'a');
  const auto response = program.ask(R"({"id":")" + id + R"("})");
  ASSERT_TRUE(response);
  EXPECT_GT(response->size(), id.size());
  EXPECT_EQ(program.finish(), 0);
}

// A sanitizer takes memory for itself.
#if defined(__linux__) && !defined(TARQO_SANITIZED)
constexpr std::size_t kMiB = 1U << 20U;

/// The memory a process takes up, in MiB.
std::size_t residentMiB(pid_t pid) {
  std::ifstream statm("/proc/" + std::to_string(pid) + "/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  statm >> size >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / kMiB;
}

TEST(SimulatorProgram, GivesTheMemoryOfALongLineBack) {
  PipedProgram program({TARQO_SIM_PROGRAM, kExample});
  ASSERT_TRUE(program.ask(R"({"id":1})"));
  const std::size_t before = residentMiB(program.pid());
  const std::string line =
      R"({"id":1,"method":"nothing","args":{"a":")" + std::string(20 * kMiB, 'a') + R"("}})";
  ASSERT_TRUE(program.ask(line));
  ASSERT_TRUE(program.ask(R"({"id":2})")) << "the memory was given back before this was read";
  EXPECT_LE(residentMiB(program.pid()), before + 10);
}

std::string repeated(std::string_view piece, std::size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  for (std::size_t i = 0; i < count; ++i) {
    text += piece;
  }
  return text;
}

// With no more than 100 MiB for all it does, of which it takes most to start.
TEST(SimulatorProgram, AnswersWhenMemoryIsShort) {
  PipedProgram program(
      {"/bin/sh", "-c", R"(ulimit -v 102400; exec "$0" "$1")", TARQO_SIM_PROGRAM, kExample});
  const auto expectAnswer = [&](const std::string& args, std::size_t count) {
    const auto answer = program.ask(R"({"id":1,"args":[)" + args + "]}");
    ASSERT_TRUE(answer) << count << " times " << args.substr(0, 10);
    EXPECT_TRUE(answer->starts_with(R"({"error":)")) << answer->substr(0, 100);
    EXPECT_LT(answer->size(), 200);
  };
  for (const std::size_t count : {90'000, 1'000'000, 3'000'000}) {
    expectAnswer(repeated("0,", count) + "0", count);
    expectAnswer(repeated("{},", count) + "0", count);
    expectAnswer("\"" + repeated("a", count * 10) + "\"", count);
  }
  EXPECT_EQ(program.ask(R"({"id":2})"),
            R"({"error":{"code":"invalid_request","message":"Unknown native method"},"id":2})");
  EXPECT_EQ(program.finish(), 0);
}
#endif

TEST(SimulatorProgram, RefusesASceneThatIsWrong) {
  PipedProgram program({TARQO_SIM_PROGRAM, fileWith(R"({"windows":[]})")});
  EXPECT_EQ(program.ask(""), std::nullopt);
  EXPECT_EQ(program.finish(), 1);
}

TEST(SimulatorProgram, TellsItsVersion) {
  PipedProgram program({TARQO_SIM_PROGRAM, "--version"});
  EXPECT_EQ(program.ask(""), "tarqo-ax " TARQO_VERSION);
  EXPECT_EQ(program.finish(), 0);
}

TEST(SimulatorProgram, RefusesToStartWithoutAScene) {
  PipedProgram program({TARQO_SIM_PROGRAM});
  EXPECT_EQ(program.ask(""), std::nullopt);
  EXPECT_EQ(program.finish(), 2);
}

}  // namespace
}  // namespace tarqo
