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
        for (const IID* iid :
             {&IID_IOleObject, &IID_IOleControl, &IID_IOleInPlaceObject, &IID_IOleInPlaceActiveObject,
              &IID_IViewObject2, &IID_IPersistStreamInit, &IID_IPersistStorage, &IID_IPersistPropertyBag,
              &IID_IConnectionPointContainer, &IID_IProvideClassInfo2, &IID_ISupportErrorInfo}) {
            const auto found = Query<IUnknown>(object.Get(), *iid);
            ASSERT_TRUE(found);
            EXPECT_EQ(Query<IUnknown>(found.Get(), IID_IUnknown).Get(), identity.Get()) << "one identity";
        }
        ComPtr<IUnknown> inner;
        CLSID clsid{};
        CLSIDFromProgID(name, &clsid);
        EXPECT_EQ(CoCreateInstance(clsid, object.Get(), CLSCTX_INPROC_SERVER, IID_IUnknown, inner.OutVoid()),
                  CLASS_E_NOAGGREGATION);
    }
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
