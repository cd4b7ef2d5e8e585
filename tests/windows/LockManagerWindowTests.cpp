// The lock list's window on a real database, under a user's mouse and keyboard.
#include "hierarchy/EditorFixture.h"
#include "locks/win32/LockManagerWindow.h"
#include "windows/HostWindow.h"
#include "windows/ScreenReader.h"

#include <gmock/gmock.h>

namespace dax::test {

namespace {

struct LockHost {
    LockHost() {
        CreateTables(database);
        // Three locks of ann, two of bob; the titles sort otherwise than the dates.
        int hour = 0;
        for (const Text title : {u"Ducks", u"Bees", u"Cats", u"Eels", u"Ants"}) {
            const Text user = ++hour % 2 ? u"'ann'" : u"'bob'", date = u"'2026-03-01 0" + ToText(hour) + u":00:00'";
            database.Run({RowStatement(title, title, u"", 1, hour, 1), LockStatement(title, user, 1, u"s", date)});
        }
        control->Create(host.handle, {0, 0, 760, 240});
        control->InitProperties();
        manager.connectionString = database.ConnectionString();
        manager.username = u"ann";
        manager.SelectionChanged.AddPermanent(
            [this](LockDeleteTypes type) { received += "S" + std::to_string(type) + " "; });
        manager.DeleteRequest.AddPermanent(
            [this](LockDeleteTypes type) { received += "X" + std::to_string(type) + " "; });
        SetFocus(control->Handle());
        manager.Refresh();
        ProcessPendingMessages();
        received.clear();
    }
    void Do(const std::function<void(UserInput&)>& script) { UserInput(host.handle).Do(script); }
    void ClickHeader(TextView key) {
        Do([&](UserInput& user) { user.Click(OnHeader(key)); });
    }
    std::string Take() { return std::exchange(received, {}); }
    LRESULT Send(UINT message, WPARAM wParam = 0, const void* lParam = nullptr) const {
        return SendMessageW(List(), message, wParam, reinterpret_cast<LPARAM>(lParam));
    }
    HWND List() const { return GetWindow(control->Handle(), GW_CHILD); }
    HWND Header() const { return reinterpret_cast<HWND>(Send(LVM_GETHEADER)); }
    WPARAM Column(TextView key) const { return static_cast<WPARAM>(control->Locks()->ColumnIndex(key)); }

    // As the window reports, from the top; a star at what is selected.
    std::string Rows() const {
        std::string rows;
        const auto count = static_cast<WPARAM>(Send(LVM_GETITEMCOUNT));
        EXPECT_EQ(count, control->Locks()->Items().size());
        for (WPARAM row = 0; row < count; ++row) {
            wchar_t buffer[64] = L"?";
            LVITEMW item{};
            item.pszText = buffer;
            item.cchTextMax = 64;
            Send(LVM_GETITEMTEXTW, row, &item);
            const bool isSelected = Send(LVM_GETITEMSTATE, row, reinterpret_cast<void*>(LVIS_SELECTED)) != 0;
            EXPECT_EQ(control->Locks()->Items()[row].isSelected, isSelected) << row;
            rows += ToUtf8(FromWide(buffer)) + (isSelected ? "* " : " ");
        }
        return rows;
    }
    // HDF_SORTUP, HDF_SORTDOWN or 0.
    int ArrowOf(TextView key) const {
        HDITEMW item{};
        item.mask = HDI_FORMAT;
        SendMessageW(Header(), HDM_GETITEMW, Column(key), reinterpret_cast<LPARAM>(&item));
        return item.fmt & (HDF_SORTUP | HDF_SORTDOWN);
    }
    POINT OnHeader(TextView key) const {
        RECT place{};
        SendMessageW(Header(), HDM_GETITEMRECT, Column(key), reinterpret_cast<LPARAM>(&place));
        POINT point{(place.left + place.right) / 2, (place.top + place.bottom) / 2};
        ClientToScreen(Header(), &point);
        return point;
    }
    // In the last column: the whole row selects. So far below it.
    POINT OnRow(WPARAM row, LONG below = 0) const {
        RECT place{LVIR_BOUNDS, 0, 0, 0};
        EXPECT_TRUE(Send(LVM_GETITEMRECT, row, &place));
        POINT point{place.right - 8, (place.top + place.bottom) / 2 + below};
        ClientToScreen(List(), &point);
        return point;
    }

