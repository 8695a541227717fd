// The whole helper with the macOS backend, over the simulated desktop: round after round leaves
// nothing behind, and whatever call of the system fails or throws, every request is answered and
// nothing is lost.
//
// TARQO_ROUNDS says how many rounds there are; 2000 take a quarter of an hour.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/process_entry.h"
#include "platform/sim/sim_desktop.h"
#include "server/server.h"
#include "tests/contract/beside_main_loop.h"
#include "tests/platform/mac/runtime/blocks.h"
#include "tests/platform/mac/shared_backend.h"
#include "tests/platform/mac/standin/desktop.h"
#include "tests/platform/mac/standin/faults.h"
#include "tests/platform/mac/standin/heap.h"
#include "tests/platform/mac/standin/mac_on_desktop.h"
#include "tests/platform/mac/standin/tools.h"

namespace tarqo {

Backend& sharedBackend() {
  static const std::unique_ptr<Backend> kBackend = makeMacPlatform("whole_helper_tests");
  return *kBackend;
}

namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using standin::Fault;
using standin::Faults;

class WholeHelper : public testing::Test {
 protected:
  WholeHelper() {
    standin::replaceTool("/usr/sbin/screencapture", [](const standin::CommandLine& /*command*/) {
      return standin::CommandLine{"/bin/false"};
    });
    sim::App& notes = desktop.app("com.example.Notes");
    sim::Window& window = notes.window({100, 80, 640, 480}, "Notes");
    window.button("Save").action("AXPress").announces("AXValueChanged");
    window.textField().title("Name");
    desktop.capture().shareableWindowsExist = true;
    desktop.recognizer().lines = {{"read", {0.1, 0.1, 0.2, 0.1}, 0.9F}};
    standin::enterDesktop(desktop.platform(), true);
    EXPECT_TRUE(ask("connect", {{"bundleId", "com.example.Notes"}}).contains("result"));
  }
  WholeHelper(const WholeHelper&) = delete;
  WholeHelper& operator=(const WholeHelper&) = delete;
  ~WholeHelper() override {
    Faults::instance().reset();
    standin::leaveDesktop();
  }

  /// The response to a request; a failed test when there is none.
  json ask(const std::string& method, const json& args) {
    std::optional<std::string> line;
    runAndRelease([&] {
      line = server.serve(json{{"id", 1}, {"method", method}, {"args", args}}.dump()).response;
    });
    EXPECT_TRUE(line) << method;
    return line ? json::parse(*line) : json::object();
  }

  /// The id of the node of that name, wherever in the answer it stands; "none" without one.
  [[nodiscard]] static std::string idOf(const json& part, const std::string& name) {
    if (part.is_object() && part.contains("id") && part.value("name", json()) == name) {
      return part.at("id");
    }
    for (const json& each : part) {
      const std::string found = each.is_structured() ? idOf(each, name) : "none";
      if (found != "none") {
        return found;
      }
    }
    return "none";
  }

  /// Whether every request succeeded.
  bool round() {
    bool fine = true;
    const auto note = [&](const json& response) {
      EXPECT_TRUE(response.contains("result")) << response;
      fine = fine && response.contains("result");
    };
    json observed = ask("observe", {{"forceOcr", true}});
    note(observed);
    note(ask("click", {{"nodeId", idOf(observed, "Save")}}));
    observed = ask("observe", {{"image", false}});
    note(observed);
    note(ask("input", {{"nodeId", idOf(observed, "Name")}, {"kind", "type"}, {"text", "a한"}}));
    note(ask("settle", {{"quietMs", 20}, {"timeoutMs", 100}}));
    return fine;
  }

  /// What lives now: objects, blocks, descriptors.
  static std::map<std::string, long> living() {
    auto living = standin::Heap::instance().population();
    living["blocks"] = standin::blocksAlive();
    living["descriptors"] = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    return living;
  }

  /// Waits until what lives is that, since other threads let go a moment later.
  static void expectLiving(const std::map<std::string, long>& expected, const std::string& when) {
    const auto deadline = std::chrono::steady_clock::now() + 3s;
    while (living() != expected && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(10ms);
    }
    EXPECT_EQ(living(), expected) << when;
  }

  sim::Desktop desktop;
  Server server{sharedBackend().platform()};
};

TEST_F(WholeHelper, LeavesNothingBehindRoundAfterRound) {
  const char* wanted = std::getenv("TARQO_ROUNDS");
  const int rounds = wanted == nullptr ? 30 : std::atoi(wanted);
  std::map<std::string, long> early;
  for (int i = 1; i <= rounds; ++i) {
    ASSERT_TRUE(round()) << i;
    if (i == 10) {
      early = living();
    }
  }
  expectLiving(early, "after the last round");
}

/// The calls of a round are dealt out to this many tests, which can then wait at the same time.
constexpr std::size_t kShares = 8;

class FaultSweep : public WholeHelper, public testing::WithParamInterface<std::size_t> {
 protected:
  /// Every call of a round, by name.
  std::vector<std::string> callsOfARound() {
    Faults::instance().count();
    EXPECT_TRUE(round());
    std::vector<std::string> names;
    for (const auto& [name, count] : Faults::instance().counted()) {
      names.push_back(name);
    }
    Faults::instance().reset();
    return names;
  }

  void sweep(Fault::Kind kind, const std::string& what) {
    const std::vector<std::string> names = callsOfARound();
    EXPECT_GT(names.size(), 30U);
    ASSERT_TRUE(round());
    const auto before = living();
    int swept = 0;
    for (const std::string& name : names) {
      // By the name itself: whether some call happens in a round may be a matter of time.
      if (std::hash<std::string>()(name) % kShares != GetParam()) {
        continue;
      }
      // What an initialiser was to initialise is lost when it throws, in every program.
      if (kind == Fault::Kind::throws && name.find(" init") != std::string::npos) {
        continue;
      }
      Faults::instance().set(name, {kind, std::nullopt});
      const json observed = ask("observe", {{"forceOcr", true}});
      (void)ask("click", {{"nodeId", idOf(observed, "Save")}});
      Faults::instance().reset();
      ASSERT_TRUE(ask("connect", {{"bundleId", "com.example.Notes"}}).contains("result")) << name;
      ++swept;
    }
    EXPECT_GT(swept, 0);
    ASSERT_TRUE(round());
    expectLiving(before, "after each call " + what);
  }
};

TEST_P(FaultSweep, AnswersEveryRequestWhateverCallFails) { sweep(Fault::Kind::fails, "failed"); }

TEST_P(FaultSweep, AnswersEveryRequestWhateverCallThrows) { sweep(Fault::Kind::throws, "threw"); }

INSTANTIATE_TEST_SUITE_P(Share, FaultSweep, testing::Range<std::size_t>(0, kShares));

}  // namespace

void runWholeHelperTests() {
  standin::complain = [](const std::string& what) { ADD_FAILURE() << what; };
  standin::Heap::instance().freeWhatEnds();
  contract::runBesideMainLoop(sharedBackend().mainLoop(), [] { return RUN_ALL_TESTS(); });
}

}  // namespace tarqo

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  tarqo::runWholeHelperTests();
}
