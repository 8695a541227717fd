// Nothing is checked: only Apple's targets have versions of macOS.
#pragma once

#define API_AVAILABLE(...)
