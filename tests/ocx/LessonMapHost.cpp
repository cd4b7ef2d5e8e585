#include "LessonMapHost.h"

namespace dax::test {

namespace {

using Arguments = FakeDispatch::Arguments;

FakeDispatch::Member Constant(HostLessonParts& parts, const std::string& name, const std::function<Variant()>& value) {
    return [&parts, name, value](const Arguments&, WORD) {
        parts.before(name);
        return value();
    };
}

template <typename List>
Variant Find(const List& list, const Variant& index) {
    if (index.vt == VT_BSTR) {
        for (const auto& [name, object] : list) {
            if (name == TextOf(index)) return Variant(static_cast<IDispatch*>(object.Get()));
        }
        throw CallFailure{HRESULT(0x800A0005), u"no such element", u""}; // as many collections say it
    }
    const auto place = static_cast<size_t>(NumberOf(index));
    if (place >= list.size()) throw CallFailure{HRESULT(0x800A0009), u"", u""};
    return Variant(static_cast<IDispatch*>(list[place].second.Get()));
}

Text NameOf(const Variant& object, const wchar_t* member) { return GetText(object.pdispVal, member); }

} // namespace

HostLessonParts::HostLessonParts() {
    lesson = FakeDispatch::New();
    pageList = FakeDispatch::New();
    mapList = FakeDispatch::New();
    lesson->members[L"Maps"] = Constant(*this, "Maps", [this] { return ObjectVariant(mapList.Get()); });
    lesson->members[L"Storyboards"] = Constant(*this, "Storyboards", [this] { return ObjectVariant(pageList.Get()); });
    lesson->members[L"CurrentSBID"] = [this](const Arguments& arguments, WORD kind) {
        before("CurrentSBID");
        if (IsPut(kind)) current = TextOf(arguments.at(0));
        return Variant(TextView(current));
    };
    pageList->members[L"Count"] =
        Constant(*this, "Pages.Count", [this] { return Variant(static_cast<int32_t>(pages.size())); });
    pageList->members[L"Item"] = [this](const Arguments& arguments, WORD) {
        before("Pages.Item");
        return Find(pages, arguments.at(0));
    };
    pageList->members[L"Add"] = [this](const Arguments& arguments, WORD) {
        before("Pages.Add");
        ComPtr<FakeDispatch> added(static_cast<FakeDispatch*>(arguments.at(0).pdispVal)); // the tests add nothing else
        pages.emplace_back(NameOf(arguments.at(0), L"SBID"), added);
        return Variant();
    };
    pageList->members[L"Remove"] = [this](const Arguments& arguments, WORD) {
        before("Pages.Remove");
        std::erase_if(pages, [&](const auto& page) { return page.first == TextOf(arguments.at(0)); });
        return Variant();
    };
    mapList->members[L"Count"] =
        Constant(*this, "Maps.Count", [this] { return Variant(static_cast<int32_t>(maps.size())); });
    mapList->members[L"Item"] = [this](const Arguments& arguments, WORD) {
        before("Maps.Item");
        return Find(maps, arguments.at(0));
    };
    mapList->members[L"DefaultMap"] = [this](const Arguments& arguments, WORD kind) {
        before("DefaultMap");
        if (IsPut(kind)) {
            for (size_t i = 0; i < maps.size(); ++i) {
                if (maps[i].second.Get() == arguments.at(0).pdispVal) defaultMap = i;
            }
        }
        return defaultMap < maps.size() ? ObjectVariant(maps[defaultMap].second.Get()) : Variant();
    };
}

HostLessonParts::~HostLessonParts() {
    for (const auto& list : {pages, maps}) {
        for (const auto& [name, object] : list) object->members.clear();
    }
    for (const auto& thing : {lesson, pageList, mapList}) thing->members.clear();
}

void HostLessonParts::AddPage(const Text& sbid) {
    auto page = FakeDispatch::New();
    page->members[L"SBID"] = Constant(*this, "SBID", [sbid] { return Variant(TextView(sbid)); });
    page->members[L"Title"] = Constant(*this, "Title", [sbid] { return Variant(TextView(u"title " + sbid)); });
    page->members[L"Identifier"] = Constant(*this, "Identifier", [sbid] { return Variant(TextView(u"id " + sbid)); });
    page->members[L"StoryboardType"] = Constant(*this, "StoryboardType", [] { return Variant(u"Text"); });
    pages.emplace_back(sbid, std::move(page));
}

void HostLessonParts::AddMap(const Text& name, std::vector<Text> sbids) {
    auto map = FakeDispatch::New();
    const auto held = std::make_shared<Text>(name);
    layouts[name] = std::move(sbids);
    map->members[L"Name"] = [this, held](const Arguments& arguments, WORD kind) {
        before("Name");
        if (IsPut(kind)) {
            auto layout = layouts.extract(*held);
            *held = TextOf(arguments.at(0));
            if (layout) layout.key() = *held;
            layouts.insert(std::move(layout));
        }
        return Variant(TextView(*held));
    };
    map->members[L"FillTree"] = [this, held](const Arguments& arguments, WORD) {
        before("FillTree");
        for (const Text& sbid : layouts[*held])
            Call(arguments.at(0).pdispVal, L"Add",
                 {arguments.at(1), Variant(4), Variant(TextView(sbid)), Variant(u"?")});
        return Variant();
    };
    map->members[L"ReadLayout"] = [this, held](const Arguments& arguments, WORD) {
        before("ReadLayout");
        std::vector<Text> read;
        for (auto node = Get(arguments.at(0).pdispVal, L"Child"); node; node = Get(node.Get(), L"Next"))
            read.push_back(GetText(node.Get(), L"Key"));
        layouts[*held] = std::move(read);
        return Variant();
    };
    maps.emplace_back(name, std::move(map));
}

} // namespace dax::test