    const TestDatabase database{Engine::SQLite};
    HostWindow host{900, 400};
    std::unique_ptr<LockManagerWindow> control = std::make_unique<LockManagerWindow>();
    LockManager& manager = *control->Manager();
    std::string received;
};

} // namespace

TEST(LockManagerWindow, HeadersSortAndShowHow) {
    LockHost host;
    const struct {
        const char16_t* column;
        const char* rows;
        int arrow;
    } clicks[] = {
        {u"title", "Ants Bees Cats Ducks Eels ", HDF_SORTUP},
        {u"title", "Eels Ducks Cats Bees Ants ", HDF_SORTDOWN},
        {u"lockdate", "Ducks Bees Cats Eels Ants ", HDF_SORTUP},
        {u"age", "Ants Eels Cats Bees Ducks ", HDF_SORTDOWN}, // the same order: only the direction is reversed
    };
    for (const auto& each : clicks) {
        SCOPED_TRACE(ToUtf8(each.column));
        const WPARAM column = host.Column(each.column);
        host.Send(LVM_SETCOLUMNWIDTH, column, reinterpret_cast<void*>(30));
        host.ClickHeader(each.column);
        EXPECT_EQ(host.Rows(), each.rows);
        EXPECT_EQ(host.ArrowOf(each.column), each.arrow);
        EXPECT_EQ(host.Take(), "S1 ");
        EXPECT_GE(host.Send(LVM_GETCOLUMNWIDTH, column),
                  host.Send(LVM_GETSTRINGWIDTHW, 0, Wide(host.control->Locks()->Columns()[column].caption)) + 20)
            << "whole beside the arrow, however narrow the column was";
    }
    EXPECT_EQ(host.ArrowOf(u"title"), 0);
    host.manager.showIdentifier = false;
    host.manager.RebuildDisplay();
    EXPECT_EQ(host.ArrowOf(u"age"), 0) << "and nothing is sorted";
    EXPECT_EQ(SendMessageW(host.Header(), HDM_GETITEMCOUNT, 0, 0), 7);
}

TEST(LockManagerWindow, SeveralRowsAreSelectedAndDeleted) {
    LockHost host;
    host.ClickHeader(u"title");
    host.Take();
    using Script = std::function<void(UserInput&)>;
    const auto with = [](WORD key, const Script& act) {
        return [key, act](UserInput& user) {
            user.KeyDown(key);
            act(user);
            user.KeyUp(key);
        };
    };
    const auto click = [&](WPARAM row) { return [&host, row](UserInput& user) { user.Click(host.OnRow(row)); }; };
    const auto type = [](WORD key) { return [key](UserInput& user) { user.Type(key); }; };
    const struct {
        const char* what;
        Script act;
        const char *rows, *received;
    } cases[] = {
        {"Delete and nothing selected", type(VK_DELETE), "Ants Bees Cats Ducks Eels ", ""},
        {"right click", [&](UserInput& user) { user.RightClick(host.OnRow(3)); }, "Ants Bees Cats Ducks* Eels ", "S0 "},
        {"click at the end of a row", click(0), "Ants* Bees Cats Ducks Eels ", "S0 "},
        {"Ctrl+click", with(VK_CONTROL, click(2)), "Ants* Bees Cats* Ducks Eels ", "S0 "},
        {"Ctrl+click on another's", with(VK_CONTROL, click(4)), "Ants* Bees Cats* Ducks Eels* ", "S2 "},
        {"Delete", type(VK_DELETE), "Ants* Bees Cats* Ducks Eels* ", "X2 "},
        {"Ctrl+click takes back", with(VK_CONTROL, click(4)), "Ants* Bees Cats* Ducks Eels ", "S0 "},
        {"click", click(1), "Ants Bees* Cats Ducks Eels ", "S2 "},
        {"Shift+click", with(VK_SHIFT, click(3)), "Ants Bees* Cats* Ducks* Eels ", "S2 "},
        {"Shift+Up", with(VK_SHIFT, type(VK_UP)), "Ants Bees* Cats* Ducks Eels ", ""},
        {"a letter", type('E'), "Ants Bees Cats Ducks Eels* ", ""},
        {"below the rows", [&](UserInput& user) { user.Click(host.OnRow(4, 60)); }, "Ants Bees Cats Ducks Eels ",
         "S1 "},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        host.Do(each.act);
        EXPECT_EQ(host.Rows(), each.rows);
        EXPECT_EQ(host.Take(), each.received);
    }

    // A host that handles the request: of what is selected it deletes what it may.
    host.manager.DeleteRequest.AddPermanent([&](LockDeleteTypes) { host.manager.DeleteSelected(); });
    host.Do([&](UserInput& user) {
        click(0)(user);
        with(VK_SHIFT, click(2))(user);
        user.Type(VK_DELETE);
    });
    EXPECT_EQ(host.Rows(), "Bees Ducks Eels ");
    EXPECT_EQ(host.Take(), "S0 S2 X2 S1 ");
    EXPECT_EQ(host.database.Query(u"SELECT Count(*) FROM velmoraUserLocks"), u"3");
    host.database.Run({u"DELETE FROM velmoraUserLocks WHERE username = 'bob'"});
    host.Do(type(VK_F5));
    EXPECT_EQ(host.Rows(), "Ducks ");
}

// Among many rows, and quickly.
TEST(LockManagerWindow, ColumnsFitEveryCell) {
    LockHost host;
    const Text titles[] = {u"W", u"\u00DCberpr\u00FCfung", u"\u5B9F\u6F14", u"e\u0301te\u0301", u"\u0639\u0631\u0628"};
    for (const Text& title : titles)
        host.database.Run(
            {u"UPDATE velmoraLessons SET lessonTitle = '" + title + title + title +
             u"' WHERE lessonID = (SELECT Min(lessonID) FROM velmoraLessons WHERE lessonTitle = lessonID)"});
    host.database.Run(
        {u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, lockDate, "
         u"lockType) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
         u"SELECT 'none', 'J\u00F6rg', 'PC ' || i, '10.0.0.1', 's' || i, '2026-03-01 01:00:00', 1 FROM n"});
    const double refreshing = Fastest([&](int) { host.manager.Refresh(); });
    EXPECT_LT(Fastest([&](int) { host.manager.RebuildDisplay(true); }), 8 * refreshing + 100);
    for (size_t row = 0; row < 5; ++row)
        EXPECT_GE(host.Send(LVM_GETCOLUMNWIDTH),
                  host.Send(LVM_GETSTRINGWIDTHW, 0, Wide(Text(host.control->Locks()->Cell(row, 0)))));
}

TEST(LockManagerWindow, AScreenReaderFindsColumnsAndRows) {
    LockHost host;
    const ScreenReader reader(host.List());
    EXPECT_THAT(reader.DescribeAll(),
                testing::ElementsAre(" Title", " Identifier", " Lock Type", " Lock Date", " Lock Age", " User",
                                     " Machine", " IP Address", " Ducks", " Bees", " Cats", " Eels", " Ants"));
    const std::vector<LONG> all = reader.Elements();
    for (const LONG& each : all) {
        EXPECT_EQ(reader.Role(each), &each - all.data() < 8 ? ROLE_SYSTEM_COLUMNHEADER : ROLE_SYSTEM_LISTITEM);
        const RECT place = reader.Place(each);
        EXPECT_EQ(reader.At({place.left + 5, (place.top + place.bottom) / 2}), each);
    }
    const LONG bees = reader.Find(u"Bees"), cats = reader.Find(u"Cats");
    EXPECT_THAT(reader.Description(bees), testing::HasSubstr(L"; User: bob; "));
    const std::tuple<LONG, LONG, const char*, const char*> cases[] = {
        {bees, SELFLAG_TAKESELECTION | SELFLAG_TAKEFOCUS, "Ducks Bees* Cats Eels Ants ", "S2 "},
        {cats, SELFLAG_ADDSELECTION, "Ducks Bees* Cats* Eels Ants ", "S2 "},
        {bees, SELFLAG_REMOVESELECTION, "Ducks Bees Cats* Eels Ants ", "S0 "},
    };
    for (const auto& [row, flags, rows, received] : cases) {
        EXPECT_EQ(reader.Select(row, flags), S_OK);
        EXPECT_EQ(host.Rows(), rows);
        EXPECT_EQ(host.Take(), received) << "as from a click";
    }
    EXPECT_EQ(reader.Select(all[0]), E_INVALIDARG) << "a caption";
    EXPECT_EQ(reader.Describe(bees), " Bees focused");
    EXPECT_EQ(reader.Describe(cats), " Cats selected");
    host.database.Run({u"DELETE FROM velmoraUserLocks"});
    host.manager.Refresh();
    EXPECT_EQ(reader.Elements().size(), 8u) << "the captions";
    EXPECT_EQ(reader.Select(bees), E_INVALIDARG);
}

} // namespace dax::test
