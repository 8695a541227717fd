// The names that every Objective-C file begins with, as Apple documents them.
#pragma once

#include <stddef.h>

typedef struct objc_class* Class;
typedef struct objc_object* id;
typedef struct objc_selector* SEL;
#ifdef __cplusplus
typedef void (*IMP)(void);
#endif

// A bool on Apple silicon, eight bits on Intel; the tests of the stand-in run both.
#ifdef TARQO_STANDIN_CHAR_BOOL
typedef signed char BOOL;
#else
typedef bool BOOL;
#endif

#define YES __objc_yes
#define NO __objc_no
#ifndef nil
#define nil nullptr
#endif

typedef long NSInteger;
typedef unsigned long NSUInteger;
