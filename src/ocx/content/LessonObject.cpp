// A lesson and its collections.
#include "ocx/content/LessonObject.h"

#include "base/Error.h"
#include "com/Enumerator.h"
#include "com/Forwarding.h"
#include "content/LessonText.h"

namespace dax {

namespace {

// What a lesson and its collections share: a collection that a host holds follows when a text is loaded.
struct LessonState {
    std::shared_ptr<ContentLesson> lesson = std::make_shared<ContentLesson>();
};
using LessonStateRef = std::shared_ptr<LessonState>;

// Of the classes that only a lesson makes.
const ClassEntry storyboardsEntry{&CLSID_Storyboards, &IID__Storyboards, nullptr, L"Storyboards", L"", nullptr, 0};
const ClassEntry mapsEntry{&CLSID_StoryboardMaps, &IID__StoryboardMaps, nullptr, L"StoryboardMaps", L"", nullptr, 0};

class StoryboardsObject final : public Forwarding<DualObject<_Storyboards>, Storyboards> {
public:
    explicit StoryboardsObject(LessonStateRef state) : Forwarding(storyboardsEntry), state(std::move(state)) {}

    STDMETHODIMP get_Count(LONG* value) override { return Get(value, &Core::Count); }
    STDMETHODIMP get_Item(BSTR sbid, IDispatch** value) override { return Get(value, &Core::Item, sbid); }
    STDMETHODIMP Add(IDispatch* storyboard) override {
        return Call([&] {
            const auto held = WrapStoryboard(storyboard);
            Target().Add(held);
        });
    }
    STDMETHODIMP Remove(BSTR sbid) override {
        return Call([&] {
            const auto collection = state->lesson->Storyboards(); // the storyboard's destruction may call back
            collection->Remove(FromBstr(sbid));
        });
    }
    STDMETHODIMP get__NewEnum(IUnknown** value) override {
        return Get(value, [this] {
            std::vector<ComPtr<IDispatch>> objects;
            for (const auto& each : Target().All()) objects.emplace_back(HostObjectOf(each));
            return EnumerateVariants(std::move(objects));
        });
    }

private:
    Core& Target() const override { return *state->lesson->Storyboards(); }

    const LessonStateRef state;
};

class MapsObject final : public Forwarding<DualObject<_StoryboardMaps>, StoryboardMaps> {
public:
    explicit MapsObject(LessonStateRef state) : Forwarding(mapsEntry), state(std::move(state)) {}

    STDMETHODIMP get_Count(LONG* value) override { return Get(value, &Core::Count); }
    STDMETHODIMP get_Item(VARIANT indexOrName, IDispatch** value) override {
        return Get(value, [&] {
            const Value requested = ToValue(indexOrName);
            if (const auto* name = std::get_if<Text>(&requested)) return Maps()->Item(*name);
            const Value number = ToValue(indexOrName, int64_t{});
            const auto* index = std::get_if<int64_t>(&number);
            if (!index) throw Error(ErrorNumbers::TypeMismatch, u"A map is given by its number or its name.");
            return Maps()->Item(static_cast<int32_t>(*index));
        });
    }
    STDMETHODIMP Add(IDispatch* map) override {
        return Call([&] { Maps()->Add(WrapMap(map)); });
    }
    STDMETHODIMP get_DefaultMap(IDispatch** value) override { return Get(value, &Core::DefaultMap); }
    STDMETHODIMP put_DefaultMap(IDispatch* value) override { return putref_DefaultMap(value); }
    STDMETHODIMP putref_DefaultMap(IDispatch* value) override {
        return Call([&] { Maps()->SetDefaultMap(value ? WrapMap(value) : nullptr); });
    }
    STDMETHODIMP get__NewEnum(IUnknown** value) override {
        return Get(value, [this] {
            const auto maps = Maps();
            std::vector<ComPtr<IDispatch>> objects;
            objects.reserve(static_cast<size_t>(maps->Count()));
            for (int32_t i = 0; i < maps->Count(); ++i) objects.emplace_back(HostObjectOf(maps->Item(i)));
            return EnumerateVariants(std::move(objects));
        });
    }

private:
    Core& Target() const override { return *state->lesson->Maps(); }
    std::shared_ptr<StoryboardMaps> Maps() const { return state->lesson->Maps(); }

    const LessonStateRef state;
};

// A lesson read from a text, with an automation object for each of its parts.
std::shared_ptr<ContentLesson> WithObjects(const ContentLesson& read) {
    const auto lesson = std::make_shared<ContentLesson>();
    for (const auto& each : read.Storyboards()->All()) {
        lesson->Storyboards()->Add(WrapNewStoryboard(std::dynamic_pointer_cast<ContentStoryboard>(each)));
    }
    for (int32_t i = 0; i < read.Maps()->Count(); ++i) {
        const auto map = read.Maps()->Item(i);
        const auto held = WrapNewMap(std::dynamic_pointer_cast<ContentMap>(map));
        lesson->Maps()->Add(held);
        if (map == read.Maps()->DefaultMap()) lesson->Maps()->SetDefaultMap(held);
    }
    lesson->SetCurrentSBID(read.CurrentSBID());
    return lesson;
}

class LessonObject final : public Forwarding<DualObject<_Lesson>, ContentLesson> {
public:
    explicit LessonObject(const ClassEntry& entry) : Forwarding(entry) {}

    STDMETHODIMP get_Maps(_StoryboardMaps** value) override {
        return Get(value, [this] { return new MapsObject(state); });
    }
    STDMETHODIMP get_Storyboards(_Storyboards** value) override {
        return Get(value, [this] { return new StoryboardsObject(state); });
    }
    STDMETHODIMP get_CurrentSBID(BSTR* value) override { return Get(value, &Core::CurrentSBID); }
    STDMETHODIMP put_CurrentSBID(BSTR value) override { return Put(&Core::SetCurrentSBID, value); }
    STDMETHODIMP Load(BSTR lessonText) override {
        return Call([&] {
            auto loaded = WithObjects(*LessonText::Load(FromBstr(lessonText)));
            const auto before = std::exchange(state->lesson, std::move(loaded)); // destroyed last: that may call back
        });
    }
    STDMETHODIMP Save(BSTR* lessonText) override {
        return Get(lessonText, [this] {
            const auto lesson = state->lesson;
            return LessonText::Save(*lesson);
        });
    }

private:
    Core& Target() const override { return *state->lesson; }

    const LessonStateRef state = std::make_shared<LessonState>();
};

} // namespace

IUnknown* CreateLesson(const ClassEntry& entry) { return static_cast<_Lesson*>(new LessonObject(entry)); }

} // namespace dax
