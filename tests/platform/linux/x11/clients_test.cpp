#include "platform/linux/x11/clients.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/platform/linux/x11/fake_x_server.h"

namespace tarqo::lnx::x11 {
namespace {

FakeWindow plainWindow() { return {.area = {0, 0, 10, 10}}; }

TEST(ClientOwner, IsTheProcessThatTheServerKnows) {
  FakeXServer server;
  const xcb_window_t window = server.add(plainWindow(), FakeXServer::kRoot, 41);
  server.set(window, "_NET_WM_PID", numbers({99}));
  EXPECT_EQ(ownerOf(server.client(), window), 41);
}

TEST(ClientOwner, IsTheProcessThatTheWindowStatesWhenTheServerKnowsNone) {
  FakeXServer server;
  const xcb_window_t window = server.add(plainWindow());
  EXPECT_EQ(ownerOf(server.client(), window), std::nullopt);
  server.set(window, "_NET_WM_PID", numbers({99}));
  EXPECT_EQ(ownerOf(server.client(), window), 99);
}

TEST(ClientPids, AreThoseOfAllClientsThatTheServerKnows) {
  FakeXServer server;
  const std::array windows{server.add(plainWindow(), FakeXServer::kRoot, 41),
                           server.add(plainWindow()),
                           server.add(plainWindow(), FakeXServer::kRoot, 43)};
  Server& own = server.client();
  const auto pids = clientPids(own, windows);
  EXPECT_EQ(pids.size(), 2U);
  EXPECT_EQ(pids.at(clientOf(own, windows[0])), 41);
  EXPECT_EQ(pids.at(clientOf(own, windows[2])), 43);
  EXPECT_TRUE(clientPids(own, {}).empty());
}

}  // namespace
}  // namespace tarqo::lnx::x11
