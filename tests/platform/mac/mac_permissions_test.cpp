#include "platform/mac/mac_permissions.h"

#include "tests/platform/mac/mac_test.h"
#include "tests/platform/mac/standin/images.h"

namespace tarqo::mac {
namespace {

class MacPermissionsTest : public MacTest {
 protected:
  MacPermissionsTest() { grants.reset(); }

  standin::Grants& grants = standin::Grants::instance();
  MacPermissions permissions;
};

TEST_F(MacPermissionsTest, TellWhetherTheHelperIsTrustedWithoutAPrompt) {
  EXPECT_FALSE(permissions.accessibilityTrusted());
  grants.trusted = true;
  EXPECT_TRUE(permissions.accessibilityTrusted());
  EXPECT_EQ(grants.prompts, 0);
}

TEST_F(MacPermissionsTest, PromptForAccessibility) {
  permissions.promptForAccessibility();
  EXPECT_EQ(grants.prompts, 1);
}

TEST_F(MacPermissionsTest, TellWhetherPixelsMayBeReadWithoutARequest) {
  EXPECT_FALSE(permissions.captureAccess());
  grants.capture = true;
  EXPECT_TRUE(permissions.captureAccess());
  EXPECT_EQ(grants.captureRequests, 0);
}

TEST_F(MacPermissionsTest, RequestCaptureAccess) {
  EXPECT_FALSE(permissions.requestCaptureAccess());
  grants.captureAfterRequest = true;
  EXPECT_TRUE(permissions.requestCaptureAccess());
  EXPECT_EQ(grants.captureRequests, 2);
}

TEST_F(MacPermissionsTest, AreTheOnlyObstacle) {
  EXPECT_EQ(permissions.accessibilityObstacle(), std::nullopt);
  EXPECT_EQ(permissions.captureObstacle(), std::nullopt);
}

}  // namespace
}  // namespace tarqo::mac
