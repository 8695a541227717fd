#include "server/server.h"

#include "base/failure.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

class ServeLine : public Scene {
 protected:
  /// The response line as it would be written.
  std::string line(const std::string& request) {
    return server.serve(request).response.value_or("nothing");
  }
};

constexpr const char* kUnknownMethod =
    R"({"code":"invalid_request","message":"Unknown native method"})";

std::string refusal(const std::string& error, const std::string& id) {
  return R"({"error":)" + error + R"(,"id":)" + id + "}";
}

TEST_F(ServeLine, AnswersHostWithItsIdAndWhetherAHostIsKnown) {
  EXPECT_EQ(line(R"({"id": 7, "method": "host"})"),
            R"({"id":7,"result":{"host":{"name":"MCP 호스트"},"known":false}})");
}

TEST_F(ServeLine, AnswersARequestWithoutIdWithNull) {
  EXPECT_EQ(line(R"({"method": "listTargets"})"), R"({"id":null,"result":{"targets":[]}})");
}

TEST_F(ServeLine, RefusesAnUnknownMethod) {
  EXPECT_EQ(line(R"({"id": "a", "method": "nothing"})"), refusal(kUnknownMethod, "\"a\""));
}

TEST_F(ServeLine, RefusesAMethodThatIsNoTextOrMissing) {
  for (const char* method :
       {R"(,"method":5)", R"(,"method":null)", R"(,"method":["host"])", R"(,"method":true)", ""}) {
    EXPECT_EQ(line(R"({"id":1)" + std::string(method) + "}"), refusal(kUnknownMethod, "1"));
  }
}

TEST_F(ServeLine, ComparesMethodNamesExactly) {
  for (const char* method : {"Host", "host ", " host", "hos", "hosts", "", "host\\u0000"}) {
    EXPECT_EQ(line(R"({"id":1,"method":")" + std::string(method) + "\"}"),
              refusal(kUnknownMethod, "1"))
        << method;
  }
}

TEST_F(ServeLine, RefusesAnArrayAsNoRequest) {
  EXPECT_EQ(line("[1,2]"),
            refusal(R"({"code":"invalid_request","message":"Expected one JSON request per line"})",
                    "null"));
}

TEST_F(ServeLine, AnswersWhatIsNoJsonWithANativeErrorAndNullId) {
  for (const char* request : {"", " ", "hello", R"({"id":1,)", "5", "\"host\"", "null"}) {
    const Json response = serveLine(request);
    EXPECT_EQ(response["error"]["code"], "native_error") << request;
    EXPECT_FALSE(response["error"]["message"].get<std::string>().empty()) << request;
    EXPECT_EQ(response["error"].size(), 2) << request;
    EXPECT_EQ(response["id"], nullptr) << request;
    EXPECT_EQ(response.size(), 2) << request;
  }
}

TEST_F(ServeLine, CloseAsksForTheEndWithoutAResponse) {
  const Served served = server.serve(R"({"id": 1, "method": "close"})");
  EXPECT_TRUE(served.close);
  EXPECT_EQ(served.response, std::nullopt);
}

TEST_F(ServeLine, NoOtherRequestAsksForTheEnd) {
  for (const char* request : {R"({"method":"Close"})", R"({"method":"host"})", "", "[]"}) {
    EXPECT_FALSE(server.serve(request).close) << request;
  }
}

TEST_F(ServeLine, EchoesIdsOfEveryType) {
  for (const char* id :
       {"0", "-1", "9223372036854775807", "18446744073709551615", "-9223372036854775808", "1.5",
        "\"text\"", "\"\"", "true", "false", "null", R"([1,"a",null])", R"({"a":{"b":[]}})"}) {
    EXPECT_EQ(line(R"({"method":"nothing","id":)" + std::string(id) + "}"),
              refusal(kUnknownMethod, id));
  }
}

TEST_F(ServeLine, WritesAWholeIdWithoutAFraction) {
  EXPECT_EQ(line(R"({"method":"nothing","id":100.0})"), refusal(kUnknownMethod, "100"));
}

TEST_F(ServeLine, EscapesSlashesInTheId) {
  EXPECT_EQ(line(R"({"method":"nothing","id":"a/b"})"), refusal(kUnknownMethod, R"("a\/b")"));
}

TEST_F(ServeLine, ArgsThatAreNoObjectCountAsEmpty) {
  const sim::App& terminal = desktop.hostedBy("com.example.Terminal", "Terminal");
  const std::string known = R"({"id":1,"result":{"host":{"bundleId":"com.example.Terminal","name":)"
                            R"("Terminal","pid":)" +
                            std::to_string(terminal.pid()) + R"(},"known":true}})";
  for (const char* args : {"\"pid\"", "[1]", "null", "1", "true", "{}"}) {
    EXPECT_EQ(line(R"({"id":1,"method":"host","args":)" + std::string(args) + "}"), known) << args;
  }
}

