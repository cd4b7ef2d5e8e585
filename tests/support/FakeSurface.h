// A surface with letters of one size: 10 pixels wide and lines of 16 at 8 points, more at larger sizes; records
// what was drawn.
#pragma once

#include "controls/Surface.h"

#include <algorithm>
#include <string>
#include <vector>

namespace dax::test {

class FakeSurface : public Surface {
public:
    explicit FakeSurface(int newHeight, int newWidth = 400) : width(newWidth), height(newHeight) {}
    int Width() const override { return width; }
    int Height() const override { return height; }
    void Clear() override { drawn.clear(); }
    void SetBold(bool bold) override { isBold = bold; }
    void SetFontSize(double points) override { size = points == 0 ? 8 : points; }
    int TextWidth(const Text& text) override { return static_cast<int>(text.size()) * 10; }
    int DrawText(const Text& text, Rect& rect, uint32_t flags) override {
        if (!(flags & DrawTextFlags::CalcRect)) drawn.push_back({ToUtf8(text), rect, isBold, size, flags});
        const int perLine = std::max(rect.Width() / 10, 1), units = static_cast<int>(text.size());
        return static_cast<int>(size * 2) * (flags & DrawTextFlags::WordBreak ? (units + perLine - 1) / perLine : 1);
    }
    // What was drawn, bold lines with a star before them.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        for (const Drawn& line : drawn) lines.push_back((line.isBold ? "*" : "") + line.text);
        return lines;
    }

    struct Drawn {
        std::string text;
        Rect place;
        bool isBold;
        double size;
        uint32_t flags;
    };
    std::vector<Drawn> drawn;
    bool isBold = false;
    double size = 8;

private:
    int width, height;
};

} // namespace dax::test
