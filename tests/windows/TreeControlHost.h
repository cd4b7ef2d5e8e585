// The window of either tree control in a host that receives every event; both are used in the same way.
#pragma once

#include "hierarchy/win32/GroupEditorWindow.h"
#include "lessonmap/EditorEvents.h"
#include "lessonmap/SampleLesson.h"
#include "lessonmap/win32/LessonMapEditorWindow.h"
#include "tree/modTreeviewAPI.h"
#include "windows/HostWindow.h"

#include <cstring>
#include <memory>
#include <string>

namespace dax::test {

// A part of a row, or a place beside it.
enum class RowPart { Box, Button, Label, LabelTop, LabelBottom, BehindLabel, BehindWindow, AboveWindow, Below };

class TreeControlHost;
using Act = std::function<void(TreeControlHost&, UserInput&)>; // what a user does to either

class TreeControlHost {
public:
    virtual ~TreeControlHost() = default;
    virtual WindowBase* Control() const = 0;
    virtual void Release() = 0;
    virtual NodeTree& Model() const = 0;
    virtual void Open(const std::string& text) = 0; // maps or groups, all open
    void OpenSample() { Open("A: a b c( d e ) f | B: g h"); }
    virtual std::string Shape() const = 0; // as text for Open
    virtual bool IsDragging() const = 0;
    virtual bool HasBoxes() const { return false; }
    virtual void SetLocked(bool on) = 0;

    void Record(const std::string& what) {
        received += (received.empty() ? "" : ", ") + what;
        if (releaseAt.empty() || !what.starts_with(releaseAt)) return;
        Release();
        SetFocus(host.handle);
    }
    void Do(const Act& act) {
        UserInput input(host.handle);
        input.Do([&](UserInput& user) { act(*this, user); });
    }
    std::string Take() { return std::exchange(received, {}); }
    Node& At(TextView key) const { return key.empty() ? *Model().First() : *Model().Find(key); }
    HWND Tree() const { return GetWindow(Control()->Handle(), GW_CHILD); }

