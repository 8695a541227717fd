// Bytes that no well-behaved client sends, through the loop that reads them: each line gets its
// answer, and the loop goes on.

#include <poll.h>
#include <unistd.h>

#include <memory>
#include <thread>

#include "server/request_loop.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using Lines = std::vector<std::string>;

struct CloseFile {
  void operator()(std::FILE* file) const { (void)std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File fileWith(std::string_view content) {
  File file(std::tmpfile());
  EXPECT_EQ(std::fwrite(content.data(), 1, content.size(), file.get()), content.size());
  std::rewind(file.get());
  return file;
}

std::string contentOf(std::FILE* file) {
  std::rewind(file);
  std::string content;
  char chunk[65536];
  for (std::size_t count = sizeof chunk; count > 0; content.append(chunk, count)) {
    count = std::fread(chunk, 1, sizeof chunk, file);
  }
  return content;
}

Lines splitLines(const std::string& content) {
  Lines lines;
  for (std::size_t begin = 0; begin < content.size();) {
    const std::size_t end = content.find('\n', begin);
    lines.push_back(content.substr(begin, end - begin));
    begin = end == std::string::npos ? content.size() : end + 1;
  }
  return lines;
}

const std::string kProbe = R"({"id":"probe","method":"listTargets"})";
const std::string kProbeAnswer = R"({"id":"probe","result":{"targets":[]}})";

std::string unknownMethod(const std::string& id) {
  return R"({"error":{"code":"invalid_request","message":"Unknown native method"},"id":)" + id +
         "}";
}

class InputTorture : public Scene {
 protected:
  /// All that is written in answer to these bytes, line by line.
  Lines answers(std::string_view input) {
    const File in = fileWith(input);
    const File out(std::tmpfile());
    serveRequests(server, in.get(), out.get());
    const std::string written = contentOf(out.get());
    EXPECT_TRUE(written.empty() || written.back() == '\n') << "the last line has no end";
    return splitLines(written);
  }

  /// The one answer to a line, with a request after it that must be answered too.
  std::string answer(std::string_view line) {
    const Lines lines = answers(std::string(line) + "\n" + kProbe + "\n");
    EXPECT_EQ(lines.size(), 2);
    EXPECT_EQ(lines.back(), kProbeAnswer);
    return lines.front();
  }

  /// Expects a line to be no request at all.
  void expectNativeError(std::string_view line) {
    const Json response = Json::parse(answer(line));
    EXPECT_EQ(response["id"], nullptr);
    EXPECT_EQ(response["error"]["code"], "native_error");
  }
};

TEST_F(InputTorture, NoInputGivesNoOutput) { EXPECT_EQ(answers(""), Lines{}); }

TEST_F(InputTorture, AnEmptyLineIsAnswered) { expectNativeError(""); }

TEST_F(InputTorture, ManyEmptyLinesAreAnsweredOneByOne) { EXPECT_EQ(answers("\n\n\n").size(), 3); }

TEST_F(InputTorture, ALastLineWithoutAnEndIsServed) {
  EXPECT_EQ(answers(kProbe), Lines{kProbeAnswer});
}

TEST_F(InputTorture, HalfARequestAtTheEndOfInputIsAnswered) {
  const Lines lines = answers(kProbe + "\n" + kProbe.substr(0, 12));
  ASSERT_EQ(lines.size(), 2);
  EXPECT_EQ(Json::parse(lines[1])["error"]["code"], "native_error");
}

TEST_F(InputTorture, OneByteAtATimeMakesNoDifference) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string input = kProbe + "\n" + unknownMethod("1") + "\n" + kProbe + "\n";
  std::thread writer([&] {
    for (const char c : input) {
      EXPECT_EQ(write(ends[1], &c, 1), 1);
      std::this_thread::yield();
    }
    (void)close(ends[1]);
  });
  const File in(fdopen(ends[0], "r"));
  const File out(std::tmpfile());
  serveRequests(server, in.get(), out.get());
  writer.join();
  EXPECT_EQ(splitLines(contentOf(out.get())),
            (Lines{kProbeAnswer, unknownMethod("1"), kProbeAnswer}));
}

// A response that waits in a buffer would leave a client waiting that sends one request at a time.
TEST_F(InputTorture, EveryResponseIsFlushedBeforeTheNextRequestIsRead) {
  int requests[2];
  int responses[2];
  ASSERT_EQ(pipe(requests), 0);
  ASSERT_EQ(pipe(responses), 0);
  const File in(fdopen(requests[0], "r"));
  std::thread helper([&] {
    const File out(fdopen(responses[1], "w"));
    serveRequests(server, in.get(), out.get());
  });
  const File answered(fdopen(responses[0], "r"));
  for (int i = 0; i < 3; ++i) {
    const std::string line = kProbe + "\n";
    EXPECT_EQ(write(requests[1], line.data(), line.size()), static_cast<ssize_t>(line.size()));
    constexpr int kPatienceMs = 10'000;
    pollfd ready{responses[0], POLLIN, 0};
    if (poll(&ready, 1, kPatienceMs) != 1) {
      ADD_FAILURE() << "no response came while the next request was awaited";
      break;
    }
    char buffer[256];
    EXPECT_NE(std::fgets(buffer, sizeof buffer, answered.get()), nullptr);
    EXPECT_EQ(buffer, kProbeAnswer + "\n");
  }
  (void)close(requests[1]);
  helper.join();
}

TEST_F(InputTorture, ACarriageReturnBeforeTheLineEndIsWhiteSpace) {
  EXPECT_EQ(answers(kProbe + "\r\n" + kProbe + "\r\n"), (Lines{kProbeAnswer, kProbeAnswer}));
  expectNativeError("\r");
}

TEST_F(InputTorture, ACarriageReturnAloneEndsNoLine) { expectNativeError(kProbe + "\r" + kProbe); }

TEST_F(InputTorture, WhiteSpaceAroundARequestIsNoError) {
  EXPECT_EQ(answer(" \t" + kProbe + " \t "), kProbeAnswer);
}

TEST_F(InputTorture, ANulByteIsNoEndOfTheLine) {
  expectNativeError("\0"sv);
  expectNativeError(kProbe + "\0{}"s);
  expectNativeError("{\"id\":\"\0\"}"sv);
}

TEST_F(InputTorture, AnEscapedNulIsAnOrdinaryCharacter) {
  EXPECT_EQ(answer(R"({"id":"\u0000"})"), unknownMethod(R"("\u0000")"));
}

TEST_F(InputTorture, InvalidUtf8IsRepaired) {
  EXPECT_EQ(answer("{\"id\":\"a\xFF\xC3(\"}"), unknownMethod("\"a\xEF\xBF\xBD\xEF\xBF\xBD(\""));
  EXPECT_EQ(answer("{\"id\":\"\xF0\x9F\x98\"}"), unknownMethod("\"\xEF\xBF\xBD\""));
  expectNativeError("\xFF\xFE\xFD");
}

TEST_F(InputTorture, AByteOrderMarkIsSkipped) {
  EXPECT_EQ(answer("\xEF\xBB\xBF" + kProbe), kProbeAnswer);
}

TEST_F(InputTorture, AnotherEncodingIsNoJson) { expectNativeError("\xFF\xFE{\0}\0"sv); }

TEST_F(InputTorture, ALoneSurrogateIsNoJson) {
  expectNativeError(R"({"id":"\ud800"})");
  expectNativeError(R"({"id":"\udfff"})");
}

TEST_F(InputTorture, ScalarsAtTheTopAreNoJsonRequests) {
  for (const char* line : {"1", "-1.5e3", "true", "null", "\"host\""}) {
    expectNativeError(line);
  }
}

TEST_F(InputTorture, AnArrayIsRefusedAsARequest) {
  EXPECT_EQ(answer("[{\"method\":\"host\"}]"),
            R"({"error":{"code":"invalid_request","message":"Expected one JSON request per line"},)"
            R"("id":null})");
}

TEST_F(InputTorture, TwoRequestsOnALineAreNoJson) { expectNativeError(kProbe + kProbe); }

TEST_F(InputTorture, NestingDownToLevel512IsServed) {
  const std::string id = std::string(511, '[') + std::string(511, ']');
  EXPECT_EQ(answer(R"({"id":)" + id + "}"), unknownMethod(id));
}

TEST_F(InputTorture, NestingBelowLevel512IsAnError) {
  const std::string id = std::string(512, '[') + std::string(512, ']');
  expectNativeError(R"({"id":)" + id + "}");
  expectNativeError(std::string(1'000'000, '['));
  expectNativeError(std::string(1'000'000, '{'));
}

TEST_F(InputTorture, ALineOfManyMegabytesIsServed) {
  const std::string id(20U << 20U, 'a');
  const std::string expected = unknownMethod("\"" + id + "\"");
  EXPECT_TRUE(answer(R"({"id":")" + id + "\"}") == expected);  // Too long to be printed.
}