TEST_F(ServeLine, SortsTheKeysOfEveryObject) {
  desktop.permissions().trusted = false;
  EXPECT_EQ(
      line(R"({"method":"connect","id":{"b":1,"a":2}})"),
      R"({"error":{"code":"ax_not_trusted","host":{"name":"MCP 호스트"},"message":"Accessibility is )"
      R"(not granted to MCP 호스트. macOS attributes this helper's grant to the app that launched )"
      R"(the MCP server, so enable MCP 호스트 under System Settings → Privacy & Security → )"
      R"(Accessibility, then run again.","permission":"accessibility"},"id":{"a":2,"b":1}})");
}

TEST_F(ServeLine, AFailureWithoutDetailHasACodeAndAMessageOnly) {
  EXPECT_EQ(line(R"({"id":1,"method":"settle"})"),
            refusal(R"({"code":"app_closed","message":"The application closed; reconnect before )"
                    R"(continuing."})",
                    "1"));
}

TEST_F(ServeLine, ARequestAfterAFailureIsServedAsAlways) {
  (void)line("not JSON");
  (void)line(R"({"method":"settle"})");
  EXPECT_EQ(serveLine(R"({"id":2,"method":"host"})")["id"], 2);
}

TEST_F(ServeLine, IgnoresArgsAndOtherKeysThatAMethodDoesNotKnow) {
  EXPECT_EQ(line(R"({"id":1,"method":"listTargets","args":{"pid":2,"x":[]},"extra":1})"),
            R"({"id":1,"result":{"targets":[]}})");
}

// Nothing the methods report is infinite by itself, but a text recogniser may say anything.
TEST_F(ServeLine, WritesNothingForAResultThatJsonCannotExpress) {
  desktop.app("com.example.Game").window({100, 100, 400, 300});
  desktop.recognizer().lines = {{"Start", {0.1, 0.1, 0.2, 0.1}, std::nanf("")}};
  (void)result("connect", {{"bundleId", "com.example.Game"}});
  EXPECT_EQ(line(R"({"id":1,"method":"observe"})"), "nothing");
  EXPECT_EQ(serveLine(R"({"id":2,"method":"geometry"})")["id"], 2);
}

TEST_F(ServeLine, AnswersWhatIsThrownAndIsNoException) {
  sim::App& game = desktop.app("com.example.Game");
  game.window({100, 100, 400, 300});
  game.afterCalls(1, [] { throw 5; });
  const Json response =
      serveLine(R"({"id":1,"method":"connect","args":{"bundleId":"com.example.Game"}})");
  EXPECT_EQ(response["id"], 1);
  EXPECT_EQ(response["error"]["code"], "native_error");
  EXPECT_NE(response["error"]["message"], "");
}

TEST(PreparedResponse, SaysWhatWouldHaveBeenSaidThen) {
  for (const FailureText& text : {failures::kRequestTooLarge, failures::kOutOfMemory}) {
    const Json response = Json::parse(errorLine(text));
    EXPECT_EQ(response["id"], nullptr);
    EXPECT_EQ(response["error"]["code"], "native_error");
    EXPECT_EQ(response["error"]["message"], text.sentence);
  }
  EXPECT_EQ(Json::parse(errorLine(failures::kOutOfMemory))["error"], errorObject(std::bad_alloc()));
}

TEST(FailureRecord, KeepsItsOwnCodeAndMessageWhateverItsDetailSays) {
  const Failure failure({FailureCode::noWindow, "message"}, {},
                        {{"code", "other"}, {"message", 5}, {"extra", true}});
  EXPECT_EQ(failure.code(), FailureCode::noWindow);
  EXPECT_EQ(failure.message(), "message");
  EXPECT_STREQ(failure.what(), "message");
  EXPECT_EQ(errorObject(failure),
            (Json{{"code", "no_window"}, {"message", "message"}, {"extra", true}}));
}

TEST(FailureRecord, FillsItsSentenceInOrder) {
  const FailureText text{FailureCode::noWindow, "No window of {} shows {}."};
  EXPECT_EQ(Failure(text, {"a", "b {} c"}).message(), "No window of a shows b {} c.");
  EXPECT_EQ(Failure(text, {"", ""}).message(), "No window of  shows .");
  EXPECT_EQ(Failure({FailureCode::noWindow, "{}"}, {"all"}).message(), "all");
}

TEST(FailureRecord, AnythingElseThatEscapesIsANativeErrorWithItsWords) {
  EXPECT_EQ(errorObject(std::runtime_error("odd")),
            (Json{{"code", "native_error"}, {"message", "odd"}}));
}

TEST(FailureRecord, RunningOutOfMemoryIsReported) {
  EXPECT_EQ(errorObject(std::bad_alloc()),
            (Json{{"code", "native_error"},
                  {"message", "The request needs more memory than the system has."}}));
}

}  // namespace
}  // namespace tarqo
