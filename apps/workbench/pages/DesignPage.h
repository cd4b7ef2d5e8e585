// All controls as a form designer shows them.
#pragma once

#include "automation/DesignSite.h"
#include "pages/FormPage.h"

namespace dax::workbench {

// The form that is designed: draws the controls at their places.
class DesignForm final : private workbench::Window {
public:
    explicit DesignForm(const Style& shared) : style(shared) {}
    ~DesignForm() override { Destroy(); }

    bool Create(HWND parent, int id, const ControlLibrary& library);
    HWND Handle() const { return Window::Handle(); }

private:
    struct Placed {
        const wchar_t* name;
        std::unique_ptr<DesignSite> control;
    };

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void Paint(HDC dc) const;
    void PaintOne(HDC dc, const Placed& one, const RECT& place) const;

    const Style& style;
    std::vector<Placed> left, right; // the two columns
};

class DesignPage final : public FormPage {
public:
    explicit DesignPage(PageContext& shared) : FormPage(shared), form(shared.style) {}
    ~DesignPage() override { Destroy(); }

    void Start() override {}
    void Refresh() override;
    std::wstring Keys() const override { return L"F5 Draw again"; }
    int DefaultButton() const override { return 0; }
    std::vector<PageState> States() override;

protected:
    std::wstring Heading() const override { return L"The controls on a form that is being designed"; }
    std::wstring Explanation() const override;
    void Build() override;
    void Arrange(int top, int bottom) override;
    void Command(int, int) override {}

private:
    DesignForm form;
};

} // namespace dax::workbench
