// The declarations of AppKit that the application for the contract tests uses: the backend shows no
// window and needs none of them. AppKit.h includes this file. All of it goes by AppKit's documented
// names and is to be seen on a Mac.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef CGRect NSRect;

@class NSMenu;
@class NSNotification;

@interface NSResponder : NSObject
@end

@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frameRect;
- (void)addSubview:(NSView*)view;
@property NSRect frame;
@property(copy, nullable) NSString* accessibilityLabel;
@end

@interface NSControl : NSView
@property(getter=isEnabled) BOOL enabled;
@property(copy) NSString* stringValue;
@end

@interface NSButton : NSControl
+ (instancetype)buttonWithTitle:(NSString*)title
                         target:(nullable id)target
                         action:(nullable SEL)action API_AVAILABLE(macos(10.12));
@end

@interface NSTextField : NSControl
+ (instancetype)labelWithString:(NSString*)stringValue API_AVAILABLE(macos(10.12));
@end

@interface NSSecureTextField : NSTextField
@end

typedef NSUInteger NSWindowStyleMask;
enum : NSWindowStyleMask {
  NSWindowStyleMaskTitled = 1 << 0,
  NSWindowStyleMaskClosable = 1 << 1,
  NSWindowStyleMaskMiniaturizable = 1 << 2,
  NSWindowStyleMaskResizable = 1 << 3,
};

typedef enum NSBackingStoreType : NSUInteger { NSBackingStoreBuffered = 2 } NSBackingStoreType;

@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backingStoreType
                              defer:(BOOL)flag;
@property(copy) NSString* title;
@property(nullable, strong) NSView* contentView;
@property(getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
- (void)setFrame:(NSRect)frameRect display:(BOOL)flag;
- (void)makeKeyAndOrderFront:(nullable id)sender;
@end

@interface NSMenuItem : NSObject
- (instancetype)initWithTitle:(NSString*)string
                       action:(nullable SEL)selector
                keyEquivalent:(NSString*)charCode;
@property(nullable, strong) NSMenu* submenu;
@end

@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString*)title;
- (void)addItem:(NSMenuItem*)newItem;
@end

@interface NSScreen : NSObject
@property(class, readonly, copy) NSArray<NSScreen*>* screens;
@property(readonly) NSRect frame;  ///< From the bottom left of the first screen.
@end

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
@end

@interface NSApplication : NSResponder
@property(class, readonly, strong) NSApplication* sharedApplication;
@property(nullable, weak) id<NSApplicationDelegate> delegate;
@property(nullable, strong) NSMenu* mainMenu;
- (BOOL)setActivationPolicy:(NSInteger)activationPolicy;
- (void)activateIgnoringOtherApps:(BOOL)flag;
- (void)run;
@end

#ifdef __cplusplus
extern "C" {
#endif
extern NSString* const NSAccessibilityValueChangedNotification;
void NSAccessibilityPostNotification(id element, NSString* notification);
#ifdef __cplusplus
}
#endif

#pragma clang assume_nonnull end
