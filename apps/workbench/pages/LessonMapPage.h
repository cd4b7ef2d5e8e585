// Shows and edits the maps of one lesson, which the hierarchy page opens.
#pragma once

#include "pages/FormPage.h"

namespace dax::workbench {

class LessonMapPage final : public FormPage {
public:
    explicit LessonMapPage(PageContext& shared) : FormPage(shared) {}
    ~LessonMapPage() override;

    void Start() override {}
    void OpenLesson() override;
    void Refresh() override;
    void Apply() override;
    std::vector<MenuEntry> Menu() const override;
    std::wstring Keys() const override {
        return L"F2 Rename    Ctrl+F, F3 Find    Alt+Arrows, Alt+Page Up, Down Move    Del Remove";
    }
    int DefaultButton() const override;
    bool MayClose() override;
    std::vector<PageState> States() override;
    std::vector<StartStep> Steps() override;

protected:
    std::wstring Heading() const override { return L"Edit the maps of a lesson"; }
    std::wstring Explanation() const override;
    void Build() override;
    void Arrange(int top, int bottom) override;
    void Command(int id, int notification) override;
    std::vector<Shortcut> Shortcuts() const override;
    void RightClicked(HWND window, POINT at) override;
    void ClearResult() override { ShowResult(isChanged ? L"Not yet saved." : L"", Tone::Plain); }

private:
    // What the fields of the selected page say.
    struct Entry {
        std::wstring title, identifier;
        int type = -1;
        bool operator==(const Entry&) const = default;
    };

    // Where the shown lesson comes from.
    struct Opened {
        std::wstring connection, lessonID, title;
        Automation lesson; // empty: none is open
    };

    void Heard(const ControlEvent& event);
    void Edit(const std::function<void()>& work);
    void AddDefaultMap(const Automation& lesson) const;
    bool Save();
    bool MayLose(const std::wstring& question);
    void Add();
    bool IsTyped() const { return shownPage && Typed() != shown; }
    Entry Typed() const { return {FieldText(idTitle), FieldText(idIdentifier), Choice(idType)}; }
    void Update();
    void Remove();
    void Move(int tool);
    void Display(int tool);
    void Find();
    void SetOption(int id);
    void ShowSelection();
    void ShowCounts();
    void EnableTools();
    void SelectPage(long place) const;
    void SelectType(const std::wstring& type);
    Automation Current() const;

    const Automation& Editor() const { return editor->Control(); }

    std::vector<HWND> labels;
    std::unique_ptr<ControlHost> editor;
    Opened opened;
    Automation shownPage;    // the one in the fields; empty: none
    Entry shown;             // as the fields showed it before anything was typed
    POINT menuPlace{-1, -1}; // of the right click that the control is about to tell of
    bool isChanged = false;
    bool isFrozen = false;
};

} // namespace dax::workbench
