// What the tests of the control library share: the library itself, registered; automation by name; objects of a host;
// programs and scripts.
#pragma once

#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // COM interfaces have no destructors by contract
#endif

#include "com/EventSink.h"

#include <gtest/gtest.h>

#include <ocidl.h>
#include <olectl.h>

#include <filesystem>
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
    OcxTest() { PumpPending(); }
    // Whatever a test has done: no window and no use of the libraries is left.
    ~OcxTest() override;
};

ComPtr<IDispatch> Create(const std::wstring& progID);

// A call by name, the arguments in their written order. Throws CallFailure when it fails.
struct CallFailure {
    HRESULT code;
    Text description, source;
};
using ObjectRef = const ComPtr<IDispatch>&;
Variant Call(ObjectRef object, const wchar_t* member, std::span<const Variant> arguments, WORD kind);
Variant Call(ObjectRef object, const wchar_t* member, std::initializer_list<Variant> arguments = {});
ComPtr<IDispatch> Get(ObjectRef object, const wchar_t* member, std::initializer_list<Variant> arguments = {});
Text GetText(ObjectRef object, const wchar_t* member);
void Put(ObjectRef object, const wchar_t* property, const Variant& value, WORD kind = DISPATCH_PROPERTYPUT);
// The code of the failure of a call; S_OK when it works.
HRESULT CodeOf(const std::function<void()>& call);
// What For Each would give.
std::vector<Variant> Enumerated(ObjectRef collection);

// An object of a host on the stack or inside another one, which sees who still refers to it.
template <typename... Rows>
class StackObject : public DispatchObject<Rows...> {
public:
    bool IsReleased() const { return this->References() == 1; }

private:
    void Destroy() override {}
};

struct RecordedEvent {
    DISPID dispid;
    std::string text; // "Name(first, second)"; an object by its SBID
};

// Receives every event of an object.
class Sink {
public:
    using Listener = std::function<void(const RecordedEvent&)>;
    explicit Sink(Listener listener) : listener(std::move(listener)) {}

    void Connect(ObjectRef object); // to its default events
    void Disconnect() { connection.Disconnect(); }
    bool IsReleased() const { return connection.IsReleased(); }

    long answer = 0; // what an argument by reference is set to

private:
    Listener listener;
    EventConnection connection;
};

struct Outcome {
    int code = -1;
    std::string output, errors;
};

// A program beside this one, or by its full path.
Outcome RunProgram(const wchar_t* program, const std::wstring& arguments);
Outcome RunScript(const std::filesystem::path& script, const std::wstring& arguments = L"");

std::filesystem::path DataFile(const std::wstring& name); // a sample or a snapshot
std::wstring Quoted(const Text& text);

} // namespace dax::test
