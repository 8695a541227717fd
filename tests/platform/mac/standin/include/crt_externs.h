// The environment of the process, where programs on macOS find it.
#pragma once

extern "C" char*** _NSGetEnviron(void);
