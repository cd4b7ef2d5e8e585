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
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, E_FAIL);
        EXPECT_EQ(failure.source, u"DAXControls.SQLDBPicker");
        EXPECT_NE(failure.description.find(u"Nonsense"), Text::npos);
    }
    try {
        Call(picker.Get(), L"DBCatalog", {Variant(u"x")}, DISPATCH_PROPERTYPUT);
        ADD_FAILURE() << "the property is read-only";
    } catch (const Failure& failure) {
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
        ComPtr<IEnumOLEVERB> said, registered;
        EXPECT_HRESULT_SUCCEEDED(control->EnumVerbs(said.Out()));
        ASSERT_HRESULT_SUCCEEDED(OleRegEnumVerbs(clsid, registered.Out()));
        OLEVERB verb{}, other{};
        for (int i = 0; i < 2; ++i) {
            const HRESULT more = said->Next(1, &verb, nullptr);
            EXPECT_EQ(more, i == 0 ? S_OK : S_FALSE);
            EXPECT_EQ(registered->Next(1, &other, nullptr), more);
            if (more != S_OK) break;
            EXPECT_STREQ(verb.lpszVerbName, other.lpszVerbName);
            EXPECT_TRUE(verb.lVerb == other.lVerb && verb.fuFlags == other.fuFlags);
            EXPECT_EQ(verb.grfAttribs, other.grfAttribs);
            CoTaskMemFree(verb.lpszVerbName);
            CoTaskMemFree(other.lpszVerbName);
        }
        EXPECT_EQ(CoCreateInstance(clsid, object.Get(), CLSCTX_INPROC_SERVER, IID_IUnknown, inner.OutVoid()),
                  CLASS_E_NOAGGREGATION);
    }
}

