#include "FakeLesson.h"

namespace dax::test {

namespace {

using Arguments = FakeDispatch::Arguments;

template <typename List>
Variant Find(const List& list, const Variant& index) {
    if (index.vt == VT_BSTR) {
        for (const auto& [name, object] : list) {
            if (name == TextOf(index)) return object;
        }
        throw CallFailure{HRESULT(0x800A0005), u"no such element", u""}; // as many collections report it
    }
    const auto place = static_cast<size_t>(NumberOf(index));
    if (place >= list.size()) throw CallFailure{HRESULT(0x800A0009), u"", u""};
    return list[place].second;
}

} // namespace

void FakeLesson::Define(const FakeRef& object, const wchar_t* member, FakeDispatch::Member action) {
    object->members[member] = [this, name = ToUtf8(FromWide(member)), action](const Arguments& arguments) {
        before(name);
        return action(arguments);
    };
}

FakeLesson::FakeLesson() {
    Define(lesson, L"Maps", [this](const auto&) { return mapList; });
    Define(lesson, L"Storyboards", [this](const auto&) { return pageList; });
    Define(lesson, L"CurrentSBID", [this](const auto& arguments) {
        if (!arguments.empty()) current = TextOf(arguments[0]);
        return current;
    });
    Define(pageList, L"Count", [this](const auto&) { return static_cast<int>(pages.size()); });
    Define(pageList, L"Item", [this](const auto& arguments) { return Find(pages, arguments.at(0)); });
    Define(pageList, L"Add", [this](const auto& arguments) {
        const FakeRef added(static_cast<FakeDispatch*>(arguments.at(0).pdispVal)); // the tests add nothing else
        pages.emplace_back(GetText(added, L"SBID"), added);
        return Variant();
    });
    Define(pageList, L"Remove", [this](const auto& arguments) {
        std::erase_if(pages, [&](const auto& page) { return page.first == TextOf(arguments.at(0)); });
        return Variant();
    });
    Define(mapList, L"Count", [this](const auto&) { return static_cast<int>(maps.size()); });
    Define(mapList, L"Item", [this](const auto& arguments) { return Find(maps, arguments.at(0)); });
    Define(mapList, L"DefaultMap", [this](const auto& arguments) {
        for (size_t i = 0; i < maps.size() && !arguments.empty(); ++i) {
            if (maps[i].second.Get() == arguments[0].pdispVal) defaultMap = i;
        }
        return defaultMap < maps.size() ? Variant(maps[defaultMap].second) : Variant();
    });
}

void FakeLesson::Fill() {
    for (const char16_t* sbid : {u"a", u"b", u"c"}) AddPage(sbid);
    AddMap(u"M", {u"a", u"b"});
    AddMap(u"N", {u"c"});
}

FakeLesson::~FakeLesson() {
    for (const auto& list : {pages, maps}) {
        for (const auto& [name, object] : list) object->members.clear();
    }
    for (const auto& object : {lesson, pageList, mapList}) object->members.clear();
}

void FakeLesson::AddPage(const Text& sbid) {
    const auto page = MakeCom<FakeDispatch>();
    Define(page, L"SBID", [sbid](const auto&) { return sbid; });
    Define(page, L"Title", [sbid](const auto&) { return u"title " + sbid; });
    Define(page, L"Identifier", [sbid](const auto&) { return u"id " + sbid; });
    Define(page, L"StoryboardType", [](const auto&) { return u"Text"; });
    pages.emplace_back(sbid, page);
}

void FakeLesson::AddMap(const Text& name, std::vector<Text> sbids) {
    const auto map = MakeCom<FakeDispatch>();
    const auto held = std::make_shared<Text>(name);
    layouts[name] = std::move(sbids);
    Define(map, L"Name", [this, held](const auto& arguments) {
        if (!arguments.empty()) {
            auto layout = layouts.extract(*held);
            *held = TextOf(arguments[0]);
            if (layout) layout.key() = *held;
            layouts.insert(std::move(layout));
        }
        return *held;
    });
    Define(map, L"FillTree", [this, held](const auto& arguments) {
        for (const Text& sbid : layouts[*held])
            Call(arguments.at(0).pdispVal, L"Add", {arguments.at(1), 4, sbid, u"?"});
        return Variant();
    });
    Define(map, L"ReadLayout", [this, held](const auto& arguments) {
        std::vector<Text> read;
        for (auto node = Get(arguments.at(0).pdispVal, L"Child"); node; node = Get(node, L"Next"))
            read.push_back(GetText(node, L"Key"));
        layouts[*held] = std::move(read);
        return Variant();
    });
    maps.emplace_back(name, map);
}

} // namespace dax::test
