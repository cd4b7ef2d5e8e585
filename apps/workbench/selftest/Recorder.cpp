#include "selftest/Recorder.h"

#include "automation/Automation.h"
#include "com/Variant.h"

namespace dax::workbench::selftest {

namespace {

constexpr wchar_t kindBegin = L'B', kindEnd = L'E', kindShot = L'S', kindFact = L'F', kindComplete = L'C';

// Fields are separated by tabs and lines by line feeds; in a field these and the backslash are escaped by a backslash.
std::wstring Escape(const std::wstring& field) {
    std::wstring escaped;
    for (const wchar_t unit : field) {
        if (unit == L'\\' || unit == L'\t' || unit == L'\n') escaped += L'\\';
        escaped += unit == L'\t' ? L't' : unit == L'\n' ? L'n' : unit;
    }
    return escaped;
}

std::vector<std::wstring> Fields(const std::wstring& line) {
    std::vector<std::wstring> fields(1);
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] == L'\t')
            fields.emplace_back();
        else if (line[i] != L'\\' || ++i >= line.size())
            fields.back() += i < line.size() ? line[i] : L'\\';
        else
            fields.back() += line[i] == L't' ? L'\t' : line[i] == L'n' ? L'\n' : line[i];
    }
    return fields;
}

void Take(const std::vector<std::wstring>& fields, Findings& findings) {
    const wchar_t kind = fields[0].empty() ? L'\0' : fields[0][0];
    if (kind == kindComplete) findings.isComplete = true;
    if (kind == kindBegin && fields.size() == 2) {
        findings.results.push_back({fields[1]});
        findings.isRunning = true;
    }
    if (kind == kindFact && fields.size() == 3) findings.facts.emplace_back(fields[1], fields[2]);
    if (findings.results.empty()) return;
    Result& last = findings.results.back();
    if (kind == kindShot && fields.size() == 3) last.shots.push_back({fields[1], fields[2]});
    if (kind != kindEnd || fields.size() != 4) return;
    last.outcome = static_cast<Outcome>(std::stoi(fields[1]));
    last.milliseconds = std::stoi(fields[2]);
    last.text = fields[3];
    findings.isRunning = false;
}

} // namespace

std::string ReadBytes(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return {};
    LARGE_INTEGER size{};
    GetFileSizeEx(file, &size);
    std::string bytes(static_cast<size_t>(size.QuadPart), '\0');
    DWORD count = 0;
    if (!ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr)) count = 0;
    CloseHandle(file);
    bytes.resize(count);
    return bytes;
}

Recorder::Recorder(const std::wstring& path) {
    file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_ALWAYS, 0,
                       nullptr);
    if (file == INVALID_HANDLE_VALUE)
        throw HostError(E_FAIL, path + L": " + DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
}

Recorder::~Recorder() { CloseHandle(file); }

void Recorder::Write(wchar_t kind, const std::vector<std::wstring>& fields) {
    std::wstring line(1, kind);
    for (const std::wstring& field : fields) line += L'\t' + Escape(field);
    const std::string bytes = ToUtf8(FromWide(line)) + '\n';
    const std::lock_guard guard(mutex);
    DWORD count = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
}

void Recorder::Begin(const std::wstring& name) {
    const std::lock_guard guard(mutex);
    begun = GetTickCount64();
    isRunning = true;
    Write(kindBegin, {name});
}

void Recorder::End(Outcome outcome, const std::wstring& text) {
    const std::lock_guard guard(mutex);
    if (!isRunning) return;
    isRunning = false;
    Write(kindEnd, {std::to_wstring(static_cast<int>(outcome)), std::to_wstring(GetTickCount64() - begun), text});
}

void Recorder::Add(const Shot& shot) { Write(kindShot, {shot.caption, shot.path}); }

void Recorder::AddFact(const std::wstring& name, const std::wstring& value) { Write(kindFact, {name, value}); }

void Recorder::Complete() { Write(kindComplete, {}); }

void ReadFindings(const std::wstring& path, Findings& findings) {
    const std::wstring text = ToWide(FromUtf8(ReadBytes(path)));
    findings.isRunning = findings.isComplete = false;
    for (size_t begin = 0, end; (end = text.find(L'\n', begin)) != std::wstring::npos; begin = end + 1)
        Take(Fields(text.substr(begin, end - begin)), findings);
}

} // namespace dax::workbench::selftest
