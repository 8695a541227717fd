// The declarations of Vision that the macOS backend uses, for compiling it on other systems.
//
// As in CoreFoundation.h. Boxes are normalised to 0...1, their origin at the bottom left.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef NSString* VNImageOption;

typedef enum VNRequestTextRecognitionLevel : NSInteger {
  VNRequestTextRecognitionLevelAccurate = 0,
  VNRequestTextRecognitionLevelFast = 1,
} VNRequestTextRecognitionLevel;

API_AVAILABLE(macos(10.13))
@interface VNObservation : NSObject
@end

API_AVAILABLE(macos(10.13))
@interface VNDetectedObjectObservation : VNObservation
@property(readonly, nonatomic, assign) CGRect boundingBox;
@end

API_AVAILABLE(macos(10.15))
@interface VNRecognizedText : NSObject
@property(readonly, nonatomic, copy) NSString* string;
@property(readonly, nonatomic, assign) float confidence;
@end

API_AVAILABLE(macos(10.15))
@interface VNRecognizedTextObservation : VNDetectedObjectObservation
/// 10 at most; may give fewer.
- (NSArray<VNRecognizedText*>*)topCandidates:(NSUInteger)maxCandidateCount;
@end

API_AVAILABLE(macos(10.13))
@interface VNRequest : NSObject
@end

API_AVAILABLE(macos(10.13))
@interface VNImageBasedRequest : VNRequest
@end

API_AVAILABLE(macos(10.15))
@interface VNRecognizeTextRequest : VNImageBasedRequest
@property(readwrite, nonatomic, assign) VNRequestTextRecognitionLevel recognitionLevel;
@property(readwrite, nonatomic, copy) NSArray<NSString*>* recognitionLanguages;
@property(readwrite, nonatomic, assign) BOOL usesLanguageCorrection;
@property(readonly, nonatomic, copy, nullable) NSArray<VNRecognizedTextObservation*>* results;
@end

API_AVAILABLE(macos(10.13))
@interface VNImageRequestHandler : NSObject
- (instancetype)initWithCGImage:(CGImageRef)image options:(NSDictionary<VNImageOption, id>*)options;
/// Returns when all are finished.
- (BOOL)performRequests:(NSArray<VNRequest*>*)requests error:(NSError* _Nullable* _Nullable)error;
@end

#pragma clang assume_nonnull end
