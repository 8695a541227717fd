// The runtime itself: that it counts references as the compiler documents it.

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "platform/mac/mac_cf.h"
#include "tests/platform/mac/runtime/blocks.h"
#include "tests/platform/mac/runtime/memory.h"
#include "tests/platform/mac/standin/core_foundation.h"

extern "C" {
void* objc_autoreleasePoolPush();
void objc_autoreleasePoolPop(void* pool);
}

namespace {
int ended = 0;
}  // namespace

struct Place {
  double x, y, width, height;
};

@interface Animal : NSObject
@property(copy) NSString* name;
@property(strong) Animal* friendOf;
@property(weak) Animal* owner;
@property Place place;
- (int)legs;
- (double)sumOf:(int)a and:(double)b with:(long)c also:(float)d;
- (id)nothing;
@end

@implementation Animal
- (int)legs {
  return 4;
}
- (double)sumOf:(int)a and:(double)b with:(long)c also:(float)d {
  return a + b + static_cast<double>(c) + static_cast<double>(d);
}
- (id)nothing {
  return nil;
}
- (void)dealloc {
  ++ended;
}
@end

@interface Bird : Animal
@end
@implementation Bird
- (int)legs {
  return [super legs] - 2;
}
@end

namespace {

class RuntimeTest : public testing::Test {
 protected:
  RuntimeTest() {
    ended = 0;
    standin::complain = [](const std::string& what) { ADD_FAILURE() << what; };
  }
  ~RuntimeTest() override {
    objc_autoreleasePoolPop(pool_);
    EXPECT_EQ(standin::Heap::instance().living(), std::vector<std::string>{});
    EXPECT_EQ(standin::blocksAlive(), 0);
    standin::Heap::instance().forgetAll();
  }

