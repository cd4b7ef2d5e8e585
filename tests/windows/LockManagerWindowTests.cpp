// The lock list's window on a real database, under a user's mouse and keyboard.
#include "locks/win32/LockManagerWindow.h"

#include "data/Schema.h"
#include "support/TestDatabases.h"
#include "windows/HostWindow.h"
#include "windows/ScreenReader.h"
#include "windows/UserInput.h"
#include "windows/WindowCounts.h"

#include <commctrl.h>

#include <memory>

namespace dax::test {

namespace {

// Three locks of ann, two of bob; the titles sort otherwise than the dates.
std::vector<Text> SampleLocks() {
    std::vector<Text> statements = Schema::CreateStatements(Schema::Database::Content, Engine::SQLite);
    const auto lock = [&](const Text& lesson, const Text& title, const Text& user, int hour) {
        statements.push_back(u"INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, lessonType) VALUES "
                             u"('" +
                             lesson + u"', '" + title + u"', '#" + lesson + u"', 1)");
        statements.push_back(u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, "
                             u"lockDate, lockType) VALUES ('" +
                             lesson + u"', '" + user + u"', 'PC-" + user + u"', '10.0.0.1', 's', '2026-03-01 0" +
                             ToText(hour) + u":00:00', 1)");
    };
    lock(u"1", u"Ducks", u"ann", 1);
    lock(u"2", u"Bees", u"bob", 2);
    lock(u"3", u"Ants", u"ann", 5);
    lock(u"4", u"Eels", u"bob", 4);
    lock(u"5", u"Cats", u"ann", 3);
    return statements;
}

struct LockHost {
    explicit LockHost(const Text& connection) : host(900, 400) {
        control->SetAmbient(At(96));
        const SIZE size = control->PreferredSize(96);
        control->Create(host.handle, {0, 0, size.cx, size.cy});
        control->InitProperties();
        LockManager& manager = *control->Manager();
        manager.connectionString = connection;
        manager.username = u"ann";
        manager.SelectionChanged.Add([this](LockDeleteTypes type) { Hear("S" + std::to_string(type)); });
        manager.DeleteRequest.Add([this](LockDeleteTypes type) { Hear("X" + std::to_string(type)); });
        manager.Error.Add([this](int32_t, const Text& description, const Text&, const Text&, int32_t&) {
            Hear("E" + ToUtf8(description));
        });
        SetFocus(control->Handle());
        manager.Refresh();
        ProcessPendingMessages();
        heard.clear();
    }
    void Hear(const std::string& what) { heard += what + " "; }
    std::string Take() { return std::exchange(heard, {}); }
    HWND List() const { return GetWindow(control->Handle(), GW_CHILD); }
    HWND Header() const { return reinterpret_cast<HWND>(SendMessageW(List(), LVM_GETHEADER, 0, 0)); }
    WPARAM Column(TextView key) const { return static_cast<WPARAM>(control->Locks()->ColumnIndex(key)); }

    // As the window answers, from the top; a star at what it says is selected.
    std::string Rows() const {
        std::string rows;
        const auto count = static_cast<WPARAM>(SendMessageW(List(), LVM_GETITEMCOUNT, 0, 0));
        EXPECT_EQ(count, control->Locks()->Items().size());
        for (WPARAM row = 0; row < count; ++row) {
            wchar_t buffer[64] = L"?";
            LVITEMW item{};
            item.pszText = buffer;
            item.cchTextMax = 64;
            SendMessageW(List(), LVM_GETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item));
            const bool isSelected = SendMessageW(List(), LVM_GETITEMSTATE, row, LVIS_SELECTED) != 0;
            EXPECT_EQ(control->Locks()->Items()[row].isSelected, isSelected) << row;
            rows += ToUtf8(FromWide(buffer)) + (isSelected ? "* " : " ");
        }
        return rows;
    }
    // The columns with an arrow: up, or down.
    std::string Arrows() const {
        std::string arrows;
        for (size_t index = 0; index < control->Locks()->Columns().size(); ++index) {
            HDITEMW item{};
            item.mask = HDI_FORMAT;
            SendMessageW(Header(), HDM_GETITEMW, index, reinterpret_cast<LPARAM>(&item));
            const std::string key = ToUtf8(control->Locks()->Columns()[index].key);
            if (item.fmt & HDF_SORTUP) arrows += key + " up ";
            if (item.fmt & HDF_SORTDOWN) arrows += key + " down ";
        }
        return arrows;
    }
    POINT OnHeader(TextView key) const {
        RECT place{};
        SendMessageW(Header(), HDM_GETITEMRECT, Column(key), reinterpret_cast<LPARAM>(&place));
        POINT point{(place.left + place.right) / 2, (place.top + place.bottom) / 2};
        ClientToScreen(Header(), &point);
        return point;
    }
    // In the last column: the whole row selects.
    POINT OnRow(WPARAM row) const {
        RECT place{LVIR_BOUNDS, 0, 0, 0};
        EXPECT_TRUE(SendMessageW(List(), LVM_GETITEMRECT, row, reinterpret_cast<LPARAM>(&place)));
        POINT point{place.right - 8, (place.top + place.bottom) / 2};
        ClientToScreen(List(), &point);
        return point;
    }

