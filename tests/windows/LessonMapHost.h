// The lesson map's window in a host that hears every event.
#pragma once

#include "lessonmap/SampleLesson.h"
#include "lessonmap/win32/LessonMapEditorWindow.h"
#include "windows/Hand.h"
#include "windows/HostWindow.h"
#include "windows/TreeWindowRows.h"

#include <memory>
#include <string>

namespace dax::test {

struct LessonMapHost {
    explicit LessonMapHost(bool hasBoxes = false, int height = 360, int dpi = 96) {
        // Otherwise the host is no target of the mouse once the control is gone.
        SetWindowLongW(host.handle, GWL_STYLE, GetWindowLongW(host.handle, GWL_STYLE) | SS_NOTIFY);
        control->SetAmbient(At(dpi));
        control->Create(host.handle, {0, 0, MulDiv(300, dpi, 96), height});
        control->InitProperties();
        Editor().SetCheckboxes(hasBoxes);
        Editor().BeforeSelectionChange.Add([this](const auto&, const auto&, bool&) { Hear("before"); });
        Editor().AfterSelectionChange.Add(
            [this](const auto& page) { Hear("selected " + (page ? ToUtf8(page->SBID()) : "-")); });
        Editor().ItemChecked.Add([this] { Hear("checked"); });
        Editor().MapChanged.Add([this](MapChangeTypes type) { Hear("changed " + std::to_string(type)); });
        Editor().DeleteRequest.Add([this] { Hear("delete"); });
        Editor().ContextMenuRequest.Add([this] { Hear("menu"); });
        SetFocus(control->Handle());
        ProcessPendingMessages();
    }

    void Open(const std::string& text) {
        lesson = MakeLesson(text);
        Editor().SetLesson(nullptr); // nothing stays from the lesson before
        Editor().SetLesson(lesson);
        Editor().ExpandAll();
        ProcessPendingMessages();
        heard.clear();
    }
    void Hear(const std::string& what) {
        heard += (heard.empty() ? "" : ", ") + what;
        if (releaseAt.empty() || !what.starts_with(releaseAt)) return;
        control.reset();
        SetFocus(host.handle);
    }
    std::string Take() { return std::exchange(heard, {}); }

    LessonMapEditor& Editor() const { return *control->Editor(); }
    NodeTree& Model() const { return *Editor().tvwObject(); }
    Node& At(TextView key) const { return *Model().Find(key); }
    static Ambient At(int dpi) { return test::At(dpi); }
    HWND TreeHandle() const { return GetWindow(control->Handle(), GW_CHILD); }
    POINT On(TextView key, RowPart part = RowPart::Label) const { return PointOf(TreeHandle(), At(key), part); }

    // The tree, which the lesson's maps must hold as well.
    std::string Shape() const {
        const std::string shown = Print(Model()), stored = Print(*lesson);
        return shown == stored ? shown : shown + " but " + stored;
    }
    std::string Checked() const {
        std::string keys;
        for (const Node* node = Model().First(); node; node = modTVW::GetNextNode(node))
            if (node->IsChecked()) keys += ToUtf8(node->Key());
        return keys;
    }
    std::string Highlighted() const {
        std::string keys;
        for (const Node* node = Model().First(); node; node = modTVW::GetNextNode(node)) {
            const auto item = reinterpret_cast<WPARAM>(node->windowItem);
            if (SendMessageW(TreeHandle(), TVM_GETITEMSTATE, item, TVIS_DROPHILITED) & TVIS_DROPHILITED)
                keys += ToUtf8(node->Key());
        }
        return keys;
    }
    void ExpectNoDrag() const {
        EXPECT_FALSE(Editor().IsDragging());
        EXPECT_EQ(Highlighted(), "");
        EXPECT_EQ(GetCapture(), nullptr);
    }

    HostWindow host{420, 460};
    std::unique_ptr<LessonMapEditorWindow> control = std::make_unique<LessonMapEditorWindow>();
    std::shared_ptr<ContentLesson> lesson;
    std::string heard;
    std::string releaseAt; // the control is released inside the event that begins with this
};

} // namespace dax::test
