// Shows and edits the maps of one lesson, which the hierarchy page opens.
#pragma once

#include "pages/EntryPage.h"

namespace dax::workbench {

class LessonMapPage final : public EntryPage {
public:
    explicit LessonMapPage(PageContext& shared) : EntryPage(shared) {}
    ~LessonMapPage() override;

    void Start() override {}
    void OpenLesson() override;
    void Refresh() override;
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
    bool HasEntry() const override { return static_cast<bool>(shownPage); }
    void Store(const Entry& typed, const Entry& before) override;
    void ShowSelection() override;
    bool Save() override;

private:
    static constexpr wchar_t ControlName[] = L"LessonMapEditor";

    // Where the shown lesson comes from.
    struct Opened {
        std::wstring connection, lessonID, title;
        Automation lesson; // empty: none is open
    };

    void OnControlEvent(const ControlEvent& event);
    // EntryPage::Edit when a lesson is open; else says how to open one.
    void EditLesson(const std::function<void()>& work);
    void AddDefaultMap(const Automation& lesson) const;
    void Add();
    void Remove();
    void Move(int tool);
    void Display(int tool);
    void Find();
    void SetOption(int id);
    void ShowCounts();
    void EnableTools();
    void SelectPage(long place) const;
    void SelectType(const std::wstring& type);
    Automation Current() const;

    std::vector<HWND> labels;
    Opened opened;
    Automation shownPage;    // the one in the fields; empty: none
    POINT menuPlace{-1, -1}; // of the right click whose event comes next
};

} // namespace dax::workbench
