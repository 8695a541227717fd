#include "platform/mac/mac_images.h"

#include "tests/platform/mac/mac_test.h"
#include "tests/platform/mac/standin/images.h"

namespace tarqo::mac {
namespace {

class MacImagesTest : public MacTest {
 protected:
  MacImagesTest() { files.reset(); }
  ~MacImagesTest() override { files.reset(); }
  std::string encoded(const Image& image) {
    const auto result = images.encodePng(image);
    const auto* bytes = std::get_if<std::string>(&result);
    return bytes == nullptr ? "no file" : *bytes;
  }
  PngError failure(const Image& image) {
    const auto result = images.encodePng(image);
    const auto* error = std::get_if<PngError>(&result);
    EXPECT_NE(error, nullptr);
    return error == nullptr ? PngError{} : *error;
  }

  standin::ImageFiles& files = standin::ImageFiles::instance();
  MacImages images;
};

TEST_F(MacImagesTest, HoldAnImageForAsLongAsAnyCopyIsUsed) {
  std::optional<Image> first = imageOf(standin::image(30, 20));
  ASSERT_TRUE(first);
  EXPECT_EQ(first->widthPx, 30);
  EXPECT_EQ(first->heightPx, 20);
  const Image second = *first;
  first.reset();
  EXPECT_EQ(CGImageGetWidth(cgImageOf(second)), 30u);
}

TEST_F(MacImagesTest, GiveAFileBackAsItWasRead) {
  const auto read = images.decodePng(standin::pngFile(8, 9));
  ASSERT_TRUE(read);
  files.refusesDestinations = true;  // Nothing is encoded again.
  EXPECT_EQ(encoded(*read), standin::pngFile(8, 9));
}

TEST_F(MacImagesTest, AreNoneOfNothing) {
  EXPECT_EQ(imageOf(CfRef<CGImageRef>()), std::nullopt);
  EXPECT_EQ(cgImageOf(Image{}), nullptr);
}

TEST_F(MacImagesTest, BecomePngFiles) {
  EXPECT_EQ(encoded(*imageOf(standin::image(30, 20))), standin::pngFile(30, 20));
  EXPECT_EQ(files.type, "public.png");
}

TEST_F(MacImagesTest, HaveNoEncoderWhereTheSystemGivesNone) {
  const Image image = *imageOf(standin::image(30, 20));
  files.refusesData = true;
  EXPECT_EQ(failure(image), PngError::noEncoder);
  files.reset();
  files.refusesDestinations = true;
  EXPECT_EQ(failure(image), PngError::noEncoder);
  files.reset();
  EXPECT_EQ(failure(Image{}), PngError::noEncoder);
}

TEST_F(MacImagesTest, FailWhenTheFileCannotBeFinished) {
  files.cannotFinish = true;
  EXPECT_EQ(failure(*imageOf(standin::image(30, 20))), PngError::failed);
}

TEST_F(MacImagesTest, ComeOutOfPngFiles) {
  const auto image = images.decodePng(standin::pngFile(8, 9));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->widthPx, 8);
  EXPECT_EQ(image->heightPx, 9);
}

TEST_F(MacImagesTest, ComeOutOfNoPartOfAPngFile) {
  const std::string whole = standin::pngFile(8, 9);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(images.decodePng(whole.substr(0, size)), std::nullopt) << size;
  }
}

TEST_F(MacImagesTest, ComeOutOfNoPngFileThatTheSystemCannotRead) {
  std::string broken = standin::pngFile(8, 9);
  broken[broken.find("picture")] = 'P';
  EXPECT_EQ(images.decodePng(broken), std::nullopt);
}

TEST_F(MacImagesTest, ComeOutOfNoOtherFile) {
  EXPECT_EQ(images.decodePng("garbage"), std::nullopt);
  EXPECT_EQ(images.decodePng(""), std::nullopt);
  EXPECT_EQ(images.decodePng(standin::otherFile(8, 9)), std::nullopt);
  files.refusesSources = true;
  EXPECT_EQ(images.decodePng(standin::pngFile(8, 9)), std::nullopt);
  files.reset();
  files.refusesData = true;
  EXPECT_EQ(images.decodePng(standin::pngFile(8, 9)), std::nullopt);
}

}  // namespace
}  // namespace tarqo::mac
