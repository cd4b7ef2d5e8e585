// Lists the locks of a content database and deletes those that the user may delete.
#pragma once

#include "pages/FormPage.h"

namespace dax::workbench {

class LocksPage final : public FormPage {
public:
    explicit LocksPage(PageContext& shared) : FormPage(shared) {}
    ~LocksPage() override;

    void Start() override;
    void CatalogChanged() override;
    void Shown() override;
    void Refresh() override { List(false); }
    std::wstring Keys() const override { return L"F5 Refresh    Ctrl+A Select all    Del Delete"; }
    void Apply() override;
    std::vector<MenuEntry> Menu() const override;
    int DefaultButton() const override { return HasFocus(idLocks) ? 0 : idLoad; }
    void KeyReleased() override;
    std::vector<PageState> States() override;
    std::vector<StartStep> Steps() override;

protected:
    std::wstring Heading() const override { return L"See who holds which locks, and clear them"; }
    std::wstring Explanation() const override;
    void Build() override;
    void Arrange(int top, int bottom) override;
    void Command(int id, int notification) override;
    std::vector<Shortcut> Shortcuts() const override { return {{'A', true, false, idSelectAll}}; }
    bool HandleKey(const MSG& message) override;

private:
    static constexpr wchar_t ControlName[] = L"LockManager";

    void OnControlEvent(const ControlEvent& event);
    // Passes the fields to the control; its locks are read, and its columns rebuilt if requested.
    void List(bool rebuild);
    void ApplyFields();
    void Delete();
    void ShowCounts();
    HWND ListWindow() const; // inside the control
    void SelectRows(int count) const;
    void ClickHeader(int column) const;
    const Automation& Manager() const { return manager->Control(); }

    HWND connectionLabel = nullptr;
    HWND displayLabel = nullptr;
    HWND userLabel = nullptr;
    HWND entryLabel = nullptr;
    std::unique_ptr<ControlHost> manager;
    std::wstring user;      // whose locks may be deleted in the list that is shown
    bool hasFailed = false; // since the last time that the locks were read
};

} // namespace dax::workbench