    HostWindow host;
    std::unique_ptr<LockManagerWindow> control = std::make_unique<LockManagerWindow>();
    std::string heard;
};

class LockManagerWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        DAX_NEEDS_ENGINE(Engine::SQLite);
        database = std::make_unique<TestDatabase>(Engine::SQLite);
        database->Run(SampleLocks());
    }
    std::unique_ptr<TestDatabase> database;
};

} // namespace

TEST_F(LockManagerWindowTest, HeadersSortAndShowHow) {
    LockHost host(database->ConnectionString());
    UserInput input(host.host.handle);
    EXPECT_EQ(host.Arrows(), "");
    const struct {
        const char16_t* column;
        const char *rows, *arrows;
    } clicks[] = {
        {u"title", "Ants Bees Cats Ducks Eels ", "title up "},
        {u"title", "Eels Ducks Cats Bees Ants ", "title down "},
        {u"lockdate", "Ducks Bees Cats Eels Ants ", "lockdate up "},
        {u"age", "Ants Eels Cats Bees Ducks ", "age down "}, // the same order by nature: only the direction turns
    };
    const auto click = [&](TextView column) { input.Do([&](UserInput& user) { user.Click(host.OnHeader(column)); }); };
    for (const auto& each : clicks) {
        SCOPED_TRACE(ToUtf8(each.column) + " " + each.arrows);
        click(each.column);
        EXPECT_EQ(host.Rows(), each.rows);
        EXPECT_EQ(host.Arrows(), each.arrows);
        EXPECT_EQ(host.Take(), "S1 ");
        const WPARAM column = host.Column(each.column);
        const Text& caption = host.control->Locks()->Columns()[column].caption;
        EXPECT_GE(SendMessageW(host.List(), LVM_GETCOLUMNWIDTH, column, 0),
                  SendMessageW(host.List(), LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(Wide(caption))) + 20)
            << "whole beside the arrow, however narrow the column was";
        SendMessageW(host.List(), LVM_SETCOLUMNWIDTH, host.Column(clicks[(&each - clicks + 1) % 4].column), 30);
    }
    host.control->Manager()->showIdentifier = false;
    host.control->Manager()->RebuildDisplay();
    EXPECT_EQ(host.Arrows(), "") << "and nothing is sorted";
    EXPECT_EQ(SendMessageW(host.Header(), HDM_GETITEMCOUNT, 0, 0), 7);
    click(u"title");
    EXPECT_EQ(host.Arrows(), "title down ") << "in the direction that was left";
    EXPECT_EQ(host.Rows(), "Eels Ducks Cats Bees Ants ");

    // A host that looks at the list while it hears of an error.
    database->Run({u"UPDATE velmoraUserLocks SET username = NULL WHERE lessonID = '2'"});
    std::string seen;
    host.control->Manager()->Error.Add([&](int32_t, const Text&, const Text&, const Text&, int32_t& action) {
        seen += host.Rows() + "| ";
        action = actIgnore;
    });
    click(u"title");
    EXPECT_EQ(seen, "Ants | Ants Bees | ") << "filling the record, and filling the cell";
    EXPECT_EQ(host.Rows(), "Ants Bees Cats Ducks Eels ");
}

