// Shows and edits the hierarchy of a content database; both panels follow the selection.
#pragma once

#include "pages/EntryPage.h"

namespace dax::workbench {

class HierarchyPage final : public EntryPage {
public:
    explicit HierarchyPage(PageContext& shared) : EntryPage(shared) {}
    ~HierarchyPage() override;

    void Start() override;
    void CatalogChanged() override;
    void Refresh() override { Load(); }
    std::vector<MenuEntry> Menu() const override;
    std::wstring Keys() const override {
        return L"F2 Rename    Ctrl+F, F3 Find    Ctrl+Z Undo    Ctrl+Y Redo    Alt+Arrows Move    Del Remove";
    }
    bool HandleKey(const MSG& message) override;
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
    bool HasEntry() const override { return !shownID.empty(); }
    void Store(const Entry& typed, const Entry& before) override;
    // The fields, the panels and the tools, after the selection or the data changed.
    void ShowSelection() override;
    bool Save() override;

private:
    static constexpr wchar_t ControlName[] = L"GroupEditor";

    void OnControlEvent(const ControlEvent& event);
    bool Load(); // false when the user keeps what is not saved
    void Read(); // without asking
    // After a refused save: reads the database when the user gives up the edits.
    void OfferToLoad();
    void Add(bool isGroup);
    void Remove();
    void Move(int tool);
    void UndoOrRedo(bool isUndo);
    void Find();
    void FocusTree() const;
    void Display(int tool);
    void SetOption(int id);
    void ShowPanels();
    void EnableTools();
    void SelectEntry(long place);
    void SelectLesson(long place);
    std::wstring CurrentID() const;

    HWND connectionLabel = nullptr;
    HWND titleLabel = nullptr;
    HWND identifierLabel = nullptr;
    HWND typeLabel = nullptr;
    std::unique_ptr<ControlHost> lessonInfo;
    std::unique_ptr<ControlHost> lockInfo;
    HWND searchLabel = nullptr;
    std::wstring shownID;                // of the entry in the fields; empty: none
    std::wstring failure, failureNumber; // of the last Error event
};

} // namespace dax::workbench
