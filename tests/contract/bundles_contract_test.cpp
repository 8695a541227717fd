// bundles.h

#include <algorithm>

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

class BundlesContract : public Contract {
 protected:
  [[nodiscard]] std::string targetPath() const {
    return bundles.pathForIdentifier(id).value_or("");
  }

  std::shared_ptr<Arrivals<OpenedApplication>> open(const std::string& path) {
    auto opened = std::make_shared<Arrivals<OpenedApplication>>();
    bundles.open(path, false,
                 [opened](OpenedApplication result) { opened->add(std::move(result)); });
    return opened;
  }

  Bundles& bundles = platform.bundles;
  std::string id = backend->targetBundleId();
};

TEST_F(BundlesContract, AreFoundByIdentifier) {
  EXPECT_TRUE(targetPath().starts_with('/'));
  EXPECT_FALSE(bundles.pathForIdentifier("com.example.no-such-application"));
}

TEST_F(BundlesContract, TellTheIdentifierTheyAreFoundBy) {
  const std::optional<Bundle> bundle = bundles.bundleAt(targetPath());
  ASSERT_TRUE(bundle);
  EXPECT_EQ(bundle->identifier, id);
}

TEST_F(BundlesContract, LieInTheApplicationFolders) {
  const std::vector<std::string> folders = bundles.applicationFolders();
  const std::string path = targetPath();

  EXPECT_FALSE(folders.empty());
  EXPECT_TRUE(std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
    const std::vector<std::string> names = bundles.bundlesIn(folder);
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& name) { return folder + "/" + name == path; });
  }));
}

TEST_F(BundlesContract, AreNoneWhereThereIsNothing) {
  EXPECT_TRUE(bundles.bundlesIn("/no/such/folder").empty());
  EXPECT_FALSE(bundles.bundleAt("/no/such/folder/Thing.app"));
  EXPECT_FALSE(bundles.bundleAt(""));
  EXPECT_FALSE(bundles.infoText("/no/such/folder/Thing.app", "CFBundleVersion"));
  EXPECT_FALSE(bundles.infoText(targetPath(), "NoSuchKey"));
}

TEST_F(BundlesContract, HaveNamesForPeople) { EXPECT_NE(bundles.displayName(targetPath()), ""); }

TEST_F(BundlesContract, ResolveWhatDoesNotExistToItself) {
  EXPECT_EQ(bundles.resolved("/no/such/folder/thing"), "/no/such/folder/thing");
  EXPECT_EQ(bundles.resolved("/no/./such/../such/thing"), "/no/such/thing");
  EXPECT_EQ(bundles.resolved("/"), "/");
}

TEST_F(BundlesContract, CompleteAnOpenOnceWithTheApplication) {
  const auto opened = open(targetPath());

  ASSERT_TRUE(waitUntil([&] { return !opened->all().empty(); }, 10s));
  clock.runLoopFor(300ms);
  ASSERT_EQ(opened->all().size(), 1U);
  const OpenedApplication result = opened->all().front();
  EXPECT_FALSE(result.error) << *result.error;
  ASSERT_TRUE(result.application);
  EXPECT_EQ(result.application->bundleId, id);
  EXPECT_FALSE(platform.workspace.isTerminated(result.application->id));
}

TEST_F(BundlesContract, DoNotOpenWhatIsMissing) {
  const auto opened = open("/no/such/folder/Thing.app");

  clock.runLoopFor(1s);
  for (const OpenedApplication& result : opened->all()) {
    EXPECT_FALSE(result.application);
  }
  EXPECT_LE(opened->all().size(), 1U);
}

}  // namespace
}  // namespace tarqo::contract
