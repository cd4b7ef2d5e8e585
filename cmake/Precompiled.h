// What most files include from the C++ library, compiled once. Every file includes what it uses all the same; lint,
// which reads files without this one, sees to it.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>