TEST_F(LockManagerWindowTest, SeveralRowsAreSelectedAndDeleted) {
    LockHost host(database->ConnectionString());
    UserInput input(host.host.handle);
    input.Do([&](UserInput& user) { user.Click(host.OnHeader(u"title")); });
    host.Take();
    const auto with = [](WORD key, const std::function<void(UserInput&)>& act) {
        return [key, act](UserInput& user) {
            user.KeyDown(key);
            act(user);
            user.KeyUp(key);
        };
    };
    const auto click = [&](WPARAM row) { return [&host, row](UserInput& user) { user.Click(host.OnRow(row)); }; };
    const auto rightClick = [&](WPARAM row) {
        return [&host, row](UserInput& user) { user.RightClick(host.OnRow(row)); };
    };
    const auto type = [](WORD key) { return [key](UserInput& user) { user.Type(key); }; };
    POINT below = host.OnRow(4);
    below.y += 60;
    const struct {
        const char* what;
        std::function<void(UserInput&)> act;
        const char *rows, *heard;
    } cases[] = {
        {"Delete and nothing selected", type(VK_DELETE), "Ants Bees Cats Ducks Eels ", ""},
        {"right click", rightClick(3), "Ants Bees Cats Ducks* Eels ", "S0 "},
        {"click at the end of a row", click(0), "Ants* Bees Cats Ducks Eels ", "S0 "},
        {"Ctrl+click", with(VK_CONTROL, click(2)), "Ants* Bees Cats* Ducks Eels ", "S0 "},
        {"Ctrl+click on another's", with(VK_CONTROL, click(4)), "Ants* Bees Cats* Ducks Eels* ", "S2 "},
        {"Delete", type(VK_DELETE), "Ants* Bees Cats* Ducks Eels* ", "X2 "},
        {"Ctrl+click takes back", with(VK_CONTROL, click(4)), "Ants* Bees Cats* Ducks Eels ", "S0 "},
        {"click", click(1), "Ants Bees* Cats Ducks Eels ", "S2 "},
        {"Shift+click", with(VK_SHIFT, click(3)), "Ants Bees* Cats* Ducks* Eels ", "S2 "},
        {"Shift+Up", with(VK_SHIFT, type(VK_UP)), "Ants Bees* Cats* Ducks Eels ", ""},
        {"a letter", type('E'), "Ants Bees Cats Ducks Eels* ", ""},
        {"click below the rows", [below](UserInput& user) { user.Click(below); }, "Ants Bees Cats Ducks Eels ", "S1 "},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        input.Do(each.act);
        EXPECT_EQ(host.Rows(), each.rows);
        EXPECT_EQ(host.Take(), each.heard);
    }

    // A host that does as it is asked: of what is selected it deletes what it may.
    host.control->Manager()->DeleteRequest.Add([&](LockDeleteTypes) { host.control->Manager()->DeleteSelected(); });
    input.Do([&](UserInput& user) {
        user.Click(host.OnRow(0));
        with(VK_SHIFT, click(2))(user);
        user.Type(VK_DELETE);
    });
    EXPECT_EQ(host.Rows(), "Bees Ducks Eels ");
    EXPECT_EQ(host.Take(), "S0 S2 X2 S1 ");
    EXPECT_EQ(host.control->Manager()->SelectedLockCount(), 0);
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM velmoraUserLocks"), u"3");
    database->Run({u"DELETE FROM velmoraUserLocks WHERE username = 'bob'"});
    input.Do(type(VK_F5));
    EXPECT_EQ(host.Rows(), "Ducks ");
    EXPECT_EQ(host.Take(), "S1 ");
}

