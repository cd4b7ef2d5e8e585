#include "lessonmap/FoldCase.h"

#include <algorithm>
#include <iterator>

namespace dax {

namespace {

// Capitals from `first` to `last`: each `step` units apart, with the small letter `offset` units further on.
struct Capitals {
    char16_t first, last;
    int step, offset;
};

constexpr Capitals table[] = {
    {0x0041, 0x005A, 1, 32}, {0x00C0, 0x00D6, 1, 32}, {0x00D8, 0x00DE, 1, 32}, {0x0100, 0x012E, 2, 1},
    {0x0132, 0x0136, 2, 1},  {0x0139, 0x0147, 2, 1},  {0x014A, 0x0176, 2, 1},  {0x0178, 0x0178, 1, -121},
    {0x0179, 0x017D, 2, 1},  {0x01CD, 0x01DB, 2, 1},  {0x01DE, 0x01EE, 2, 1},  {0x01F8, 0x021E, 2, 1},
    {0x0222, 0x0232, 2, 1},  {0x0386, 0x0386, 1, 38}, {0x0388, 0x038A, 1, 37}, {0x038C, 0x038C, 1, 64},
    {0x038E, 0x038F, 1, 63}, {0x0391, 0x03A1, 1, 32}, {0x03A3, 0x03AB, 1, 32}, {0x0400, 0x040F, 1, 80},
    {0x0410, 0x042F, 1, 32}, {0x0460, 0x0480, 2, 1},  {0x048A, 0x04BE, 2, 1},  {0x04C1, 0x04CD, 2, 1},
    {0x04D0, 0x052E, 2, 1},  {0x0531, 0x0556, 1, 48}, {0x1E00, 0x1E94, 2, 1},  {0x1E9E, 0x1E9E, 1, -7615},
    {0x1EA0, 0x1EFE, 2, 1},  {0xFF21, 0xFF3A, 1, 32},
};

char16_t Fold(char16_t unit) {
    const auto after = std::upper_bound(std::begin(table), std::end(table), unit,
                                        [](char16_t value, const Capitals& row) { return value < row.first; });
    if (after == std::begin(table)) return unit;
    const Capitals& row = *std::prev(after);
    if (unit > row.last || (unit - row.first) % row.step != 0) return unit;
    return static_cast<char16_t>(unit + row.offset);
}

} // namespace

Text FoldCase(TextView text) {
    Text folded(text);
    std::transform(folded.begin(), folded.end(), folded.begin(), Fold);
    return folded;
}

} // namespace dax
