// Vision: recognition of text.

#import <Vision/Vision.h>

#include "tests/platform/mac/frameworks/objects.h"
#include "tests/platform/mac/standin/images.h"

@implementation VNObservation
@end

@interface VNDetectedObjectObservation () {
 @public
  CGRect box_;
}
@end
@implementation VNDetectedObjectObservation
- (CGRect)boundingBox {
  return box_;
}
@end

@interface VNRecognizedText () {
 @public
  NSString* string_;
  float confidence_;
}
@end
@implementation VNRecognizedText
- (void)dealloc {
  [string_ release];
  [super dealloc];
}
- (NSString*)string {
  return [[string_ retain] autorelease];
}
- (float)confidence {
  return confidence_;
}
@end

@interface VNRecognizedTextObservation () {
 @public
  VNRecognizedText* best_;
}
@end
@implementation VNRecognizedTextObservation
- (void)dealloc {
  [best_ release];
  [super dealloc];
}
- (NSArray<VNRecognizedText*>*)topCandidates:(NSUInteger)maxCandidateCount {
  return maxCandidateCount > 0 ? @[ best_ ] : @[];
}
@end

@implementation VNRequest
@end
@implementation VNImageBasedRequest
@end

@interface VNRecognizeTextRequest () {
 @public
  NSArray* results_;
}
@end
@implementation VNRecognizeTextRequest
@synthesize recognitionLevel = level_, recognitionLanguages = languages_,
            usesLanguageCorrection = corrects_;
- (void)dealloc {
  [results_ release];
  [languages_ release];
  [super dealloc];
}
- (NSArray<VNRecognizedTextObservation*>*)results {
  return [[results_ retain] autorelease];
}
@end

@interface VNImageRequestHandler () {
  tarqo::mac::CfRef<CGImageRef> image_;
}
@end
@implementation VNImageRequestHandler
- (instancetype)initWithCGImage:(CGImageRef)image
                        options:(NSDictionary<VNImageOption, id>*)options {
  (void)options;
  image_ = tarqo::mac::retain(image);
  return self;
}
- (BOOL)performRequests:(NSArray<VNRequest*>*)requests error:(NSError**)error {
  const tarqo::Image* pixels = standin::pixelsOf(image_.get());
  std::variant<std::vector<tarqo::RecognizedLine>, std::string> read = "There are no pixels.";
  if (pixels != nullptr) {
    read = standin::onDesktop([&](const tarqo::Platform& platform) {
      return platform.textRecognizer.recognize(*pixels);
    });
  }
  if (const auto* reason = std::get_if<std::string>(&read)) {
    *error = standin::makeError(*reason);
    return NO;
  }
  std::vector<id> found;
  for (const tarqo::RecognizedLine& line : std::get<0>(read)) {
    VNRecognizedTextObservation* made = [[[VNRecognizedTextObservation alloc] init] autorelease];
    made->box_ = {{line.box.x, line.box.y}, {line.box.width, line.box.height}};
    made->best_ = [[VNRecognizedText alloc] init];
    made->best_->string_ = [standin::given(line.text) retain];
    made->best_->confidence_ = line.confidence;
    found.push_back(made);
  }
  auto* request = (VNRecognizeTextRequest*)CFArrayGetValueAtIndex((CFArrayRef)requests, 0);
  [request->results_ release];
  request->results_ = [standin::given(found) retain];
  return YES;
}
@end
