#include "controls/ComboBox.h"
#include "controls/Event.h"
#include "controls/ListModel.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace dax {

TEST(Event, ListenersMayComeGoAndRaiseWhileItIsRaised) {
    Event<std::string&> event;
    Subscription second;
    bool isNested = false;
    event.AddPermanent([&](std::string& received) {
        received += 'a';
        second = {};
        event.AddPermanent([](std::string& later) { later += 'c'; });
        if (!std::exchange(isNested, true)) event.Raise(received);
    });
    second = event.Add([](std::string& received) { received += 'b'; });
    std::string received;
    event.Raise(received);
    // The second listener was removed before its turn; those added receive only the events raised afterwards.
    EXPECT_EQ(received, "aac");
}

TEST(Event, AListenerMayDestroyItsOwner) {
    auto event = std::make_unique<Event<>>();
    int calls = 0;
    event->AddPermanent([&] {
        ++calls;
        event.reset();
    });
    event->AddPermanent([&] { calls += 100; });
    event->Raise();
    EXPECT_EQ(calls, 1);
}

TEST(ComboBox, FindsTheFirstExactEntry) {
    ComboBox list;
    EXPECT_EQ(modGeneric::FindComboIndex(list, u"b"), -1);
    for (const Text item : {u"a", u"B", u"b", u"b"}) list.AddItem(item);
    for (const auto& [text, index] : {std::pair(u"a", 0), {u"b", 2}, {u"", -1}})
        EXPECT_EQ(modGeneric::FindComboIndex(list, text), index);
    int clicks = 0;
    list.Click.AddPermanent([&clicks] { ++clicks; });
    for (const auto& [index, selected] : {std::pair(0, 0), {4, -1}, {3, 3}, {-1, -1}, {3, 3}}) {
        list.SetListIndex(index);
        EXPECT_EQ(list.ListIndex(), selected);
    }
    list.Clear();
    EXPECT_EQ(list.ListIndex(), -1);
    EXPECT_EQ(list.ListCount(), 0);
    EXPECT_EQ(clicks, 5);
}

TEST(ListModel, NotifiesItsWindowOfEveryChange) {
    struct Window : ListModelListener {
        void ColumnsChanged() override { calls += "columns "; }
        void ItemsChanged() override { calls += "items "; }
        void AutosizeColumns() override { calls += "widths "; }
        std::string calls;
    } window;
    ListModel list;
    list.SetListener(&window);
    list.SetColumns({{u"x", {}, {}}, {u"y", {}, {}}, {u"z", {}, {}}});
    for (const auto& [key, index] : {std::pair(u"z", 2), {u"x", 0}, {u"w", -1}, {u"y", 1}, {u"z", 2}})
        EXPECT_EQ(list.ColumnIndex(key), index);
    for (const size_t index : {0, 1}) EXPECT_EQ(list.AddItem(u"a"), index);
    list.SetCell(1, 0, u"c");
    list.SetCell(0, 1, u"f");
    list.SetCell(0, 3, u"g"); // a column more than the list has
    list.SetCell(1, 2, u"d");
    list.SetCell(1, -1, u"nothing");
    EXPECT_EQ(std::exchange(window.calls, {}), "columns items items items items items items ");
    const std::function<void()> silentChanges[] = {[&] { list.SetTag(1, 7); }, [&] { list.SetMark(1, u"m"); },
                                                   [&] { list.SetSelected(1, true); }, [&] { list.BeginFilling(); },
                                                   [&] { list.AddItem(u"e"); }};
    for (const auto& change : silentChanges) {
        const uint64_t before = list.Revision();
        change();
        EXPECT_EQ(list.Revision() > before, &change != &silentChanges[3]) << &change - silentChanges;
        EXPECT_EQ(window.calls, "");
    }
    list.EndFilling();
    list.AutosizeColumns();
    EXPECT_EQ(std::exchange(window.calls, {}), "items widths ");
    Text cells;
    for (size_t item = 0; item < 4; ++item) {
        for (size_t column = 0; column < 4; ++column) cells.append(list.Cell(item, column)) += u',';
    }
    EXPECT_EQ(cells, u"a,f,,g,c,,d,,e,,,,,,,,");
    list.ClearItems();
    EXPECT_EQ(window.calls, "items ");
    EXPECT_TRUE(list.Items().empty() && list.Cell(0, 0).empty());
}

TEST(ListModel, KeepsManyAndLongTextsEachTimeItIsFilled) {
    ListModel list;
    const auto text = [](int i) { return ToText(i) + Text(i % 1000 == 999 ? 20'000 : 0, u'l'); };
    for (int round = 0; round < 3; ++round) {
        list.ClearItems();
        for (int i = 0; i < 10'000; ++i) list.AddItem(text(i));
        for (int i = 0; i < 10'000; ++i) ASSERT_EQ(list.Cell(static_cast<size_t>(i), 0), text(i));
    }
}

} // namespace dax
