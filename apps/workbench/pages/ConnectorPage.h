// Validates the connector database and picks a catalog that a user may open.
#pragma once

#include "pages/FormPage.h"

namespace dax::workbench {

class ConnectorPage final : public FormPage {
public:
    explicit ConnectorPage(PageContext& shared) : FormPage(shared) {}
    ~ConnectorPage() override;

    void Start() override;
    void Refresh() override { Validate(); }
    std::vector<MenuEntry> Menu() const override;
    int DefaultButton() const override { return idValidate; }
    std::vector<PageState> States() override;
    std::vector<StartStep> Steps() override;

protected:
    std::wstring Heading() const override { return L"Pick a catalog through the connector"; }
    std::wstring Explanation() const override;
    void Build() override;
    void Arrange(int top, int bottom) override;
    void Command(int id, int notification) override;

private:
    void Validate();
    struct Detail {
        HWND label;
        HWND value;
    };

    void Load();
    void Open();
    void Record();
    void ShowHints();
    void ShowSelection(const std::wstring& description);
    // The field's text, or what the connection says when it is empty.
    std::wstring Source() const;
    std::wstring Catalog() const;

    HWND connectionLabel = nullptr;
    HWND sourceLabel = nullptr;
    HWND catalogLabel = nullptr;
    HWND userLabel = nullptr;
    HWND pickerLabel = nullptr;
    std::vector<Detail> details;
    std::unique_ptr<ControlHost> validator;
    std::unique_ptr<ControlHost> picker;
};

} // namespace dax::workbench
