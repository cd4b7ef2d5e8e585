#include "ocx/lessonmap/LessonMapContent.h"

#include "ContentObjects.h"

#include "base/Error.h"
#include "com/Library.h"
#include "lessonmap/NodeMapTree.h"
#include "ocx/lessonmap/TreeObjects.h"

namespace dax {

namespace {

constexpr wchar_t libraryFile[] = L"contentObjects.dll";

// From the library beside this one; it stays loaded.
ComPtr<IDispatch> CreateBeside(const CLSID& clsid) {
    const std::wstring path = Module::Path();
    const std::wstring file = path.substr(0, path.find_last_of(L"\\/") + 1) + libraryFile;
    const HMODULE library = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!library) return {};
    using GetClass = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    const auto getClass =
        reinterpret_cast<GetClass>(reinterpret_cast<void*>(GetProcAddress(library, "DllGetClassObject")));
    ComPtr<IClassFactory> factory;
    ComPtr<IDispatch> object;
    if (getClass && SUCCEEDED(getClass(clsid, IID_IClassFactory, factory.OutVoid())))
        factory->CreateInstance(nullptr, IID_IDispatch, object.OutVoid());
    return object;
}

HostObject Create(const CLSID& clsid) {
    ComPtr<IDispatch> object;
    if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.OutVoid())))
        object = CreateBeside(clsid);
    if (!object) throw Error(ErrorNumbers::Automation, u"The content object library, contentObjects.dll, is missing.");
    return HostObject(object.Get());
}

} // namespace

ComPtr<IDispatch> MakeMapObject(StoryboardMap& map) {
    const HostObject object = Create(CLSID_StoryboardMap);
    object.Put(L"Name", Variant(TextView(map.Name())));
    // Layouts can only be transferred through a tree.
    const auto tree = std::make_shared<NodeTree>();
    NodeMapTree nodes(*tree);
    const MapTree::NodeRef root = NodeMapTree::RefOf(&tree->Add(nullptr, InsertPosition::LastChild, u""));
    map.FillTree(nodes, root);
    HostMap(object.Object(), std::make_shared<TreeObjects>(tree)->Makers()).ReadLayout(nodes, root);
    return ComPtr<IDispatch>(object.Object());
}

ComPtr<IDispatch> MakeLessonObject(const Lesson& lesson) {
    const HostObject object = Create(CLSID_Lesson);
    const HostStoryboards storyboards(ObjectFrom(object.Call(L"Storyboards")).Get());
    for (const auto& each : lesson.Storyboards()->All()) {
        if (HostObjectOf(each)) storyboards.Call(L"Add", {Variant(HostObjectOf(each))});
    }
    const HostObject maps(ObjectFrom(object.Call(L"Maps")).Get());
    const auto source = lesson.Maps();
    const auto defaultMap = source->DefaultMap();
    for (int32_t i = 0; i < source->Count(); ++i) {
        const auto map = source->Item(i);
        const auto made = MakeMapObject(*map);
        maps.Call(L"Add", {Variant(made.Get())});
        if (map == defaultMap) maps.PutObject(L"DefaultMap", made.Get());
    }
    object.Put(L"CurrentSBID", Variant(TextView(lesson.CurrentSBID())));
    return ComPtr<IDispatch>(object.Object());
}

} // namespace dax
