// The content object library: one row per class.
#include <ole2.h>

#include <initguid.h> // the identifiers of the type library are defined in this file

#include "ContentObjects.h"

#include "com/ClassObject.h"
#include "content/Utility.h"
#include "ocx/content/LessonObject.h"
#include "ocx/content/PropertyCollectionObject.h"

namespace dax {

namespace {

class UtilityObject final : public DualObject<_Utility> {
public:
    explicit UtilityObject(const ClassEntry& entry) : DualObject(entry) {}

    STDMETHODIMP NewIdentifier(BSTR* identifier) override {
        return Get(identifier, [] { return dax::Utility::NewIdentifier(); });
    }
};

IUnknown* CreateUtility(const ClassEntry& entry) { return static_cast<_Utility*>(new UtilityObject(entry)); }

IUnknown* CreatePropertyCollection(const ClassEntry&) { return ToInterface(NewPropertyCollection()); }

const ClassEntry classes[] = {
    {&CLSID_Utility, &IID__Utility, nullptr, L"Utility", L"DAX content utility", CreateUtility, 0},
    {&CLSID_PropertyCollection, &IID__PropertyCollection, nullptr, L"PropertyCollection", L"DAX property collection",
     CreatePropertyCollection, 0},
    {&CLSID_Lesson, &IID__Lesson, nullptr, L"Lesson", L"DAX lesson", CreateLesson, 0},
    {&CLSID_StoryboardMap, &IID__StoryboardMap, nullptr, L"StoryboardMap", L"DAX storyboard map", CreateStoryboardMap,
     0},
    {&CLSID_Storyboard, &IID__Storyboard, nullptr, L"Storyboard", L"DAX storyboard", CreateStoryboard, 0},
};

} // namespace

const Library& ThisLibrary() {
    static const Library library{&LIBID_ContentObjects, L"ContentObjects", 3, 3, classes, nullptr};
    return library;
}

} // namespace dax
