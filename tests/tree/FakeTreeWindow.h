// A tree window without a screen: rows of 20 pixels, indents of 16, an icon and a label per row.
#pragma once

#include "tree/TreeWindow.h"
#include "tree/modTVW.h"
#include "tree/modTreeviewAPI.h"

#include <set>
#include <string>
#include <utility>

namespace dax::test {

class FakeTreeWindow : public TreeWindow {
public:
    static constexpr int rowHeight = 20, indent = 16, iconWidth = 16, boxWidth = 16;

    explicit FakeTreeWindow(NodeTree& tree) : tree(tree) {}

    // A point on the label of a row; `part` is the fraction of its height in percent.
    Point At(const Node& node, int part = 50) const {
        const std::optional<Rect> row = RowRect(node);
        if (!row) return {-1000, -1000};
        return {LeftOf(node) + boxWidth + iconWidth + 4, row->top + rowHeight * part / 100};
    }
    Point AtBox(const Node& node) const { return {LeftOf(node) + 2, At(node).y}; }
    void MoveTo(Point point) { pointer = point; }

    Rect ClientRect() const override { return client; }
    Point Pointer() const override { return pointer; }
    Point DragThreshold() const override { return {4, 4}; }
    bool IsCtrlDown() const override { return isCtrlDown; }
    TreeHit HitTest(Point point) const override {
        if (point.y < client.top || point.y >= client.bottom) return {};
        int row = point.y / rowHeight;
        for (Node* node = tree.First(); node; node = modTreeviewAPI::NextVisible(*node)) {
            if (row-- == 0) return {node, FlagsAt(*node, point.x)};
        }
        return {nullptr, modTreeviewAPI::HitFlags::Nowhere};
    }
    std::optional<Rect> RowRect(const Node& requested) const override {
        int row = 0;
        for (Node* node = tree.First(); node; node = modTreeviewAPI::NextVisible(*node), ++row) {
            if (node == &requested) return Rect{client.left, row * rowHeight, client.right, (row + 1) * rowHeight};
        }
        return {};
    }

    void SetInsertMark(Node* node, bool after) override { Log(NameOf(node) + (after ? "+" : "-")); }
    void SetDropHighlight(Node* node) override { Log("light:" + NameOf(node)); }
    void BeginDragImage(Node& node, Point point) override { Log(At(point) + "image:" + NameOf(&node)); }
    void ShowDragImage(bool visible, Point point) override { Log(At(point) + (visible ? "show" : "hide")); }
    void EndDragImage() override { Log("end"); }
    void Scroll(unsigned bands) override { Log("scroll" + std::to_string(bands)); }
    void StartTimer(TreeTimer timer, int delay) override {
        running.insert(timer);
        Log("start:" + std::to_string(delay));
    }
    void StopTimer(TreeTimer timer) override {
        if (running.erase(timer)) Log("stop");
    }
    bool HasCheckBoxes() const override { return hasCheckBoxes; }
    void SetSingleExpand(bool on) override { isSingleExpand = on; }
    void EnsureVisible(Node& node) override { Log("ensure:" + NameOf(&node)); }
    void HoldDrawing(bool hold) override { held += hold ? 1 : -1; }
    void FreezeDisplay(bool frozen) override {
        isFrozen = frozen;
        ++freezes;
    }
    std::string TakeCalls() { return std::exchange(log, {}); }

    NodeTree& tree;
    Rect client{0, 0, 300, 400};
    Point pointer;
    bool isCtrlDown = false, hasCheckBoxes = true, isSingleExpand = false, isFrozen = false;
    int freezes = 0, held = 0;
    std::set<TreeTimer> running;

private:
    void Log(const std::string& call) { log += (log.empty() ? "" : " ") + call; }
    static std::string NameOf(const Node* node) { return node ? ToUtf8(node->Key()) : ""; }
    std::string At(Point point) const { return point.x == pointer.x && point.y == pointer.y ? "" : "elsewhere:"; }
    int LeftOf(const Node& node) const { return (modTVW::GetIndentLevel(&node) + 1) * indent; }
    unsigned FlagsAt(const Node& node, int x) const {
        using namespace modTreeviewAPI::HitFlags;
        x -= LeftOf(node);
        if (x < -indent) return OnItemIndent;
        if (x < 0) return OnItemButton;
        if (x < boxWidth) return OnItemStateIcon;
        return x < boxWidth + iconWidth ? OnItemIcon : OnItemLabel;
    }

    std::string log; // the calls that the window received
};

} // namespace dax::test
