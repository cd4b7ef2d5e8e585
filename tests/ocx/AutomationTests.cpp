// The classes as scripts and programs without a container use them, registered or not.
#include "OcxHost.h"

#include <set>
#include <tuple>

namespace dax::test {

namespace {

class AutomationTest : public OcxTest {};

// Every key below HKEY_CLASSES_ROOT's parts that registration touches.
std::set<std::wstring> ClassKeys() {
    std::set<std::wstring> result;
    for (const wchar_t* part : {L"", L"CLSID", L"TypeLib", L"Interface"}) {
        HKEY key = nullptr;
        const std::wstring place = std::wstring(L"Software\\Classes\\") + part;
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, place.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) continue;
        wchar_t name[256];
        for (DWORD i = 0;; ++i) {
            DWORD length = 256;
            if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
            result.insert(std::wstring(part) + L"\\" + name);
        }
        RegCloseKey(key);
    }
    return result;
}

} // namespace

TEST_F(AutomationTest, ConstantsTellWhereTheLibraryIs) {
    const auto constants = Create(L"DAXControls.Constants");
    const std::wstring folder = BinFolder();
    EXPECT_EQ(TextOf(Call(constants.Get(), L"OCXPath")), FromWide(folder.substr(0, folder.size() - 1)));
    EXPECT_EQ(TextOf(Call(constants.Get(), L"OCXFilename")), FromWide(folder + L"daxControls33.ocx"));
    EXPECT_TRUE(TextOf(Call(constants.Get(), L"OCXVersion")).starts_with(u"3.3 (Build 0001)  Visual"));
}

TEST_F(AutomationTest, ValidatorKeepsTheOutcome) {
    const auto validator = Create(L"DAXControls.DatabaseValidator");
    for (const wchar_t* property : {L"CommonConnectionString", L"DataConnectionString", L"CatalogName"})
        EXPECT_EQ(TextOf(Call(validator.Get(), property)), u"") << ToUtf8(FromWide(property));
    EXPECT_FALSE(IsTrue(
        Call(validator.Get(), L"ValidateDataConnection", {Variant(u"conn"), Variant(u"C:\\no\\file"), Variant(true)})));
    EXPECT_EQ(TextOf(Call(validator.Get(), L"DataConnectionString")), u"conn");
    EXPECT_EQ(TextOf(Call(validator.Get(), L"CatalogName")), u"C:\\no\\file");
    EXPECT_TRUE(IsTrue(Call(validator.Get(), L"MDBMode")));
    EXPECT_EQ(NumberOf(Call(validator.Get(), L"ErrorType")), 2);
    EXPECT_EQ(NumberOf(Call(validator.Get(), L"ErrorNumber")), 75);
    EXPECT_EQ(TextOf(Call(validator.Get(), L"ErrorDescription")), u"file not found.");
    EXPECT_FALSE(IsTrue(Call(validator.Get(), L"ValidateSupportsTalk", {Variant(u"")})));
    EXPECT_FALSE(IsTrue(Call(validator.Get(), L"ValidateCommonConnection",
                             {Variant(u"x"), Variant(u""), Variant(u"catalog"), Variant(u"user")})));
    EXPECT_EQ(NumberOf(Call(validator.Get(), L"ErrorType")), 9);
}

TEST_F(AutomationTest, FailuresCarryNumberDescriptionAndSource) {
    const auto picker = Create(L"DAXControls.SQLDBPicker");
    EXPECT_FALSE(IsTrue(Call(picker.Get(), L"LoadPicker", {Variant(u""), Variant(u"a"), Variant(u"")})));
    try {
        Call(picker.Get(), L"LoadPicker", {Variant(u"Provider=Nonsense"), Variant(u"a"), Variant(u"")});
        ADD_FAILURE() << "no provider of that name can be there";
    } catch (const CallFailure& failure) {
        EXPECT_EQ(failure.code, E_FAIL);
        EXPECT_EQ(failure.source, u"DAXControls.SQLDBPicker");
        EXPECT_NE(failure.description.find(u"Nonsense"), Text::npos);
    }
    try {
        Call(picker.Get(), L"DBCatalog", {Variant(u"x")}, DISPATCH_PROPERTYPUT);
        ADD_FAILURE() << "the property is read-only";
    } catch (const CallFailure& failure) {
        EXPECT_EQ(failure.code, DISP_E_MEMBERNOTFOUND);
    }
    Call(picker.Get(), L"Enabled", {Variant(false)}, DISPATCH_PROPERTYPUT);
    EXPECT_FALSE(IsTrue(Call(picker.Get(), L"Enabled")));
}

