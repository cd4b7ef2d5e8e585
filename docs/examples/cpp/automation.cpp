// Plain automation: no window. Validates a course, shows its groups, adds a lesson to the first one and saves.
//   automation FILE
// Exit code: 0 saved, 1 refused or failed. The controls are found registered, or through automation.exe.manifest.
// From the folder of this file in the package, with GCC or in a developer's prompt:
//   g++ -std=c++20 -static -I ../../include automation.cpp -lole32 -loleaut32 -luuid
//   cl /std:c++20 /EHsc /I ..\..\include automation.cpp ole32.lib oleaut32.lib shell32.lib user32.lib
#include "Sample.h"

using namespace sample;

namespace {

// Early bound: the header declares the interfaces.
bool IsValid(const Text& file) {
    Pointer<_DatabaseValidator> validator;
    Check(CoCreateInstance(CLSID_DatabaseValidator, nullptr, CLSCTX_INPROC_SERVER, IID__DatabaseValidator,
                           validator.OutAny()),
          L"creating the validator");
    VARIANT_BOOL isValid = VARIANT_FALSE;
    Check(validator->ValidateDataConnection(file, file, VARIANT_TRUE, &isValid), L"ValidateDataConnection");
    Text reason;
    Check(validator->get_ErrorDescription(reason.Out()), L"ErrorDescription");
    Print(isValid ? L"valid" : L"refused: " + reason.Wide());
    return isValid != VARIANT_FALSE;
}

// Late bound: by name at run time, as scripts do. The arguments are in reverse order.
std::wstring Call(IDispatch* object, const wchar_t* member, VARIANT* arguments, UINT count) {
    LPOLESTR name = const_cast<LPOLESTR>(member);
    DISPID dispid = DISPID_UNKNOWN;
    Check(object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &dispid), L"finding a member");
    DISPPARAMS parameters{arguments, nullptr, count, 0};
    VARIANT result;
    VariantInit(&result);
    Check(
        object->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &result, nullptr, nullptr),
        L"calling a member");
    std::wstring text;
    if (SUCCEEDED(VariantChangeType(&result, &result, 0, VT_BSTR))) text = result.bstrVal ? result.bstrVal : L"";
    VariantClear(&result);
    return text;
}

std::wstring NewIdentifier() {
    CLSID id{};
    Check(CLSIDFromProgID(L"ContentObjects.Utility", &id), L"finding ContentObjects.Utility");
    Pointer<IDispatch> utility;
    Check(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, utility.OutAny()), L"creating it");
    return Call(utility.Get(), L"NewIdentifier", nullptr, 0);
}

// Prints the groups; gives the first of them.
std::wstring ShowGroups(_GroupEditor* editor) {
    Pointer<_IDCollection> all;
    Check(editor->GetChildLessonIDCollection(Text(L""), all.Out()), L"GetChildLessonIDCollection");
    long count = 0;
    Check(all->get_Count(&count), L"Count");
    std::wstring first;
    VARIANT place;
    VariantInit(&place);
    place.vt = VT_I4;
    for (place.lVal = 1; place.lVal <= count; ++place.lVal) {
        Text id, title;
        Check(all->get_Item(place, id.Out()), L"Item");
        LessonTypes type = ltUnknown;
        Check(editor->GetLessonType(id, &type), L"GetLessonType");
        if (type != ltGroup) continue;
        if (first.empty()) first = id.Wide();
        long below = 0;
        Check(editor->GetLessonTitle(id, title.Out()), L"GetLessonTitle");
        Check(editor->GetChildLessonCount(id, &below), L"GetChildLessonCount");
        Print(L"  " + title.Wide() + L": " + std::to_wstring(below) + L" entries");
    }
    return first;
}

// What is added comes after the selected entry: after the group, and from there into it.
void AddLesson(_GroupEditor* editor, const std::wstring& group) {
    const Text lesson(NewIdentifier());
    Check(editor->put_CurrentLessonID(Text(group)), L"CurrentLessonID");
    Check(editor->AddLesson(lesson, Text(L"Added in C++"), Text(L"CPP"), ltLesson), L"AddLesson");
    Check(editor->MoveCurrent(gmtIndent), L"MoveCurrent");
    Pointer<IDispatch> tokens;
    Check(editor->GetLessonTokens(lesson, tokens.Out()), L"GetLessonTokens");
    VARIANT arguments[2] = {};
    arguments[0].vt = arguments[1].vt = VT_BSTR;
    const Text name(L"LessonTitlePath"), none(L"");
    arguments[1].bstrVal = name;
    arguments[0].bstrVal = none;
    Print(L"added: " + Call(tokens.Get(), L"GetValue", arguments, 2));
}

int Run(const Text& file) {
    if (!IsValid(file)) return 1;
    Pointer<_GroupEditor> editor;
    Check(CoCreateInstance(CLSID_GroupEditor, nullptr, CLSCTX_INPROC_SERVER, IID__GroupEditor, editor.OutAny()),
          L"creating the editor");
    Check(editor->put_ConnectionString(file), L"ConnectionString");
    VARIANT_BOOL isDone = VARIANT_FALSE;
    Check(editor->LoadDatabase(&isDone), L"LoadDatabase");
    const std::wstring group = isDone ? ShowGroups(editor.Get()) : L"";
    if (group.empty()) {
        Print(L"there is no group to add a lesson to");
        return 1;
    }
    AddLesson(editor.Get(), group);
    Check(editor->SaveDatabase(&isDone), L"SaveDatabase");
    Print(isDone ? L"saved" : L"not saved");
    return isDone ? 0 : 1;
}

} // namespace

int main() {
    if (FAILED(OleInitialize(nullptr))) return 1;
    int code = 1;
    try {
        code = Run(Text(FirstArgument()));
    } catch (const Failure& failure) {
        Print(failure.text);
    }
    OleUninitialize();
    return code;
}
