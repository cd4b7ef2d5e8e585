// Validates a content database: a file or a catalog.
#pragma once

#include "pages/FormPage.h"

namespace dax::workbench {

class ValidatorPage final : public FormPage {
public:
    explicit ValidatorPage(PageContext& shared) : FormPage(shared) {}
    ~ValidatorPage() override;

    void Start() override;
    void CatalogChanged() override { Start(); }
    void Refresh() override { Validate(); }
    std::vector<MenuEntry> Menu() const override;
    int DefaultButton() const override { return idValidate; }
    std::vector<PageState> States() override;

protected:
    std::wstring Heading() const override { return L"Validate a content database"; }
    std::wstring Explanation() const override;
    void Build() override;
    void Arrange(int top, int bottom) override;
    void Command(int id, int notification) override;

private:
    static constexpr wchar_t ControlName[] = L"DatabaseValidator";

    void Validate();
    void CheckTalk();
    void ShowCatalogHint();

    HWND connectionLabel = nullptr;
    HWND catalogLabel = nullptr;
    std::unique_ptr<ControlHost> validator;
};

} // namespace dax::workbench
