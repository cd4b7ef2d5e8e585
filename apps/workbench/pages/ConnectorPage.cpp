#include "pages/ConnectorPage.h"

#include "Machine.h"
#include "ui/Input.h"

#include <algorithm>
#include <commctrl.h>

namespace dax::workbench {

namespace {

constexpr wchar_t validatorName[] = L"DatabaseValidator";
constexpr wchar_t pickerName[] = L"SQLDBPicker";
constexpr wchar_t noValue[] = L"\u2013";
enum Details { detailTitle, detailDescription, detailCatalog, detailLogin, detailRights, detailCount };
constexpr const wchar_t* detailTitles[detailCount] = {L"Title:", L"Description:", L"Catalog:", L"Login:", L"Rights:"};

} // namespace

ConnectorPage::~ConnectorPage() {
    picker.reset();
    validator.reset();
    Destroy();
}

std::wstring ConnectorPage::Explanation() const {
    return L"DatabaseValidator checks the connector for a user; SQLDBPicker lists the catalogs that the user may open.";
}

void ConnectorPage::Build() {
    connectionLabel = AddLabel(L"&Connection:");
    AddEdit(idConnection, L"A connection string, or a database file");
    AddButton(idBrowse, L"&Browse\u2026");
    sourceLabel = AddLabel(L"&Source:");
    AddEdit(idSource);
    catalogLabel = AddLabel(L"C&atalog:");
    AddEdit(idCatalog);
    userLabel = AddLabel(L"&User:");
    AddEdit(idUser, L"A user name as the connector lists it");
    AddButton(idValidate, L"Va&lidate connector", true);
    AddButton(idLoad, L"Loa&d catalogs");
    validator = AddControl(idPanel, false, validatorName, {});
    if (validator) Frame(validator->Window());
    pickerLabel = AddLabel(L"Catalogs (&picker):");
    picker = AddControl(idPicker, true, pickerName,
                        [this](const ControlEvent& event) { ShowSelection(event.Argument(L"Description")); });
    AddCheck(idEnabled, L"&Enabled");
    SendMessageW(Field(idEnabled), BM_SETCHECK, BST_CHECKED, 0);
    for (const wchar_t* title : detailTitles) {
        const HWND label = AddLabel(title);
        details.push_back({label, AddOutput(idLabel)});
        SetWindowTextW(details.back().value, noValue);
    }
    AddButton(idOpen, L"&Open catalog");
    AddButton(idRecord, L"&Record connection");
    AddOutput(idResult);
    EnableWindow(Field(idValidate), validator != nullptr);
    EnableWindow(Field(idOpen), FALSE);
    for (int id : {idLoad, idRecord, idEnabled}) EnableWindow(Field(id), picker != nullptr);
    ShowHints();
}

void ConnectorPage::Arrange(int top, int bottom) {
    const Style& style = context.style;
    const int fieldLeft = Left() + style.TextWidth(L"Catalogs (picker):") + style.Scale(16);
    const int browse = Right() - style.ButtonWidth(FieldText(idBrowse));
    const int fieldRight = browse - style.Gap();
    Place(Field(idBrowse), browse, top - style.Scale(1), Right(), top + style.ButtonHeight() - style.Scale(1));
    const int catalogWidth = style.TextWidth(L"Catalog:") + style.Scale(16);
    const int half = fieldLeft + (fieldRight - fieldLeft - style.Scale(16) - catalogWidth) / 2;
    const int second = half + style.Scale(16);
    int y = PlaceRow(connectionLabel, idConnection, top, Left(), fieldLeft, fieldRight);
    PlaceRow(sourceLabel, idSource, y, Left(), fieldLeft, half);
    y = PlaceRow(catalogLabel, idCatalog, y, second, second + catalogWidth, fieldRight);
    y = PlaceRow(userLabel, idUser, y, Left(), fieldLeft, half);
    PlaceButton(idLoad, PlaceButton(idValidate, fieldLeft, y), y);
    y += style.ButtonHeight() + style.Margin();

    // From the bottom up, so that the panel gets what is left.
    int below = bottom - style.ButtonHeight();
    const int next = PlaceButton(idRecord, PlaceButton(idOpen, Left(), below), below);
    Place(Field(idResult), next, below, Right(), bottom);
    below -= style.Gap();
    const int detailHeight = style.LineHeight() + style.Scale(4);
    for (auto detail = details.rbegin(); detail != details.rend(); ++detail) {
        below -= detailHeight;
        Place(detail->label, Left(), below, fieldLeft, below + detailHeight);
        Place(detail->value, fieldLeft, below, Right(), below + detailHeight);
    }
    below -= style.Gap() + style.FieldHeight();
    const int enabled = Right() - style.TextWidth(L"Enabled") - style.Scale(28);
    if (picker) PlaceRow(pickerLabel, idPicker, below, Left(), fieldLeft, enabled - style.Gap());
    PlaceRow(nullptr, idEnabled, below, Left(), enabled, Right());
    below -= style.Margin();
    if (validator) Place(validator->Window(), Left() + 1, y, Right() - 1, std::max(below, y));
}

std::vector<MenuEntry> ConnectorPage::Menu() const {
    const bool isThere = picker != nullptr;
    return {{idValidate, L"Va&lidate connector\tF5", validator != nullptr},
            {idLoad, L"Loa&d catalogs", isThere},
            {idOpen, L"&Open catalog", IsWindowEnabled(Field(idOpen)) != FALSE},
            {idRecord, L"&Record connection", isThere},
            {},
            {idBrowse, L"&Browse\u2026"}};
}

void ConnectorPage::Command(int id, int notification) {
    if (id == idBrowse) Browse(idConnection);
    if (id == idValidate) Validate();
    if (id == idLoad) Load();
    if (id == idOpen) Open();
    if (id == idRecord) Record();
    if (id == idConnection && notification == EN_CHANGE) ShowHints();
    if (id == idEnabled && notification == BN_CLICKED)
        Run([this] { picker->Control().Set(L"Enabled", Checked(idEnabled)); });
}

// The validator requires a source and a catalog; empty fields mean those that the connection names.
void ConnectorPage::ShowHints() {
    const std::wstring text = HidePassword(Trim(FieldText(idConnection)));
    const std::wstring source = SourceOf(text);
    const std::wstring catalog = CatalogOf(text);
    SetHint(idSource, source.empty() ? L"Taken from the connection" : source);
    SetHint(idCatalog, catalog.empty() ? L"Taken from the connection" : catalog);
}

std::wstring ConnectorPage::Source() const {
    const std::wstring typed = Trim(FieldText(idSource));
    return typed.empty() ? SourceOf(HidePassword(Trim(FieldText(idConnection)))) : typed;
}

std::wstring ConnectorPage::Catalog() const {
    const std::wstring typed = Trim(FieldText(idCatalog));
    return typed.empty() ? CatalogOf(HidePassword(Trim(FieldText(idConnection)))) : typed;
}

void ConnectorPage::Start() {
    SetField(idConnection, context.options.connector);
    SetField(idUser, context.options.user);
    ShowHints();
}

void ConnectorPage::Validate() {
    if (!validator) return;
    Run([this] {
        ShowResult(L"Validating\u2026", Tone::Plain);
        const bool valid = Call(*validator, validatorName, L"ValidateCommonConnection",
                                {ConnectionFor(TakeConnection()), Source(), Catalog(), FieldText(idUser)})
                               .Bool();
        ShowResult(DescribeOutcome(validator->Control(), valid), valid ? Tone::Good : Tone::Bad);
    });
}

void ConnectorPage::Load() {
    if (!picker) return;
    Run([this] {
        const bool loaded =
            Call(*picker, pickerName, L"LoadPicker", {ConnectionFor(TakeConnection()), FieldText(idUser), L""}).Bool();
        if (!loaded) ShowSelection({});
        ShowResult(loaded ? L"Catalogs loaded." : L"The connector lists no such user.",
                   loaded ? Tone::Good : Tone::Bad);
    });
}

// Comes from the control's event too, so it reads properties only.
void ConnectorPage::ShowSelection(const std::wstring& description) {
    if (!picker) return;
    const Automation& control = picker->Control();
    const std::wstring catalog = control.Get(L"DBCatalog").Text();
    std::wstring rights, login;
    if (!catalog.empty()) {
        rights = control.Get(L"IsAdmin").Bool()      ? L"administrator"
                 : control.Get(L"IsReadOnly").Bool() ? L"read only"
                                                     : L"read and write";
        if (control.Get(L"IsSuperuser").Bool()) rights += L" (the user is a super user)";
        login = control.Get(L"DBUsername").Text() +
                (control.Get(L"DBPassword").Text().empty() ? L", without a password" : L", with a password");
    }
    const std::wstring values[detailCount] = {control.Get(L"Title").Text(), description, catalog, login, rights};
    for (size_t i = 0; i < details.size(); ++i)
        SetWindowTextW(details[i].value, values[i].empty() ? noValue : values[i].c_str());
    EnableWindow(Field(idOpen), !catalog.empty());
}

// The other pages work on the catalog from now on.
void ConnectorPage::Open() {
    if (!picker || context.busy) return;
    const Automation& control = picker->Control();
    workbench::Catalog chosen;
    Run([&] {
        const std::wstring source = CatalogOn(control.Get(L"ConnectionString").Text(), control.Get(L"DBCatalog").Text(),
                                              control.Get(L"DBUsername").Text(), control.Get(L"DBPassword").Text());
        chosen = {HidePassword(source), control.Get(L"Title").Text(), control.Get(L"IsAdmin").Bool()};
    });
    if (!chosen.source.empty()) context.openCatalog(chosen);
}

void ConnectorPage::Record() {
    if (!picker) return;
    Run([this] {
        const Machine machine = ThisMachine();
        const bool chosen = !picker->Control().Get(L"DBCatalog").Text().empty();
        Call(*picker, pickerName, L"UpdateConnectionHistory",
             {machine.name, machine.address, machine.system, machine.program});
        ShowResult(chosen ? L"Connection recorded for " + picker->Control().Get(L"Username").Text() + L" on " +
                                machine.name + L"."
                          : L"Nothing recorded: no catalog is chosen.",
                   chosen ? Tone::Good : Tone::Plain);
    });
}

std::vector<PageState> ConnectorPage::States() {
    std::vector<PageState> states = {{L"start", [] {}}};
    if (context.options.connector.empty()) return states;
    states.push_back({L"loaded",
                      [this] {
                          Validate();
                          Load();
                      },
                      {{L"SQLDBPicker", picker->Window()}}});
    states.push_back({L"recorded", [this] { Record(); }});
    states.push_back({L"nouser", [this] {
                          SetField(idUser, L"nobody");
                          Validate();
                          Load();
                      }});
    return states;
}

std::vector<StartStep> ConnectorPage::Steps() {
    return {{1, L"connector", L"the connector is checked for the user", [this] { Validate(); }},
            {2, L"catalog", L"a catalog is picked among those that the user may open", [this] { Load(); }},
            {3, L"validated", L"the catalog is opened with its own login, and checked", [this] { Open(); }},
            {11, L"recorded", L"the connector keeps who opened what, when and from where", [this] { Record(); }}};
}

} // namespace dax::workbench
