// A lesson of a host's own objects.
#pragma once

#include "FakeDispatch.h"

namespace dax::test {

// Pages, and maps whose pages lie side by side. Every call of every object goes through `before`, which may throw.
struct FakeLesson {
    std::function<void(const std::string& member)> before = [](const std::string&) {};
    std::vector<std::pair<Text, FakeRef>> pages, maps;
    std::map<Text, std::vector<Text>> layouts; // by map
    Text current;
    size_t defaultMap = 0;
    FakeRef lesson = MakeCom<FakeDispatch>(), pageList = MakeCom<FakeDispatch>(), mapList = MakeCom<FakeDispatch>();

    FakeLesson();
    // Two maps: M with a and b, N with c.
    void Fill();
    ~FakeLesson();
    FakeLesson(const FakeLesson&) = delete;
    FakeLesson& operator=(const FakeLesson&) = delete;
    void AddPage(const Text& sbid);
    void AddMap(const Text& name, std::vector<Text> sbids);

private:
    // A member that `before` hears of.
    void Define(const FakeRef& object, const wchar_t* member, FakeDispatch::Member action);
};

} // namespace dax::test
