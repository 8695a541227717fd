// Answers of applications, read.
#include "platform/linux/atspi/wire/codec.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

namespace tarqo::lnx::atspi {
namespace {

constexpr std::size_t kMost = 64 * 1024;

class AtspiAnswerTest : public testing::Test {
 protected:
  void SetUp() override {
    // A message cannot be made without a connection; nobody answers on this one.
    int ends[2]{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    other_ = ends[1];
    sd_bus* made = nullptr;
    ASSERT_GE(sd_bus_new(&made), 0);
    bus_.reset(made);
    ASSERT_GE(sd_bus_set_fd(made, ends[0], ends[0]), 0);
    ASSERT_GE(sd_bus_start(made), 0);
  }

  void TearDown() override { close(other_); }

  [[nodiscard]] Message make() {
    sd_bus_message* made = nullptr;
    EXPECT_GE(sd_bus_message_new_method_call(bus_.get(), &made, nullptr, "/a", "a.b", "c"), 0);
    return Message(made);
  }

  static void seal(const Message& message) {
    ASSERT_GE(sd_bus_message_seal(message.get(), 1, 0), 0);
    ASSERT_GE(sd_bus_message_rewind(message.get(), 1), 0);
  }

  BusHandle bus_;
  int other_ = -1;
};

TEST_F(AtspiAnswerTest, AShortTextIsKeptWhole) {
  const std::string text(kMost, 'x');
  const Message answer = make();
  sd_bus_message_append(answer.get(), "s", text.c_str());
  seal(answer);
  EXPECT_EQ(readText(answer.get()), text);
}

TEST_F(AtspiAnswerTest, ALongTextIsCutBetweenTwoCharacters) {
  std::string text = "x";
  while (text.size() < 2 * kMost) {
    text += "\u20ac";  // Three bytes, so that the limit lies within one.
  }
  const Message answer = make();
  sd_bus_message_append(answer.get(), "v", "s", text.c_str());
  seal(answer);
  const std::optional<std::string> read = readVariantText(answer.get());
  ASSERT_TRUE(read.has_value());
  EXPECT_LE(read->size(), kMost);
  EXPECT_GT(read->size(), kMost - 3);
  EXPECT_EQ(read->size() % 3, 1U);
  EXPECT_EQ(text.substr(0, read->size()), *read);
}

TEST_F(AtspiAnswerTest, LongNamesAmongAllPropertiesAreCutToo) {
  const std::string text(3 * kMost, 'x');
  const Message answer = make();
  sd_bus_message_append(answer.get(), "a{sv}", 3, "Name", "s", text.c_str(), "Description", "s",
                        text.c_str(), "Attributes", "a{ss}", 1, "id", text.c_str());
  seal(answer);
  const AccessibleProperties read = readProperties(answer.get());
  EXPECT_EQ(read.name.value_or("").size(), kMost);
  EXPECT_EQ(read.description.value_or("").size(), kMost);
  ASSERT_TRUE(read.attributes && read.attributes->size() == 1);
  EXPECT_EQ(read.attributes->front().second.size(), kMost);
}

TEST_F(AtspiAnswerTest, AttributesBeyondAnyNeedAreLeftOut) {
  const Message answer = make();
  sd_bus_message_open_container(answer.get(), 'a', "{ss}");
  for (int i = 0; i < 5000; ++i) {
    sd_bus_message_append(answer.get(), "{ss}", std::to_string(i).c_str(), "x");
  }
  sd_bus_message_close_container(answer.get());
  seal(answer);
  const std::optional<Attributes> read = readAttributes(answer.get());
  ASSERT_TRUE(read.has_value());
  EXPECT_EQ(read->size(), 200U);
  EXPECT_EQ(read->front().first, "0");
}

}  // namespace
}  // namespace tarqo::lnx::atspi