    // What the tree's window answers.
    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendMessageW(Tree(), message, wParam, lParam);
    }
    static HTREEITEM ItemOf(const Node* node) { return node ? static_cast<HTREEITEM>(node->windowItem) : nullptr; }
    HTREEITEM Next(WPARAM relation, const Node* from = nullptr) const {
        return reinterpret_cast<HTREEITEM>(Send(TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(ItemOf(from))));
    }
    RECT Place(const Node& node, bool isCaption = true) const {
        const HTREEITEM item = ItemOf(&node);
        RECT rect{};
        std::memcpy(&rect, &item, sizeof item);
        EXPECT_TRUE(Send(TVM_GETITEMRECT, isCaption, reinterpret_cast<LPARAM>(&rect)));
        return rect;
    }
    // In screen coordinates.
    POINT On(TextView key, RowPart part = RowPart::Label) const {
        const RECT label = Place(At(key));
        POINT point{label.left + 2, (label.top + label.bottom) / 2};
        if (part == RowPart::LabelTop || part == RowPart::BehindWindow) point.y = label.top + 1;
        if (part == RowPart::LabelBottom) point.y = label.bottom - 2;
        if (part == RowPart::BehindLabel) point = {label.right + 20, label.top + 1};
        if (part == RowPart::BehindWindow) point.x += 400;
        if (part == RowPart::AboveWindow) point.y = -15;
        if (part == RowPart::Below) point.y = label.bottom + 30;
        const unsigned requested = part == RowPart::Box      ? TVHT_ONITEMSTATEICON
                                   : part == RowPart::Button ? TVHT_ONITEMBUTTON
                                                             : 0;
        for (TVHITTESTINFO hit{}; requested && point.x >= 0; --point.x) {
            hit.pt = point;
            Send(TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
            if (!(hit.flags & requested)) continue;
            point.x -= 3;
            break;
        }
        EXPECT_GE(point.x, 0);
        ClientToScreen(Tree(), &point);
        return point;
    }

    // The window shows what the model holds: every node, and the open ones one below the other.
    void ExpectMirror() const {
        EXPECT_EQ(Send(TVM_GETCOUNT), Model().Count());
        EXPECT_EQ(Next(TVGN_ROOT), ItemOf(Model().First()));
        EXPECT_EQ(Next(TVGN_CARET), ItemOf(Model().Selected()));
        std::vector<wchar_t> caption(260);
        for (const Node* node = Model().First(); node; node = modTVW::GetNextNode(node)) {
            SCOPED_TRACE(ToUtf8(Shorten(node->Caption(), 259)));
            TVITEMW item{};
            item.mask = TVIF_HANDLE | TVIF_STATE | TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
            item.hItem = ItemOf(node);
            item.stateMask = ~0u;
            item.pszText = caption.data();
            item.cchTextMax = static_cast<int>(caption.size());
            EXPECT_TRUE(Send(TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)));
            EXPECT_EQ(FromWide(item.pszText), Shorten(node->Caption(), 259));
            EXPECT_TRUE(item.iImage == node->Image() && item.iSelectedImage == node->Image());
            EXPECT_EQ((item.state & TVIS_SELECTED) != 0, node->IsSelected());
            EXPECT_EQ(item.state >> 12 == 2, HasBoxes() && node->IsChecked());
            if (node->FirstChild()) {
                EXPECT_EQ((item.state & TVIS_EXPANDED) != 0, node->IsExpanded());
            }
            EXPECT_EQ(Next(TVGN_PARENT, node), ItemOf(node->Parent()));
            EXPECT_EQ(Next(TVGN_CHILD, node), ItemOf(node->FirstChild()));
            EXPECT_EQ(Next(TVGN_NEXT, node), ItemOf(node->Next()));
        }
        const LONG height = static_cast<LONG>(Send(TVM_GETITEMHEIGHT));
        LONG top = Model().IsEmpty() ? 0 : Place(*Model().First(), false).top;
        for (const Node* row = Model().First(); row; row = modTreeviewAPI::NextVisible(*row), top += height)
            ASSERT_EQ(Place(*row, false).top, top) << ToUtf8(row->Caption());
    }

    // The row that is marked as the one to drop on, and whether the system shows anything of a drag.
    std::string Highlighted() const {
        std::string keys;
        for (const Node* node = Model().First(); node; node = modTVW::GetNextNode(node))
            if (Send(TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(ItemOf(node)), TVIS_DROPHILITED) & TVIS_DROPHILITED)
                keys += node->Key().empty() ? "root" : ToUtf8(node->Key());
        return keys;
    }
    void ExpectNoDrag() const {
        EXPECT_FALSE(IsDragging());
        EXPECT_EQ(Highlighted(), "");
        EXPECT_EQ(GetCapture(), nullptr);
    }

    HostWindow host{420, 460};
    std::string received;
    std::string releaseAt; // the control is released inside the event that begins with this
};

template <typename Window>
class TreeHostOf : public TreeControlHost {
public:
    WindowBase* Control() const override { return control.get(); }
    void Release() override { control.reset(); }
    void SetLocked(bool on) override { Editor().SetLocked(on); }
    auto& Editor() const { return *control->Editor(); }

    std::unique_ptr<Window> control = std::make_unique<Window>();

protected:
    void Show(int height) {
        control->Create(host.handle, {0, 0, 300, height});
        control->InitProperties();
        SetFocus(control->Handle());
        ProcessPendingMessages();
    }
};

struct EditorHost : TreeHostOf<GroupEditorWindow> {
    explicit EditorHost(int height = 360) {
        Editor().AfterSelectionChange.AddPermanent([this](const Text& id) { Record("selected " + ToUtf8(id)); });
        Editor().DataChanged.AddPermanent([this] { Record("changed"); });
        Editor().DeleteRequest.AddPermanent([this] { Record("delete"); });
        Editor().DblClick.AddPermanent([this] { Record("double"); });
        Show(height);
    }
    NodeTree& Model() const override { return Editor().Tree(); }
    bool IsDragging() const override { return Editor().IsDragging(); }

