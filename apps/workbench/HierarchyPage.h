// Shows and edits the hierarchy of a content database; both panels follow the selection.
#pragma once

#include "FormPage.h"

namespace dax::workbench {

class HierarchyPage final : public FormPage {
public:
    explicit HierarchyPage(Bench& shared) : FormPage(shared) {}
    ~HierarchyPage() override;

    void Start() override;
    void CatalogChanged() override;
    void Refresh() override { Load(); }
    std::wstring Keys() const override { return L"F5 Load    F2 Rename    Alt+Arrows Move    Del Remove"; }
    int DefaultButton() const override;
    bool MayClose() override;
    std::vector<PageState> States() override;
    std::vector<StartStep> Steps() override;

protected:
    std::wstring Heading() const override { return L"Edit a hierarchy of groups and lessons"; }
    std::wstring Explanation() const override;
    void Build() override;
    void Arrange(int top, int bottom) override;
    void Command(int id, int notification) override;
    std::vector<Shortcut> Shortcuts() const override;

private:
    void Heard(const ControlEvent& event);
    bool Load(); // false when the user keeps what is not saved
    bool Save();
    bool MayLose(const std::wstring& question);
    void Add(bool isGroup);
    void Update();
    void Remove();
    void Move(int tool);
    void Edit(const std::function<void()>& work);
    void Display(int tool);
    void SetOption(int id);
    // The fields, the panels and the tools, after the selection or the data changed.
    void ShowSelection();
    void ShowPanels();
    void EnableTools();
    void SelectEntry(long place);
    void SelectLesson(long place);
    std::wstring CurrentID() const;

    const Automation& Editor() const { return editor->Control(); }

    HWND connectionLabel = nullptr;
    HWND titleLabel = nullptr;
    HWND identifierLabel = nullptr;
    HWND typeLabel = nullptr;
    std::unique_ptr<ControlHost> editor;
    std::unique_ptr<ControlHost> lessonInfo;
    std::unique_ptr<ControlHost> lockInfo;
    std::wstring failure; // the last Error event's text
    bool isChanged = false;
    bool isFrozen = false;
};

} // namespace dax::workbench
