// The declarations of ImageIO that the macOS backend uses, for compiling it on other systems.
//
// As in CoreFoundation.h.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

typedef struct CGImageDestination* CGImageDestinationRef;
typedef struct CGImageSource* CGImageSourceRef;

extern "C" {

CGImageDestinationRef _Nullable CGImageDestinationCreateWithData(CFMutableDataRef _Nonnull data,
                                                                 CFStringRef _Nonnull type,
                                                                 size_t count,
                                                                 CFDictionaryRef _Nullable options);
void CGImageDestinationAddImage(CGImageDestinationRef _Nonnull destination,
                                CGImageRef _Nonnull image, CFDictionaryRef _Nullable properties);
/// The data is complete only after this has returned true.
bool CGImageDestinationFinalize(CGImageDestinationRef _Nonnull destination);

/// Not null for garbage: the image tells.
CGImageSourceRef _Nullable CGImageSourceCreateWithData(CFDataRef _Nonnull data,
                                                       CFDictionaryRef _Nullable options);
CGImageRef _Nullable CGImageSourceCreateImageAtIndex(CGImageSourceRef _Nonnull source, size_t index,
                                                     CFDictionaryRef _Nullable options);

}  // extern "C"