TEST_F(AutomationTest, EveryClassAnswersTheInterfacesHostsAskFor) {
    for (const wchar_t* name : Controls) {
        const auto object = Create(name);
        const auto identity = Query<IUnknown>(object.Get(), IID_IUnknown);
        for (const IID* iid : {&IID_IOleObject, &IID_IOleControl, &IID_IOleInPlaceObject, &IID_IOleInPlaceActiveObject,
                               &IID_IViewObject2, &IID_IDataObject, &IID_IPersistStream, &IID_IPersistStreamInit,
                               &IID_IPersistStorage, &IID_IPersistPropertyBag, &IID_IConnectionPointContainer,
                               &IID_IProvideClassInfo2, &IID_ISupportErrorInfo}) {
            const auto found = Query<IUnknown>(object.Get(), *iid);
            ASSERT_TRUE(found);
            EXPECT_EQ(Query<IUnknown>(found.Get(), IID_IUnknown).Get(), identity.Get()) << "one identity";
        }
        ComPtr<IUnknown> inner;
        CLSID clsid{};
        CLSIDFromProgID(name, &clsid);
        const auto control = Query<IOleObject>(object.Get(), IID_IOleObject);
        for (const DWORD form : {USERCLASSTYPE_FULL, USERCLASSTYPE_SHORT, USERCLASSTYPE_APPNAME}) {
            LPOLESTR said = nullptr, registered = nullptr;
            EXPECT_HRESULT_SUCCEEDED(control->GetUserType(form, &said));
            EXPECT_HRESULT_SUCCEEDED(OleRegGetUserType(clsid, form, &registered));
            EXPECT_STREQ(said, registered) << form;
            CoTaskMemFree(said);
            CoTaskMemFree(registered);
        }
        const auto verbsOf = [](IEnumOLEVERB* list) {
            std::wstring all;
            for (OLEVERB verb{}; list->Next(1, &verb, nullptr) == S_OK; CoTaskMemFree(verb.lpszVerbName))
                for (const auto& part : {std::to_wstring(verb.lVerb), std::wstring(verb.lpszVerbName),
                                         std::to_wstring(verb.fuFlags), std::to_wstring(verb.grfAttribs)})
                    all += part + L' ';
            return all;
        };
        ComPtr<IEnumOLEVERB> verbs, registered;
        EXPECT_HRESULT_SUCCEEDED(control->EnumVerbs(verbs.Out()));
        ASSERT_HRESULT_SUCCEEDED(OleRegEnumVerbs(clsid, registered.Out()));
        EXPECT_EQ(verbsOf(verbs.Get()), L"0 &Activate 0 2 ");
        EXPECT_EQ(verbsOf(registered.Get()), L"0 &Activate 0 2 ");
        EXPECT_EQ(CoCreateInstance(clsid, object.Get(), CLSCTX_INPROC_SERVER, IID_IUnknown, inner.OutVoid()),
                  CLASS_E_NOAGGREGATION);
    }
}

template <typename Result, typename Call>
void ExpectEmptied(const char* member, const Call& call) {
    auto* given = reinterpret_cast<Result*>(1);
    call(&given);
    EXPECT_EQ(given, nullptr) << member;
}

