// Shows and edits the hierarchy of a content database; both panels follow the selection.
#pragma once

#include "pages/FormPage.h"

namespace dax::workbench {

class HierarchyPage final : public FormPage {
public:
    explicit HierarchyPage(PageContext& shared) : FormPage(shared) {}
    ~HierarchyPage() override;

    void Start() override;
    void CatalogChanged() override;
    void Refresh() override { Load(); }
    void Apply() override;
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
    void ClearResult() override;

private:
    // What the fields of the selected entry say.
    struct Entry {
        std::wstring lessonID, title, identifier;
        int type = -1;
        bool operator==(const Entry&) const = default;
    };

    void Heard(const ControlEvent& event);
    bool Load(); // false when the user keeps what is not saved
    void Read(); // without asking
    bool Save();
    // After a refused save: reads the database when the user gives up the edits.
    void OfferToLoad();
    bool MayLose(const std::wstring& question);
    void Add(bool isGroup);
    bool IsTyped() const { return !shown.lessonID.empty() && Typed() != shown; }
    Entry Typed() const { return {shown.lessonID, FieldText(idTitle), FieldText(idIdentifier), Choice(idType)}; }
    void Update();
    void Remove();
    void Move(int tool);
    void TakeBack(bool isUndo);
    void Find();
    void FocusTree() const;
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
    HWND searchLabel = nullptr;
    Entry shown;                         // as the fields showed it before anything was typed
    std::wstring failure, failureNumber; // of the last Error event
    bool isChanged = false;
    bool isFrozen = false;
};

} // namespace dax::workbench