TEST_F(InputTorture, ALongLineThatIsNoJsonIsAnsweredBriefly) {
  const std::string line(8U << 20U, 'x');
  EXPECT_LT(answer(line).size(), 1000);
}

TEST_F(InputTorture, AnUnclosedTextOfManyMegabytesIsAnsweredBriefly) {
  const std::string line = "{\"id\":\"" + std::string(8U << 20U, 'x');
  EXPECT_LT(answer(line).size(), 1000);
}

TEST_F(InputTorture, IntegersOf64BitsKeepTheirDigits) {
  for (const char* id : {"9007199254740993", "9223372036854775807", "-9223372036854775808",
                         "18446744073709551615"}) {
    EXPECT_EQ(answer(R"({"id":)" + std::string(id) + "}"), unknownMethod(id));
  }
}

TEST_F(InputTorture, NumbersBeyond64BitsAreEchoedAsDoubles) {
  const Json response = Json::parse(answer(R"({"id":123456789012345678901234567890})"));
  EXPECT_EQ(response["id"], 123456789012345678901234567890.0);
}

TEST_F(InputTorture, NumbersBeyondEveryDoubleAreNoJson) {
  expectNativeError(R"({"id":1e999})");
  expectNativeError(R"({"id":-1e999})");
}

TEST_F(InputTorture, ANumberOfManyDigitsIsAnswered) {
  EXPECT_EQ(answer(R"({"id":0.)" + std::string(100'000, '3') + "}"),
            unknownMethod("0.3333333333333333"));
  const std::string tooLarge = R"({"id":)" + std::string(100'000, '9') + "}";
  expectNativeError(tooLarge);
  EXPECT_LT(answer(tooLarge).size(), 1000);
}

TEST_F(InputTorture, HugeNumbersAsArgumentsAreBroughtIntoRangeOrCountAsMissing) {
  desktop.app("com.example.Notes").window({100, 80, 800, 600});
  // A quiet time of 3000 ms is not reached within the default time limit of 1500.
  const std::pair<const char*, int> waits[] = {{"9223372036854775807", 1500},
                                               {"-9223372036854775808", 20},
                                               {"1e300", 180},
                                               {"-1e300", 180},
                                               {"18446744073709551615", 180},
                                               {"0.1e-300", 180}};
  for (const auto& [number, waitedMs] : waits) {
    const std::string n(number);
    const Lines lines =
        answers(R"({"id":1,"method":"connect","args":{"bundleId":"com.example.Notes"}})"
                "\n"
                R"({"id":2,"method":"settle","args":{"quietMs":)" +
                n + R"(,"sinceMs":)" + n +
                "}}\n"
                R"({"id":3,"method":"settle","args":{"timeoutMs":)" +
                n +
                "}}\n"
                R"({"id":4,"method":"observe","args":{"image":false,"maxNodes":)" +
                n + R"(,"maxDepth":)" + n + R"(,"timeoutMs":)" + n +
                "}}\n"
                R"({"id":5,"method":"host","args":{"pid":)" +
                n + "}}\n");
    ASSERT_EQ(lines.size(), 5);
    for (const std::string& line : lines) {
      EXPECT_TRUE(Json::parse(line).contains("result")) << line;
    }
    EXPECT_EQ(Json::parse(lines[1])["result"]["waitedMs"], waitedMs) << number;
  }
}

TEST_F(InputTorture, ManyRequestsAreAnsweredInTheirOrder) {
  std::string input;
  Lines expected;
  for (int i = 0; i < 1000; ++i) {
    input += R"({"id":)" + std::to_string(i) + "}\n";
    expected.push_back(unknownMethod(std::to_string(i)));
  }
  EXPECT_EQ(answers(input), expected);
}

TEST_F(InputTorture, ARequestWithAThousandKeysIsServed) {
  std::string line = "{";
  for (int i = 0; i < 1000; ++i) {
    line += "\"key" + std::to_string(i) + "\":{},";
  }
  EXPECT_EQ(answer(line + kProbe.substr(1)), kProbeAnswer);
}

TEST_F(InputTorture, AnUnserialisableResultWritesNothing) {
  desktop.app("com.example.Game").window({100, 100, 400, 300});
  desktop.recognizer().lines = {{"Start", {0.1, 0.1, 0.2, 0.1}, std::nanf("")}};
  const Lines lines =
      answers(R"({"id":1,"method":"connect","args":{"bundleId":"com.example.Game"}})"
              "\n"
              R"({"id":2,"method":"observe"})"
              "\n"
              R"({"id":3})");
  ASSERT_EQ(lines.size(), 2);
  EXPECT_EQ(lines[1], unknownMethod("3"));
}

TEST_F(InputTorture, NothingAfterCloseIsServed) {
  EXPECT_EQ(answers(kProbe + "\n{\"id\":1,\"method\":\"close\"}\n" + kProbe + "\n"),
            Lines{kProbeAnswer});
}

TEST_F(InputTorture, NothingIsServedOnceNobodyReads) {
  const File in = fileWith(kProbe + "\n" + R"({"method":"connect","args":{"bundleId":"a.b"}})");
  const File out(std::fopen("/dev/null", "r"));  // Nothing can be written to it.
  ASSERT_NE(out, nullptr);
  serveRequests(server, in.get(), out.get());
  EXPECT_EQ(std::getc(in.get()), '{') << "the second line was read";
}

}  // namespace
}  // namespace tarqo
