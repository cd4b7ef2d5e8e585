#include "pages/ValidatorPage.h"

#include "ui/Input.h"

#include <commctrl.h>

namespace dax::workbench {

namespace {} // namespace

ValidatorPage::~ValidatorPage() {
    validator.reset();
    Destroy();
}

std::wstring ValidatorPage::Explanation() const {
    return L"The panel shows what DatabaseValidator makes of a file or a catalog. Its write test leaves no "
           L"changes.";
}

void ValidatorPage::Build() {
    connectionLabel = AddLabel(L"&File or connection:");
    AddEdit(idConnection, L"A database file, or a connection string");
    AddButton(idBrowse, L"&Browse\u2026");
    catalogLabel = AddLabel(L"&Catalog:");
    AddEdit(idCatalog);
    AddCheck(idAccessFile, L"The database is a single file (&Access-file mode)");
    SendMessageW(Field(idAccessFile), BM_SETCHECK, BST_CHECKED, 0);
    AddButton(idValidate, L"Va&lidate", true);
    AddButton(idTalk, L"Check &talk tables");
    validator = AddControl(idPanel, false, ControlName, {});
    if (validator) Frame(validator->Window());
    AddOutput(idResult);
    for (int id : {idValidate, idTalk}) EnableWindow(Field(id), validator != nullptr);
    ShowCatalogHint();
}

void ValidatorPage::Arrange(int top, int bottom) {
    const Style& style = context.style;
    const int fieldLeft = Left() + style.TextWidth(L"File or connection:") + style.Scale(16);
    const int browse = Right() - style.ButtonWidth(FieldText(idBrowse));
    Place(Field(idBrowse), browse, top - style.Scale(1), Right(), top + style.ButtonHeight() - style.Scale(1));
    int y = PlaceRow(connectionLabel, idConnection, top, Left(), fieldLeft, browse - style.Gap());
    y = PlaceRow(catalogLabel, idCatalog, y, Left(), fieldLeft, browse - style.Gap());
    y = PlaceRow(nullptr, idAccessFile, y, Left(), fieldLeft, Right());
    PlaceButton(idTalk, PlaceButton(idValidate, fieldLeft, y), y);
    y += style.ButtonHeight() + style.Margin();
    const int resultTop = bottom - style.FieldHeight();
    if (validator) Place(validator->Window(), Left() + 1, y, Right() - 1, resultTop - style.Gap());
    Place(Field(idResult), Left(), resultTop, Right(), bottom);
}

std::vector<MenuEntry> ValidatorPage::Menu() const {
    const bool isThere = validator != nullptr;
    return {{idValidate, L"Va&lidate\tF5", isThere},
            {idTalk, L"Check &talk tables", isThere},
            {},
            {idBrowse, L"&Browse\u2026"}};
}

void ValidatorPage::Command(int id, int notification) {
    if (id == idBrowse && Browse(idConnection)) Validate();
    if (id == idValidate) Validate();
    if (id == idTalk) CheckTalk();
    if ((id == idConnection && notification == EN_CHANGE) || id == idAccessFile) ShowCatalogHint();
}

// An empty catalog field means the one that the connection names; the field shows which that is.
void ValidatorPage::ShowCatalogHint() {
    const std::wstring text = HidePassword(Trim(FieldText(idConnection)));
    const std::wstring meant = Checked(idAccessFile) ? FileOf(text) : CatalogOf(text);
    SetHint(idCatalog, meant.empty() ? L"Taken from the connection" : meant);
}

void ValidatorPage::Start() {
    if (context.options.file.empty()) return;
    SetField(idConnection, context.options.file);
    SendMessageW(Field(idAccessFile), BM_SETCHECK, IsFile(context.options.file) ? BST_CHECKED : BST_UNCHECKED, 0);
    ShowCatalogHint();
    if (context.options.shots.empty()) Validate();
}

void ValidatorPage::Validate() {
    if (!validator) return;
    Run([this] {
        ShowResult(L"Validating\u2026", Tone::Plain);
        const std::wstring text = TakeConnection();
        const bool file = Checked(idAccessFile);
        std::wstring catalog = Trim(FieldText(idCatalog));
        if (catalog.empty()) catalog = file ? FileOf(text) : CatalogOf(text);
        const bool valid =
            Call(*validator, ControlName, L"ValidateDataConnection", {ConnectionFor(text), catalog, file}).Bool();
        ShowResult(DescribeOutcome(validator->Control(), valid), valid ? Tone::Good : Tone::Bad);
    });
}

void ValidatorPage::CheckTalk() {
    if (!validator) return;
    Run([this] {
        const bool talk =
            Call(*validator, ControlName, L"ValidateSupportsTalk", {ConnectionFor(TakeConnection())}).Bool();
        ShowResult(talk ? L"The talk tables are there." : L"There are no talk tables.", Tone::Plain);
    });
}

std::vector<PageState> ValidatorPage::States() {
    std::vector<PageState> states = {{L"start", [] {}}, {L"nofile", [this] {
                                                             SetField(idConnection, L"");
                                                             Validate();
                                                         }}};
    const std::wstring file = context.options.file;
    if (file.empty()) return states;
    states.push_back({L"valid",
                      [this, file] {
                          SetField(idConnection, file);
                          Validate();
                      },
                      {{L"DatabaseValidator", validator->Window()}}});
    states.push_back({L"talk", [this] { CheckTalk(); }});
    if (!IsFile(file)) return states;
    states.push_back({L"missing", [this, file] {
                          SetField(idConnection, file + L".missing");
                          Validate();
                      }});
    return states;
}

} // namespace dax::workbench