// What a member has nothing for it empties, so that no host releases what was never there.
TEST_F(AutomationTest, EveryPointerThatAMemberGivesBackIsSet) {
    for (const wchar_t* name : Controls) {
        const auto control = Create(name);
        const auto object = Query<IOleObject>(control.Get(), IID_IOleObject);
        const auto view = Query<IViewObject2>(control.Get(), IID_IViewObject2);
        const auto points = Query<IConnectionPointContainer>(control.Get(), IID_IConnectionPointContainer);
        ExpectEmptied<IMoniker>("GetMoniker", [&](auto out) { object->GetMoniker(1, 1, out); });
        ExpectEmptied<IOleClientSite>("GetClientSite", [&](auto out) { object->GetClientSite(out); });
        ExpectEmptied<IEnumSTATDATA>("EnumAdvise", [&](auto out) { object->EnumAdvise(out); });
        ExpectEmptied<LOGPALETTE>("GetColorSet",
                                  [&](auto out) { view->GetColorSet(1, -1, nullptr, nullptr, nullptr, out); });
        ExpectEmptied<IAdviseSink>("GetAdvise", [&](auto out) { view->GetAdvise(nullptr, nullptr, out); });
        ExpectEmptied<IConnectionPoint>("FindConnectionPoint",
                                        [&](auto out) { points->FindConnectionPoint(IID_IStream, out); });
        ExpectEmptied<ITypeInfo>("GetTypeInfo", [&](auto out) { control->GetTypeInfo(1, 0, out); });
        ExpectEmptied<void>("QueryInterface", [&](auto out) { control->QueryInterface(IID_IStream, out); });
        DWORD key = 1, cookie = 1;
        EXPECT_EQ(view->Freeze(1, -1, nullptr, &key), E_NOTIMPL);
        EXPECT_HRESULT_FAILED(object->Advise(nullptr, &cookie));
        EXPECT_EQ(key + cookie, 0u);
        DISPPARAMS none{};
        LPOLESTR names[] = {const_cast<LPOLESTR>(L"None")};
        DISPID dispid = 0;
        EXPECT_EQ(control->Invoke(1, IID_IDispatch, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
                  DISP_E_UNKNOWNINTERFACE);
        EXPECT_EQ(control->GetIDsOfNames(IID_IDispatch, names, 1, 0, &dispid), DISP_E_UNKNOWNINTERFACE);
    }
}

TEST_F(AutomationTest, AnEnumeratorAloneKeepsItsLibrary) {
    using Taking = std::function<ComPtr<IUnknown>(IDispatch*)>;
    const auto newEnum = [](const wchar_t* collection) -> Taking {
        return [=](IDispatch* object) {
            return ComPtr<IUnknown>(Call(ObjectOf(Call(object, collection)).Get(), L"_NewEnum").punkVal);
        };
    };
    const Taking points = [](IDispatch* object) {
        ComPtr<IEnumConnectionPoints> result;
        const auto container = Query<IConnectionPointContainer>(object, IID_IConnectionPointContainer);
        EXPECT_HRESULT_SUCCEEDED(container->EnumConnectionPoints(result.Out()));
        return ComPtr<IUnknown>(result.Get());
    };
    const Taking connections = [&](IDispatch* object) {
        ComPtr<IConnectionPoint> point;
        ComPtr<IEnumConnections> all, clone;
        Query<IEnumConnectionPoints>(points(object).Get(), IID_IEnumConnectionPoints)->Next(1, point.Out(), nullptr);
        EXPECT_HRESULT_SUCCEEDED(point->EnumConnections(all.Out()));
        EXPECT_HRESULT_SUCCEEDED(all->Clone(clone.Out()));
        return ComPtr<IUnknown>(clone.Get());
    };
    const std::tuple<const wchar_t*, const wchar_t*, Taking> rows[] = {
        {L"daxControls33.ocx", Controls[6], newEnum(L"CheckedStoryboards")},
        {L"daxControls33.ocx", Controls[6], points},
        {L"daxControls33.ocx", Controls[6], connections},
        {L"contentObjects.dll", L"ContentObjects.Lesson", newEnum(L"Maps")},
    };
    for (const auto& row : rows) {
        const auto& [library, className, take] = row;
        ComPtr<IUnknown> left = take(Create(className).Get());
        ASSERT_TRUE(left) << &row - rows;
        PumpPending();
        EXPECT_EQ(CallLibrary(library, "DllCanUnloadNow"), S_FALSE) << &row - rows;
        left.Reset();
        EXPECT_TRUE(PumpUntil([name = library] { return CallLibrary(name, "DllCanUnloadNow") == S_OK; }));
    }
}

// A host's form: one object with an interface for the events of each of its controls.
class Form final : public TestDispatch<> {
public:
    GUID events[2]{};
    std::vector<DISPID> heard[2];

private:
    void* Find(REFIID iid) override {
        for (size_t i = 0; i < 2; ++i)
            if (events[i] == iid) return static_cast<IDispatch*>(&ears[i]);
        return nullptr;
    }
    Sink ears[2]{Sink([this](DISPID event, const auto&) { heard[0].push_back(event); }),
                 Sink([this](DISPID event, const auto&) { heard[1].push_back(event); })};
};

TEST_F(AutomationTest, OneObjectHearsEachControlByItsOwnInterface) {
    Form form;
    const ComPtr<IDispatch> controls[] = {Create(L"DAXControls.GroupEditor"), Create(L"DAXControls.LockManager")};
    ComPtr<IConnectionPoint> points[2];
    DWORD cookies[2]{};
    for (size_t i = 0; i < 2; ++i) {
        const auto info = Query<IProvideClassInfo2>(controls[i].Get(), IID_IProvideClassInfo2);
        const auto container = Query<IConnectionPointContainer>(controls[i].Get(), IID_IConnectionPointContainer);
        EXPECT_HRESULT_SUCCEEDED(info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &form.events[i]));
        EXPECT_HRESULT_SUCCEEDED(container->FindConnectionPoint(form.events[i], points[i].Out()));
        EXPECT_HRESULT_SUCCEEDED(points[i]->Advise(&form, &cookies[i]));
    }
    Call(controls[0].Get(), L"Clear");
    EXPECT_EQ(form.heard[0], std::vector<DISPID>{1});
    EXPECT_TRUE(form.heard[1].empty());
    Put(controls[1].Get(), L"ConnectionString", Variant(u"Provider=Nonsense"));
    Call(controls[1].Get(), L"Refresh");
    EXPECT_EQ(form.heard[0].size(), 1u);
    EXPECT_EQ(form.heard[1].front(), 3) << "the failure";
    for (size_t i = 0; i < 2; ++i) EXPECT_HRESULT_SUCCEEDED(points[i]->Unadvise(cookies[i]));
}