    // The maps become groups.
    void Open(const std::string& text) override {
        const auto lesson = MakeLesson(text);
        Editor().Clear();
        {
            const TreeUpdate update(Model());
            Node& root = Model().Add(nullptr, InsertPosition::LastChild, u"", u"the database", 1);
            const auto add = [&](Node* parent, const Text& key) {
                return &Model().Add(parent, InsertPosition::LastChild, key, u"entry " + key, 3);
            };
            for (int32_t i = 0; i < lesson->Maps()->Count(); ++i) {
                const auto map = std::dynamic_pointer_cast<ContentMap>(lesson->Maps()->Item(i));
                std::vector<Node*> path{add(&root, map->Name())};
                for (const LayoutEntry& entry : map->Layout()) {
                    path.resize(static_cast<size_t>(entry.depth));
                    path.push_back(add(path.back(), entry.sbid));
                }
            }
            modTVW::SetAllExpanded(Model(), true);
        }
        ProcessPendingMessages();
        received.clear();
    }
    std::string Shape() const override { return Print(Model().First()->FirstChild()); }
};

struct LessonMapHost : TreeHostOf<LessonMapEditorWindow> {
    explicit LessonMapHost(bool hasBoxes = false, int height = 360) {
        Editor().SetCheckboxes(hasBoxes);
        RecordEvents(Editor(), [this](const std::string& what) { Record(what); });
        Show(height);
    }
    NodeTree& Model() const override { return *Editor().tvwObject(); }
    bool IsDragging() const override { return Editor().IsDragging(); }
    bool HasBoxes() const override { return Editor().Checkboxes(); }

    void Open(const std::string& text) override {
        lesson = MakeLesson(text);
        Editor().SetLesson(nullptr); // nothing stays from the lesson before
        Editor().SetLesson(lesson);
        Editor().ExpandAll();
        ProcessPendingMessages();
        received.clear();
    }
    // The tree, which the lesson's maps must hold as well.
    std::string Shape() const override {
        const std::string shown = Print(Model()), stored = Print(*lesson);
        return shown == stored ? shown : shown + " but " + stored;
    }
    std::string Checked() const {
        std::string keys;
        for (const Node* node = Model().First(); node; node = modTVW::GetNextNode(node))
            if (node->IsChecked()) keys += ToUtf8(node->Key());
        return keys;
    }

    std::shared_ptr<ContentLesson> lesson;
};

inline Act Click(TextView key, RowPart part = RowPart::Label) {
    return [=](TreeControlHost& host, UserInput& user) { user.Click(host.On(key, part)); };
}
inline Act Double(TextView key, RowPart part = RowPart::Label) {
    return [=](TreeControlHost& host, UserInput& user) { user.DoubleClick(host.On(key, part)); };
}
inline Act RightClick(TextView key) {
    return [=](TreeControlHost& host, UserInput& user) { user.RightClick(host.On(key)); };
}
inline Act Type(WORD key) {
    return [=](TreeControlHost&, UserInput& user) { user.Type(key); };
}
inline Act Holding(std::initializer_list<WORD> keys, const Act& act) {
    return [keys = std::vector<WORD>(keys), act](TreeControlHost& host, UserInput& user) {
        for (const WORD key : keys) user.KeyDown(key);
        act(host, user);
        for (const WORD key : keys) user.KeyUp(key);
    };
}
// The drag begins where it was pressed, and stays at the end; the control may go meanwhile.
inline Act DragTo(TextView from, TextView to, RowPart part = RowPart::LabelTop) {
    return [=](TreeControlHost& host, UserInput& user) {
        const POINT start = host.On(from), end = host.On(to, part);
        user.Press(start);
        user.Move({start.x + GetSystemMetrics(SM_CXDRAG) + 1, start.y});
        user.Move(end);
    };
}
inline Act ReleaseButton() {
    return [](TreeControlHost&, UserInput& user) { user.Release(); };
}
inline Act Drag(TextView from, TextView to) {
    return [=](TreeControlHost& host, UserInput& user) {
        DragTo(from, to)(host, user);
        user.Release();
    };
}

} // namespace dax::test
