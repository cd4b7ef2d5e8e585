// What the tests of the control library share: the library itself, registered; automation by name; a host's site.
#pragma once

#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // COM interfaces have no destructors by contract
#endif

#include "TestDispatch.h"

#include "com/ComPtr.h"
#include "com/Variant.h"

#include <gtest/gtest.h>

#include <ocidl.h>
#include <olectl.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace dax::test {

// The folder of this program, where the libraries are too; with a separator at its end.
std::wstring BinFolder();
// Calls one of the library's entry points without arguments.
HRESULT CallLibrary(const wchar_t* file, const char* entryPoint);

// Both libraries, for the machine, or no longer.
void Register(bool isRegistered);

// Handles what waits in the queue until the condition holds; false after 30 seconds.
bool PumpUntil(const std::function<bool()>& condition);
void PumpPending();

// For every test below: COM is there and both libraries are registered for the machine.
class OcxTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override { PumpPending(); }
    // Whatever a test has done: no window and no use of the libraries is left.
    void TearDown() override;
};

// Every visible control.
inline constexpr const wchar_t* Controls[] = {
    L"DAXControls.DatabaseValidator", L"DAXControls.SQLDBPicker", L"DAXControls.GroupEditor",
    L"DAXControls.LockManager",       L"DAXControls.LessonInfo",  L"DAXControls.LockInfo",
    L"DAXControls.LessonMapEditor",
};

ComPtr<IDispatch> Create(const wchar_t* progID);

// A call by name, the arguments in their written order. Throws CallFailure when it fails.
struct CallFailure {
    HRESULT code;
    Text description, source;
};
Variant Call(IDispatch* object, const wchar_t* member, std::initializer_list<Variant> arguments = {},
             WORD kind = DISPATCH_METHOD | DISPATCH_PROPERTYGET);
Text TextOf(const Variant& value);
ComPtr<IDispatch> ObjectOf(const Variant& value);
void Put(IDispatch* object, const wchar_t* property, const Variant& value, WORD kind = DISPATCH_PROPERTYPUT);
// The code of the failure of a call; S_OK when it works.
HRESULT CodeOf(const std::function<void()>& call);
bool IsTrue(const Variant& value);
int32_t NumberOf(const Variant& value);

// Hears every event of an object, the arguments as text; an object by its SBID.
class Sink final : public TestDispatch<> {
public:
    using Listener = std::function<void(DISPID event, const std::vector<Text>& arguments)>;
    explicit Sink(Listener listener) : listener(std::move(listener)) {}

    void Connect(IUnknown* object); // to its default events
    void Disconnect();

    STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                        UINT*) override;

    long answer = 0; // what an argument by reference is set to

private:
    Listener listener;
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
};

} // namespace dax::test
