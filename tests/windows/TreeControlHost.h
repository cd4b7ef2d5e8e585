// The window of either tree control in a host that hears every event; both are used alike.
#pragma once

#include "hierarchy/win32/GroupEditorWindow.h"
#include "lessonmap/SampleLesson.h"
#include "lessonmap/win32/LessonMapEditorWindow.h"
#include "windows/HostWindow.h"
#include "windows/TreeWindowRows.h"
#include "windows/UserInput.h"

#include <memory>
#include <string>

namespace dax::test {

class TreeControlHost {
public:
    virtual ~TreeControlHost() = default;
    virtual WindowBase* Control() const = 0;
    virtual void Release() = 0;
    virtual NodeTree& Model() const = 0;
    virtual void OpenSample() = 0;
    virtual std::string Shape() const = 0;
    virtual bool IsDragging() const = 0;
    virtual void SetLocked(bool on) = 0;

    void Hear(const std::string& what) {
        heard += (heard.empty() ? "" : ", ") + what;
        if (releaseAt.empty() || !what.starts_with(releaseAt)) return;
        Release();
        SetFocus(host.handle);
    }
    std::string Take() { return std::exchange(heard, {}); }
    Node& At(TextView key) const { return key.empty() ? *Model().First() : *Model().Find(key); }
    HWND TreeHandle() const { return GetWindow(Control()->Handle(), GW_CHILD); }
    POINT On(TextView key, RowPart part = RowPart::Label) const { return PointOf(TreeHandle(), At(key), part); }

    // The row that is marked as the one to drop on, and whether the system shows anything of a drag.
    std::string Highlighted() const {
        std::string keys;
        for (const Node* node = Model().First(); node; node = modTVW::GetNextNode(node)) {
            const auto item = reinterpret_cast<WPARAM>(node->windowItem);
            if (SendMessageW(TreeHandle(), TVM_GETITEMSTATE, item, TVIS_DROPHILITED) & TVIS_DROPHILITED)
                keys += node->Key().empty() ? "root" : ToUtf8(node->Key());
        }
        return keys;
    }
    void ExpectNoDrag() const {
        EXPECT_FALSE(IsDragging());
        EXPECT_EQ(Highlighted(), "");
        EXPECT_EQ(GetCapture(), nullptr);
    }

    HostWindow host{420, 460};
    std::string heard;
    std::string releaseAt; // the control is released inside the event that begins with this

protected:
    void Show(WindowBase& window, int height) {
        window.SetAmbient(test::At(96));
        window.Create(host.handle, {0, 0, 300, height});
        window.InitProperties();
        SetFocus(window.Handle());
        ProcessPendingMessages();
    }
};

struct EditorHost : TreeControlHost {
    explicit EditorHost(int height = 360) {
        Editor().AfterSelectionChange.Add([this](const Text& id) { Hear("selected " + ToUtf8(id)); });
        Editor().DataChanged.Add([this] { Hear("changed"); });
        Editor().DeleteRequest.Add([this] { Hear("delete"); });
        Editor().DblClick.Add([this] { Hear("double"); });
        Show(*control, height);
    }
    WindowBase* Control() const override { return control.get(); }
    void Release() override { control.reset(); }
    NodeTree& Model() const override { return Editor().Tree(); }
    bool IsDragging() const override { return Editor().DragDrop().Active(); }
    void SetLocked(bool on) override { Editor().SetLocked(on); }

    // root(g(a b s(c d)) h(e f) i), open but for h.
    void OpenSample() override {
        Editor().Clear();
        {
            const TreeUpdate update(Model());
            Node& root = Model().Add(nullptr, Place::LastChild, u"", u"the database", 1);
            const std::tuple<const char16_t*, const char16_t*, int> entries[] = {
                {u"g", u"", 2},  {u"a", u"g", 3}, {u"b", u"g", 3}, {u"s", u"g", 2}, {u"c", u"s", 3},
                {u"d", u"s", 4}, {u"h", u"", 2},  {u"e", u"h", 3}, {u"f", u"h", 3}, {u"i", u"", 3}};
            for (const auto& [key, parent, image] : entries) {
                Node* const above = Model().Find(parent);
                Model().Add(above ? above : &root, Place::LastChild, key, Text(u"entry ") + key, image);
            }
            modTVW::SetAllExpanded(Model(), true);
            At(u"h").SetExpanded(false);
        }
        ProcessPendingMessages();
        heard.clear();
    }
    std::string Shape() const override { return Print(Model()); }
    GroupEditor& Editor() const { return *control->Editor(); }

    std::unique_ptr<GroupEditorWindow> control = std::make_unique<GroupEditorWindow>();
};

struct LessonMapHost : TreeControlHost {
    explicit LessonMapHost(bool hasBoxes = false, int height = 360) {
        Editor().SetCheckboxes(hasBoxes);
        Editor().BeforeSelectionChange.Add([this](const auto&, const auto&, bool&) { Hear("before"); });
        Editor().AfterSelectionChange.Add(
            [this](const auto& page) { Hear("selected " + (page ? ToUtf8(page->SBID()) : "-")); });
        Editor().ItemChecked.Add([this] { Hear("checked"); });
        Editor().MapChanged.Add([this](MapChangeTypes type) { Hear("changed " + std::to_string(type)); });
        Editor().DeleteRequest.Add([this] { Hear("delete"); });
        Editor().ContextMenuRequest.Add([this] { Hear("menu"); });
        Show(*control, height);
    }
    WindowBase* Control() const override { return control.get(); }
    void Release() override { control.reset(); }
    NodeTree& Model() const override { return *Editor().tvwObject(); }
    bool IsDragging() const override { return Editor().IsDragging(); }
    void SetLocked(bool on) override { Editor().SetLocked(on); }

    void Open(const std::string& text) {
        lesson = MakeLesson(text);
        Editor().SetLesson(nullptr); // nothing stays from the lesson before
        Editor().SetLesson(lesson);
        Editor().ExpandAll();
        ProcessPendingMessages();
        heard.clear();
    }
    void OpenSample() override { Open("A: a b c( d e ) f | B: g h | C:"); }
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
    LessonMapEditor& Editor() const { return *control->Editor(); }

    std::unique_ptr<LessonMapEditorWindow> control = std::make_unique<LessonMapEditorWindow>();
    std::shared_ptr<ContentLesson> lesson;
};

// What a user does to either.
using Act = std::function<void(TreeControlHost&, UserInput&)>;

inline Act Click(TextView key, RowPart part = RowPart::Label) {
    return [=](TreeControlHost& host, UserInput& user) { user.Click(host.On(key, part)); };
}
inline Act Twice(TextView key, RowPart part = RowPart::Label) {
    return [=](TreeControlHost& host, UserInput& user) { user.DoubleClick(host.On(key, part)); };
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
inline Act RightClick(TextView key) {
    return [=](TreeControlHost& host, UserInput& user) { user.RightClick(host.On(key)); };
}
inline Act Drag(TextView from, TextView to) { // and drop; the control may go meanwhile
    return [=](TreeControlHost& host, UserInput& user) {
        const POINT start = host.On(from), end = host.On(to, RowPart::LabelTop);
        user.Press(start);
        user.Move(end);
        user.Release();
    };
}

} // namespace dax::test
