// Compiled once for all files of the core: the headers that cost most of their time.
#pragma once

#include <nlohmann/json.hpp>
