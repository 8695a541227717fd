#include "platform/mac/mac_text_recognizer.h"

#import <Vision/Vision.h>

#include "platform/mac/mac_images.h"
#include "platform/mac/mac_objc.h"

namespace tarqo::mac {
namespace {

using Answer = std::variant<std::vector<RecognizedLine>, std::string>;

constexpr const char* kNoPixels = "The image holds no pixels that text could be read from.";
constexpr const char* kNoReason = "Text recognition failed without giving a reason.";

Answer linesOf(NSArray<VNRecognizedTextObservation*>* observations) {
  std::vector<RecognizedLine> lines;
  for (VNRecognizedTextObservation* observation in observations) {
    VNRecognizedText* best = [observation topCandidates:1].firstObject;
    if (best == nil) {
      continue;
    }
    const CGRect box = observation.boundingBox;
    lines.push_back({textOf(best.string).value_or(""),
                     {box.origin.x, box.origin.y, box.size.width, box.size.height},
                     best.confidence});
  }
  return lines;
}

Answer recognizeIn(CGImageRef image) {
  VNRecognizeTextRequest* request = [[VNRecognizeTextRequest alloc] init];
  request.recognitionLevel = VNRequestTextRecognitionLevelAccurate;
  request.recognitionLanguages = @[ @"ko-KR", @"en-US" ];
  request.usesLanguageCorrection = YES;
  VNImageRequestHandler* handler = [[VNImageRequestHandler alloc] initWithCGImage:image
                                                                          options:@{}];
  NSError* error = nil;
  if (![handler performRequests:@[ request ] error:&error]) {
    return textOf(error.localizedDescription).value_or(kNoReason);
  }
  return linesOf(request.results);
}

}  // namespace

Answer MacTextRecognizer::recognize(const Image& image) {
  const CGImageRef pixels = cgImageOf(image);
  if (pixels == nullptr) {
    return kNoPixels;
  }
  // An exception leaves the reason unset; that is no image without text.
  const auto answer = guarded([&] { return std::optional(recognizeIn(pixels)); });
  return answer.value_or(kNoReason);
}

}  // namespace tarqo::mac
