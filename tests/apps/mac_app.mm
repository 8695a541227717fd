// An AppKit application to be driven by the contract tests.
//
//   TarqoContract [--title TEXT] [--geometry WIDTHxHEIGHT+X+Y]
//
// The geometry is that of the whole window, from the top left of the main display. Prints "ready"
// when its window is shown.

#import <AppKit/AppKit.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

struct Options {
  std::string title = "Launched";
  double width = 640;
  double height = 480;
  double x = 100;
  double y = 100;
};

Options parse(const std::vector<std::string>& words) {
  Options options;
  for (std::size_t i = 1; i + 1 < words.size(); ++i) {
    if (words[i] == "--title") {
      options.title = words[i + 1];
    } else if (words[i] == "--geometry") {
      std::sscanf(words[i + 1].c_str(), "%lfx%lf+%lf+%lf", &options.width, &options.height,
                  &options.x, &options.y);
    }
  }
  return options;
}

NSString* text(const std::string& utf8) {
  return (__bridge_transfer NSString*)CFStringCreateWithBytes(
      nullptr, reinterpret_cast<const UInt8*>(utf8.data()), static_cast<CFIndex>(utf8.size()),
      kCFStringEncodingUTF8, 0);
}

NSMenuItem* menuItem(NSString* title) {
  return [[NSMenuItem alloc] initWithTitle:title action:nil keyEquivalent:@""];
}

/// A menu of the bar with one item.
NSMenuItem* menu(NSString* title, NSString* item) {
  NSMenuItem* inBar = menuItem(title);
  inBar.submenu = [[NSMenu alloc] initWithTitle:title];
  [inBar.submenu addItem:menuItem(item)];
  return inBar;
}

}  // namespace

@interface ContractApp : NSObject <NSApplicationDelegate>
- (instancetype)initWithOptions:(const Options&)options;
- (void)save:(id)sender;
@end

@implementation ContractApp {
  Options _options;
  NSWindow* _window;
  NSTextField* _status;
  int _saved;
}

- (instancetype)initWithOptions:(const Options&)options {
  self = [super init];
  if (self != nil) {
    _options = options;
  }
  return self;
}

- (void)save:(id)__unused sender {
  ++_saved;
  _status.stringValue = text("Status: saved " + std::to_string(_saved));
  NSAccessibilityPostNotification(_status, NSAccessibilityValueChangedNotification);
}

- (void)place:(NSView*)view row:(int)row {
  const double height = 28;
  const double gap = 12;
  view.frame = {{20, 20 + row * (height + gap)}, {240, height}};
  [_window.contentView addSubview:view];
}

- (void)fill {
  _status = [NSTextField labelWithString:@"Status: idle"];
  NSButton* disabled = [NSButton buttonWithTitle:@"Disabled" target:nil action:nil];
  disabled.enabled = NO;
  NSTextField* name = [[NSTextField alloc] initWithFrame:{}];
  name.accessibilityLabel = @"Name";
  int row = 0;
  [self place:_status row:row++];
  [self place:[NSButton buttonWithTitle:@"Save" target:self action:@selector(save:)] row:row++];
  [self place:disabled row:row++];
  [self place:name row:row++];
  [self place:[[NSSecureTextField alloc] initWithFrame:{}] row:row++];
}

- (void)applicationDidFinishLaunching:(NSNotification*)__unused notification {
  NSApplication* application = NSApplication.sharedApplication;
  NSMenu* bar = [[NSMenu alloc] initWithTitle:@""];
  [bar addItem:menu(@"TarqoContract", @"About")];
  [bar addItem:menu(@"File", @"Close")];
  application.mainMenu = bar;

  const double screenHeight = NSScreen.screens.firstObject.frame.size.height;
  _window = [[NSWindow alloc]
      initWithContentRect:{}
                styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                          NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable
                  backing:NSBackingStoreBuffered
                    defer:NO];
  _window.releasedWhenClosed = NO;
  _window.title = text(_options.title);
  // AppKit counts from the bottom.
  [_window setFrame:{
    {_options.x, screenHeight - _options.y - _options.height}, { _options.width, _options.height }
  }
            display:YES];
  [self fill];
  [_window makeKeyAndOrderFront:nil];
  [application activateIgnoringOtherApps:YES];
  // After what was just asked for has been done.
  dispatch_async(dispatch_get_main_queue(), ^{
    std::puts("ready");
    std::fflush(stdout);
  });
}

@end

int main(int argc, char** argv) {
  @autoreleasepool {
    const Options options = parse({argv, argv + argc});
    // The application holds its delegate weakly.
    __attribute__((objc_precise_lifetime)) ContractApp* delegate =
        [[ContractApp alloc] initWithOptions:options];
    NSApplication* application = NSApplication.sharedApplication;
    [application setActivationPolicy:NSApplicationActivationPolicyRegular];
    application.delegate = delegate;
    [application run];
  }
  return 0;
}
