// The hierarchy editor's window in a host that hears every event.
#pragma once

#include "hierarchy/win32/GroupEditorWindow.h"
#include "windows/Hand.h"
#include "windows/HostWindow.h"
#include "windows/TreeWindowRows.h"

#include <memory>
#include <string>

namespace dax::test {

// key(children), without the root.
inline std::string Shape(const NodeTree& tree) {
    std::string shape;
    int depth = 0;
    for (const Node* node = tree.First(); node; node = modTVW::GetNextNode(node)) {
        const int level = modTVW::GetIndentLevel(node);
        if (level > depth && level > 1) shape += "(";
        for (; depth > level; --depth) shape += ")";
        if (!shape.empty() && shape.back() != '(' && node->Parent()) shape += " ";
        depth = level;
        shape += ToUtf8(node->Key());
    }
    for (; depth > 1; --depth) shape += ")";
    return shape;
}

struct EditorHost {
    explicit EditorHost(int height = 360) {
        control->SetAmbient(test::At(96));
        control->Create(host.handle, {0, 0, 300, height});
        control->InitProperties();
        const auto& editor = control->Editor();
        editor->AfterSelectionChange.Add([this](const Text& id) { Hear("S" + ToUtf8(id)); });
        editor->DataChanged.Add([this] { Hear("D"); });
        editor->DeleteRequest.Add([this] { Hear("X"); });
        editor->DblClick.Add([this] { Hear("2"); });
        SetFocus(control->Handle());
        ProcessPendingMessages();
    }

    // root(g(a b s(c d)) h(e f) i), open but for h.
    void FillSample() {
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
    void Hear(const std::string& what) {
        heard += what + " ";
        if (releaseAt == what[0]) control.reset();
    }
    std::string Take() { return std::exchange(heard, {}); }

    GroupEditor& Editor() const { return *control->Editor(); }
    NodeTree& Model() const { return Editor().Tree(); }
    Node& At(TextView key) const { return key.empty() ? *Model().First() : *Model().Find(key); }
    HWND TreeHandle() const { return GetWindow(control->Handle(), GW_CHILD); }
    POINT On(TextView key, RowPart part = RowPart::Label) const { return PointOf(TreeHandle(), At(key), part); }

    // The row that is marked as the one to drop on, and whether the system shows anything of a drag.
    std::string Highlighted() const {
        std::string keys;
        for (const Node* node = Model().First(); node; node = modTVW::GetNextNode(node)) {
            const auto state = SendMessageW(TreeHandle(), TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(node->windowItem),
                                            TVIS_DROPHILITED);
            if (state & TVIS_DROPHILITED) keys += node->Parent() ? ToUtf8(node->Key()) : "root";
        }
        return keys;
    }
    void ExpectNoDrag() const {
        EXPECT_FALSE(Editor().DragDrop().Active());
        EXPECT_EQ(Highlighted(), "");
        EXPECT_EQ(GetCapture(), nullptr);
    }

    HostWindow host{420, 460};
    std::unique_ptr<GroupEditorWindow> control = std::make_unique<GroupEditorWindow>();
    std::string heard;
    char releaseAt = 0; // the control is released inside the event that begins with this
};

} // namespace dax::test