TEST_F(AutomationTest, UnregistrationLeavesNothing) {
    Register(false);
    const auto without = ClassKeys();
    EXPECT_FALSE(Create(L"DAXControls.Constants"));
    Register(true);
    const auto with = ClassKeys();
    for (const wchar_t* key :
         {L"\\DAXControls.DatabaseValidator", L"\\DAXControls.SQLDBPicker", L"\\DAXControls.GroupEditor",
          L"\\DAXControls.LockManager", L"\\DAXControls.LessonInfo", L"\\DAXControls.LockInfo",
          L"\\DAXControls.Constants", L"\\ContentObjects.Utility", L"\\ContentObjects.PropertyCollection",
          L"CLSID\\{0B88A5EE-D833-44E2-A2A1-00AAD7D928A7}", L"TypeLib\\{8F5DC3A9-0CAF-4686-81C3-214347ED9D6A}"})
        EXPECT_TRUE(with.contains(key) && !without.contains(key)) << ToUtf8(FromWide(key));
    Register(false);
    EXPECT_EQ(ClassKeys(), without);
    Register(true);
}

TEST_F(AutomationTest, WorksWithoutRegistrationThroughTheShippedManifests) {
    Register(false);
    for (const auto& [manifest, progID, member] :
         {std::tuple{L"daxControls33.manifest", L"DAXControls.Constants", L"OCXVersion"},
          std::tuple{L"daxControls33.manifest", L"DAXControls.SQLDBPicker", L"DBCatalog"},
          std::tuple{L"daxControls33.manifest", L"DAXControls.GroupEditor", L"DatabaseTitle"},
          std::tuple{L"daxControls33.manifest", L"DAXControls.LessonMapEditor", L"CurrentSBID"},
          std::tuple{L"contentObjects.manifest", L"ContentObjects.Lesson", L"Save"},
          std::tuple{L"daxControls33.manifest", L"DAXControls.LockManager", L"ConnectionString"},
          std::tuple{L"daxControls33.manifest", L"DAXControls.LockInfo", L"ConnectionString"},
          std::tuple{L"contentObjects.manifest", L"ContentObjects.Utility", L"NewIdentifier"},
          std::tuple{L"contentObjects.manifest", L"ContentObjects.PropertyCollection", L"Save"}}) {
        const std::wstring source = BinFolder() + manifest;
        ACTCTXW context{};
        context.cbSize = sizeof context;
        context.lpSource = source.c_str();
        const HANDLE handle = CreateActCtxW(&context);
        ASSERT_NE(handle, INVALID_HANDLE_VALUE) << GetLastError();
        ULONG_PTR cookie = 0;
        ASSERT_TRUE(ActivateActCtx(handle, &cookie));
        {
            const auto object = Create(progID);
            EXPECT_TRUE(object);
            if (object) {
                EXPECT_EQ(Call(object.Get(), member).vt, VT_BSTR);
            }
        }
        CoFreeUnusedLibraries();
        DeactivateActCtx(0, cookie);
        ReleaseActCtx(handle);
    }
    Register(true);
}

} // namespace dax::test
