// Compiled once for all behaviour tests.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