// What a member has nothing for it empties, so that no host releases what was never there.
TEST_F(AutomationTest, EveryPointerThatAMemberGivesBackIsSet) {
    void* const unset = reinterpret_cast<void*>(1);
    for (const wchar_t* name : Controls) {
        const auto control = Create(name);
        const auto object = Query<IOleObject>(control.Get(), IID_IOleObject);
        const auto view = Query<IViewObject2>(control.Get(), IID_IViewObject2);
        const auto points = Query<IConnectionPointContainer>(control.Get(), IID_IConnectionPointContainer);
        const auto isEmptied = [&](const char* member, const auto& call) {
            void* given = unset;
            call(&given);
            EXPECT_EQ(given, nullptr) << member;
        };
        isEmptied("GetMoniker", [&](void** out) { object->GetMoniker(1, 1, reinterpret_cast<IMoniker**>(out)); });
        isEmptied("GetClientSite", [&](void** out) { object->GetClientSite(reinterpret_cast<IOleClientSite**>(out)); });
        isEmptied("EnumAdvise", [&](void** out) { object->EnumAdvise(reinterpret_cast<IEnumSTATDATA**>(out)); });
        isEmptied("GetColorSet", [&](void** out) {
            view->GetColorSet(1, -1, nullptr, nullptr, nullptr, reinterpret_cast<LOGPALETTE**>(out));
        });
        isEmptied("GetAdvise",
                  [&](void** out) { view->GetAdvise(nullptr, nullptr, reinterpret_cast<IAdviseSink**>(out)); });
        isEmptied("FindConnectionPoint", [&](void** out) {
            points->FindConnectionPoint(IID_IViewObject, reinterpret_cast<IConnectionPoint**>(out));
        });
        isEmptied("GetTypeInfo", [&](void** out) { control->GetTypeInfo(1, 0, reinterpret_cast<ITypeInfo**>(out)); });
        isEmptied("QueryInterface", [&](void** out) { control->QueryInterface(IID_IStream, out); });
        DWORD number = 1;
        EXPECT_EQ(view->Freeze(1, -1, nullptr, &number), E_NOTIMPL);
        EXPECT_EQ(number, 0u);
        number = 1;
        EXPECT_HRESULT_FAILED(object->Advise(nullptr, &number));
        EXPECT_EQ(number, 0u);
        DISPPARAMS none{};
        DISPID dispid = 0;
        LPOLESTR names[] = {const_cast<LPOLESTR>(L"None")};
        EXPECT_EQ(control->Invoke(1, IID_IDispatch, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
                  DISP_E_UNKNOWNINTERFACE);
        EXPECT_EQ(control->GetIDsOfNames(IID_IDispatch, names, 1, 0, &dispid), DISP_E_UNKNOWNINTERFACE);
    }
}

TEST_F(AutomationTest, AnEnumeratorAloneKeepsItsLibrary) {
    const auto pointsOf = [](IDispatch* object) {
        ComPtr<IEnumConnectionPoints> points;
        const auto container = Query<IConnectionPointContainer>(object, IID_IConnectionPointContainer);
        EXPECT_HRESULT_SUCCEEDED(container->EnumConnectionPoints(points.Out()));
        return points;
    };
    const struct {
        const wchar_t *library, *className;
        std::function<ComPtr<IUnknown>(IDispatch*)> enumerate;
    } rows[] = {
        {L"daxControls33.ocx", L"DAXControls.GroupEditor",
         [](IDispatch* editor) {
             const auto ids = ObjectOf(Call(editor, L"GetChildLessonIDCollection", {Variant(u"")}));
             return ComPtr<IUnknown>(Call(ids.Get(), L"_NewEnum").punkVal);
         }},
        {L"daxControls33.ocx", L"DAXControls.LessonMapEditor",
         [&](IDispatch* editor) { return ComPtr<IUnknown>(pointsOf(editor).Get()); }},
        {L"daxControls33.ocx", L"DAXControls.LessonMapEditor",
         [&](IDispatch* editor) {
             ComPtr<IConnectionPoint> point;
             EXPECT_EQ(pointsOf(editor)->Next(1, point.Out(), nullptr), S_OK);
             ComPtr<IEnumConnections> connections, clone;
             EXPECT_HRESULT_SUCCEEDED(point->EnumConnections(connections.Out()));
             EXPECT_HRESULT_SUCCEEDED(connections->Clone(clone.Out()));
             return ComPtr<IUnknown>(clone.Get());
         }},
        {L"contentObjects.dll", L"ContentObjects.Lesson",
         [](IDispatch* lesson) {
             return ComPtr<IUnknown>(Call(ObjectOf(Call(lesson, L"Maps")).Get(), L"_NewEnum").punkVal);
         }},
    };
    for (const auto& [library, className, enumerate] : rows) {
        ComPtr<IUnknown> left = enumerate(Create(className).Get());
        ASSERT_TRUE(left) << ToUtf8(FromWide(className));
        const auto canUnload = [name = library] { return CallLibrary(name, "DllCanUnloadNow"); };
        PumpPending();
        // A list of points holds its control; the others hold nothing but themselves.
        EXPECT_EQ(canUnload(), S_FALSE) << &enumerate - &rows[0].enumerate;
        left.Reset();
        EXPECT_TRUE(PumpUntil([&] { return canUnload() == S_OK; }));
    }
}

// A host's form is one object with an interface for the events of each of its controls.
TEST_F(AutomationTest, OneObjectHearsEachControlByItsOwnInterface) {
    class Form final : public TestDispatch<> {
    public:
        class Ear final : public TestDispatch<> {
        public:
            explicit Ear(Form& form) : form(form) {}
            STDMETHODIMP QueryInterface(REFIID iid, void** object) override { return form.QueryInterface(iid, object); }
            STDMETHODIMP_(ULONG) AddRef() override { return form.AddRef(); }
            STDMETHODIMP_(ULONG) Release() override { return form.Release(); }
            STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
                heard.push_back(dispid);
                return S_OK;
            }
            GUID events{};
            std::vector<DISPID> heard;

        private:
            Form& form;
        };
        Ear ears[2]{Ear(*this), Ear(*this)};

    private:
        void* Find(REFIID iid) override {
            for (Ear& ear : ears)
                if (ear.events == iid) return static_cast<IDispatch*>(&ear);
            return nullptr;
        }
    };
    Form form;
    const ComPtr<IDispatch> controls[] = {Create(L"DAXControls.GroupEditor"), Create(L"DAXControls.LockManager")};
    DWORD cookies[2]{};
    for (size_t i = 0; i < 2; ++i) {
        const auto info = Query<IProvideClassInfo2>(controls[i].Get(), IID_IProvideClassInfo2);
        EXPECT_HRESULT_SUCCEEDED(info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &form.ears[i].events));
    }
    const auto pointOf = [&](size_t i) {
        ComPtr<IConnectionPoint> point;
        const auto container = Query<IConnectionPointContainer>(controls[i].Get(), IID_IConnectionPointContainer);
        EXPECT_HRESULT_SUCCEEDED(container->FindConnectionPoint(form.ears[i].events, point.Out()));
        return point;
    };
    for (size_t i = 0; i < 2; ++i) EXPECT_HRESULT_SUCCEEDED(pointOf(i)->Advise(&form, &cookies[i]));
    Call(controls[0].Get(), L"Clear");
    EXPECT_EQ(form.ears[0].heard, std::vector<DISPID>{1});
    EXPECT_TRUE(form.ears[1].heard.empty());
    Put(controls[1].Get(), L"ConnectionString", Variant(u"Provider=Nonsense"));
    Call(controls[1].Get(), L"Refresh");
    EXPECT_EQ(form.ears[0].heard.size(), 1u);
    EXPECT_EQ(form.ears[1].heard.front(), 3) << "the failure";
    for (size_t i = 0; i < 2; ++i) EXPECT_HRESULT_SUCCEEDED(pointOf(i)->Unadvise(cookies[i]));
    EXPECT_EQ(form.references, 1u);
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
