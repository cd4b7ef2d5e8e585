// The same for tests: what nearly every one of them includes.
#pragma once

#include "Precompiled.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