 private:
  void* pool_ = objc_autoreleasePoolPush();
};

TEST_F(RuntimeTest, SendsMessagesWithAllTheirArguments) {
  @autoreleasepool {
    Animal* animal = [[Animal alloc] init];
    EXPECT_EQ([animal legs], 4);
    EXPECT_EQ([animal sumOf:1 and:2.5 with:3 also:4.25F], 10.75);
  }
}

TEST_F(RuntimeTest, FindsMethodsInTheSuperclass) {
  Bird* bird = [[Bird alloc] init];
  EXPECT_EQ([bird legs], 2);
  EXPECT_TRUE([bird isKindOfClass:[Animal class]]);
  EXPECT_FALSE([[[Animal alloc] init] isKindOfClass:[Bird class]]);
}

TEST_F(RuntimeTest, GivesZeroOfNil) {
  Animal* nobody = nil;
  EXPECT_EQ([nobody legs], 0);
  EXPECT_EQ([nobody sumOf:1 and:2 with:3 also:4], 0.0);
  EXPECT_EQ([nobody nothing], nil);
  EXPECT_EQ(nobody.place.height, 0.0);
}

TEST_F(RuntimeTest, GivesStructuresInMemory) {
  Animal* animal = [[Animal alloc] init];
  animal.place = {1, 2, 3, 4};
  EXPECT_EQ(animal.place.x, 1);
  EXPECT_EQ(animal.place.height, 4);
}

TEST_F(RuntimeTest, EndsAnObjectWithItsLastReference) {
  Animal* first = [[Animal alloc] init];
  Animal* second = first;
  first = nil;
  EXPECT_EQ(ended, 0);
  EXPECT_EQ([second legs], 4);
  second = nil;
  EXPECT_EQ(ended, 1);
}

TEST_F(RuntimeTest, EndsWhatAnObjectHolds) {
  Animal* animal = [[Animal alloc] init];
  animal.friendOf = [[Bird alloc] init];
  animal.name = @"Ada";
  animal = nil;
  EXPECT_EQ(ended, 2);
}

TEST_F(RuntimeTest, ForgetsWeaklyWhatHasEnded) {
  Animal* animal = [[Animal alloc] init];
  __weak Animal* seen = animal;
  Animal* dog = [[Animal alloc] init];
  dog.owner = animal;
  @autoreleasepool {
    EXPECT_NE(seen, nil);
    EXPECT_NE(dog.owner, nil);
  }
  animal = nil;
  EXPECT_EQ(seen, nil);
  EXPECT_EQ(dog.owner, nil);
}

TEST_F(RuntimeTest, KeepsInPoolsUntilTheirEnd) {
  const std::size_t before = standin::waitingInPools();
  @autoreleasepool {
    NSArray* list = @[ @"a", @"b" ];
    EXPECT_NE(list.firstObject, nil);
    EXPECT_GT(standin::waitingInPools(), before);
  }
  EXPECT_EQ(standin::waitingInPools(), before);
}

TEST_F(RuntimeTest, EmptiesThePoolsOfAThreadThatEnds) {
  std::thread([] { (void)[NSURL fileURLWithPath:@"/tmp"].path; }).join();
}

TEST_F(RuntimeTest, KeepsWhatABlockUses) {
  int legs = 0;
  {
    Animal* animal = [[Animal alloc] init];
    void (^count)(int*) = ^(int* result) {
      *result = [animal legs];
    };
    animal = nil;
    EXPECT_EQ(ended, 0);
    EXPECT_EQ(standin::blocksAlive(), 1);
    count(&legs);
  }
  EXPECT_EQ(legs, 4);
  EXPECT_EQ(ended, 1);
}

TEST_F(RuntimeTest, CopiesTheObjectsOfCppIntoABlock) {
  const auto shared = std::make_shared<int>(7);
  {
    int (^read)(void) = ^{
      return *shared;
    };
    EXPECT_EQ(shared.use_count(), 3) << "of the block on the stack and its copy";
    EXPECT_EQ(read(), 7);
  }
  EXPECT_EQ(shared.use_count(), 1);
}

TEST_F(RuntimeTest, SharesAVariableBetweenABlockAndItsScope) {
  __block int count = 0;
  __block Animal* animal = nil;
  void (^work)(void) = ^{
    ++count;
    animal = [[Animal alloc] init];
  };
  work();
  work();
  EXPECT_EQ(count, 2);
  EXPECT_EQ(ended, 1);
  EXPECT_NE(animal, nil);
  animal = nil;
}

TEST_F(RuntimeTest, LetsExceptionsThroughAndReleasesOnTheWay) {
  bool caught = false;
  try {
    Animal* animal = [[Animal alloc] init];
    void (^fail)(void) = ^{
      (void)[animal legs];
      throw std::runtime_error("stop");
    };
    fail();
  } catch (...) {
    caught = true;
  }
  EXPECT_TRUE(caught);
  EXPECT_EQ(ended, 1);
}

TEST_F(RuntimeTest, CatchesWhatObjectiveCThrows) {
  bool caught = false;
  try {
    @throw [[Animal alloc] init];
  } catch (...) {
    caught = true;
  }
  EXPECT_TRUE(caught);
}

TEST_F(RuntimeTest, HoldsALockAroundASynchronizedBlock) {
  Animal* animal = [[Animal alloc] init];
  int count = 0;
  const auto add = [&] {
    for (int i = 0; i < 1000; ++i) {
      @synchronized(animal) {
        ++count;
      }
    }
  };
  std::thread other(add);
  add();
  other.join();
  EXPECT_EQ(count, 2000);
}

TEST_F(RuntimeTest, TakesLiteralsForTexts) {
  using tarqo::mac::asString;
  EXPECT_EQ(standin::describe((__bridge CFTypeRef) @"ab"), "text ab");
  EXPECT_EQ(standin::describe((__bridge CFTypeRef) @"한é"), "text 한é");
  EXPECT_NE(asString((__bridge CFTypeRef) @"ab"), nullptr);
  EXPECT_EQ(standin::describe((__bridge CFTypeRef)[@"ÀB" lowercaseString]), "text àb");
}

TEST_F(RuntimeTest, GoesThroughACollection) {
  std::string all;
  @autoreleasepool {
    for (NSString* each in @[ @"1", @"2", @"3" ]) {
      all += standin::nameOf((__bridge CFStringRef)each);
    }
    for (NSString* each in @[]) {
      all += standin::nameOf((__bridge CFStringRef)each);
    }
  }
  EXPECT_EQ(all, "123");
}

TEST_F(RuntimeTest, NoticesAReferenceThatIsNotGivenBack) {
  Animal* animal = [[Animal alloc] init];
  const CFTypeRef leaked = CFRetain((__bridge CFTypeRef)animal);
  animal = nil;
  EXPECT_EQ(standin::Heap::instance().living(), std::vector<std::string>{"a Animal x1"});
  CFRelease(leaked);
}

TEST_F(RuntimeTest, EndsTheProgramAtAMessageThatNobodyUnderstands) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  id animal = [[Animal alloc] init];
  EXPECT_DEATH((void)[(NSString*)animal lowercaseString],
               "Animal does not understand lowercaseString");
}

}  // namespace
