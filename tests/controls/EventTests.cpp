#include "controls/ComboBox.h"
#include "controls/Event.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace dax {

TEST(Event, ListenersMayComeGoAndRaiseWhileItIsRaised) {
    Event<std::string&> event;
    size_t second = 0;
    bool isNested = false;
    event.Add([&](std::string& heard) {
        heard += 'a';
        event.Remove(second);
        event.Add([](std::string& later) { later += 'c'; });
        if (!std::exchange(isNested, true)) event.Raise(heard);
    });
    second = event.Add([](std::string& heard) { heard += 'b'; });
    std::string heard;
    event.Raise(heard);
    // The second listener was removed before its turn; those added hear only the events raised afterwards.
    EXPECT_EQ(heard, "aac");
}

TEST(Event, AListenerMayDestroyItsOwner) {
    auto event = std::make_unique<Event<>>();
    int calls = 0;
    event->Add([&] {
        ++calls;
        event.reset();
    });
    event->Add([&] { calls += 100; });
    event->Raise();
    EXPECT_EQ(calls, 1);
}

TEST(ComboBox, FindsTheFirstExactEntry) {
    MemoryComboBox list;
    EXPECT_EQ(modGeneric::FindComboIndex(list, u"b"), -1);
    for (const Text item : {u"a", u"B", u"b", u"b"}) list.AddItem(item);
    EXPECT_EQ(modGeneric::FindComboIndex(list, u"b"), 2);
    EXPECT_EQ(modGeneric::FindComboIndex(list, u""), -1);
    int clicks = 0;
    list.Click.Add([&clicks] { ++clicks; });
    list.SetListIndex(9);
    EXPECT_EQ(list.ListIndex(), -1);
    list.SetListIndex(3);
    list.Clear();
    EXPECT_EQ(list.ListIndex(), -1);
    EXPECT_EQ(clicks, 2);
}

} // namespace dax