// However many rows there are, and whatever they are written in; and soon.
TEST_F(LockManagerWindowTest, ColumnsFitEveryCell) {
    const Text cells[] = {u"W",
                          u"\u00DCberpr\u00FCfung des Plans",
                          u"\u5B9F\u6F14\u30D3\u30C7\u30AA",
                          u"e\u0301te\u0301",
                          u"\u0639\u0631\u0628\u064A\u0629",
                          u"\U0001F600 face"};
    const HostWindow window(900, 400);
    std::vector<LRESULT> widths;
    for (const size_t rows : {6, 1800}) {
        const auto model = std::make_shared<ListModel>();
        model->SetColumns({{u"a", u"a", u""}, {u"b", u"A long caption", u""}});
        for (size_t row = 0; row < rows; ++row) model->AddItem(cells[row % 6]);
        ListViewWindow list(model);
        list.Create(window.handle);
        list.Fit(800, 300);
        model->AutosizeColumns();
        widths.push_back(SendMessageW(list.Handle(), LVM_GETCOLUMNWIDTH, 0, 0));
        for (const Text& cell : cells)
            EXPECT_GE(widths.back(),
                      SendMessageW(list.Handle(), LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(Wide(cell))));
    }
    EXPECT_EQ(widths[0], widths[1]);
    database->Run({u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, lockDate, "
                   u"lockType) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
                   u"SELECT '1', 'J\u00F6rg', 'PC ' || i, '10.0.0.1', 's' || i, '2026-03-01 01:00:00', 1 FROM n"});
    LockHost host(database->ConnectionString());
    ULONGLONG refreshing = ~0ull, rebuilding = ~0ull;
    for (int turn = 0; turn < 3; ++turn) {
        const ULONGLONG start = GetTickCount64();
        host.control->Manager()->Refresh();
        const ULONGLONG between = GetTickCount64();
        host.control->Manager()->RebuildDisplay(true);
        refreshing = std::min(refreshing, between - start);
        rebuilding = std::min(rebuilding, GetTickCount64() - between);
    }
    EXPECT_LT(rebuilding, 3 * refreshing + 50);
}

TEST_F(LockManagerWindowTest, AScreenReaderFindsColumnsAndRows) {
    LockHost host(database->ConnectionString());
    const ListModel& locks = *host.control->Locks();
    const ScreenReader reader(host.List());
    const size_t columns = locks.Columns().size();
    const std::vector<LONG> all = reader.Elements();
    ASSERT_EQ(all.size(), columns + 5);
    for (const LONG& each : all) {
        const size_t index = static_cast<size_t>(&each - all.data());
        EXPECT_EQ(reader.Role(each), index < columns ? ROLE_SYSTEM_COLUMNHEADER : ROLE_SYSTEM_LISTITEM);
        EXPECT_EQ(reader.Name(each),
                  ToUtf8(index < columns ? TextView(locks.Columns()[index].caption) : locks.Cell(index - columns, 0)));
        const RECT place = reader.Place(each);
        EXPECT_EQ(reader.At({place.left + 5, (place.top + place.bottom) / 2}), each);
    }
    const LONG bees = reader.Find(u"Bees"), cats = reader.Find(u"Cats"), ants = reader.Find(u"Ants");
    EXPECT_TRUE(reader.Description(bees).find("; User: bob; ") != std::string::npos) << reader.Description(bees);
    HeardEvents events(reader);
    const struct {
        LONG row, flags;
        const char *selected, *told, *heard;
        HRESULT result = S_OK;
    } cases[] = {
        {bees, SELFLAG_TAKESELECTION | SELFLAG_TAKEFOCUS, "Bees", "focus Bees, add Bees, ", "S2 "},
        {cats, SELFLAG_ADDSELECTION, "Bees Cats", "add Cats, ", "S2 "},
        {bees, SELFLAG_REMOVESELECTION, "Cats", "remove Bees, ", "S0 "},
        {ants, SELFLAG_TAKESELECTION, "Ants", "within, add Ants, ", "S0 "},
        {all[0], SELFLAG_TAKESELECTION, "Ants", "", "", E_INVALIDARG},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        ProcessPendingMessages();
        events.heard.clear();
        EXPECT_EQ(reader.Select(each.row, each.flags), each.result);
        for (const LONG row : {ants, bees, cats})
            EXPECT_EQ(reader.StateWords(row).find(" selected") != std::string::npos,
                      std::string(each.selected).find(reader.Name(row)) != std::string::npos);
        EXPECT_TRUE(UserInput::Await([&] { return events.heard.size() >= std::strlen(each.told); }));
        EXPECT_EQ(events.heard, each.told);
        EXPECT_EQ(host.Take(), each.heard) << "as from a click";
    }
    EXPECT_EQ(reader.StateWords(bees), " focused");
    reader.Select(bees, SELFLAG_ADDSELECTION);
    VARIANT several{};
    EXPECT_EQ(reader->get_accSelection(&several), S_OK);
    EXPECT_EQ(several.vt, VT_UNKNOWN);
    VariantClear(&several);
    database->Run({u"DELETE FROM velmoraUserLocks"});
    host.control->Manager()->Refresh();
    EXPECT_EQ(reader.Elements().size(), columns);
    EXPECT_EQ(reader.Select(bees), E_INVALIDARG);
}

} // namespace dax::test
