// An editor with its window and a list of what the host received.
#pragma once

#include "lessonmap/EditorEvents.h"
#include "lessonmap/SampleLesson.h"
#include "tree/FakeTreeWindow.h"

#include <gtest/gtest.h>

namespace dax::test {

class EditorFixture : public testing::Test {
protected:
    EditorFixture() { MakeEditor(); }
    ~EditorFixture() override {
        if (!editor) return;
        EXPECT_EQ(window->held, 0) << "what is not drawn any more";
        editor->AttachWindow(nullptr); // the window is removed first
    }

    void MakeEditor() {
        if (editor) editor->AttachWindow(nullptr);
        editor = LessonMapEditor::Create();
        tree = editor->tvwObject();
        window = std::make_unique<FakeTreeWindow>(*tree);
        editor->AttachWindow(window.get());
        RecordEvents(*editor, [this](const std::string& what) { Record(what); });
        editor->CheckboxesChanged.AddPermanent([this] { Record("boxes"); });
        editor->Error.AddPermanent(
            [this](int32_t, const Text& text, const Text& action) { Record("error " + ToUtf8(text + u" " + action)); });
    }

    void Record(const std::string& what) { received += (received.empty() ? "" : ", ") + what; }
    std::string Take() { return std::exchange(received, {}); }
    void Open(const std::string& text) {
        lesson = MakeLesson(text);
        editor->SetLesson(nullptr); // nothing stays from the lesson before
        editor->SetLesson(lesson);
        received.clear();
    }
    void Select(const Text& key) {
        tree->Select(tree->Find(key));
        received.clear();
    }
    Node& At(const Text& key) { return *tree->Find(key); }
    // The button stays down; either node may be removed meanwhile.
    void DragTo(const Text& from, const Text& to, int part = 10) {
        if (!tree->Find(from)) return;
        window->MoveTo(window->At(At(from)));
        editor->OnMouseDown(MouseButton::Left);
        window->MoveTo(window->At(At(from), 95));
        editor->OnMouseMove(MouseButton::Left);
        if (!editor || !tree->Find(to)) return;
        window->MoveTo(window->At(At(to), part));
        editor->OnMouseMove(MouseButton::Left);
    }
    std::shared_ptr<Storyboard> Page(const Text& sbid) { return lesson->Storyboards()->Item(sbid); }
    std::shared_ptr<ContentStoryboard> NewPage(const Text& sbid) {
        return std::make_shared<ContentStoryboard>(sbid, u"New " + sbid, u"", u"video");
    }
    // The tree; what the lesson's maps hold beside it when that differs.
    std::string Shown() {
        const std::string shown = Print(*tree), stored = Print(*lesson);
        return shown == stored ? shown : shown + " but " + stored;
    }

    std::shared_ptr<LessonMapEditor> editor;
    std::shared_ptr<NodeTree> tree;
    std::unique_ptr<FakeTreeWindow> window;
    std::shared_ptr<ContentLesson> lesson;
    std::string received;
};

} // namespace dax::test
