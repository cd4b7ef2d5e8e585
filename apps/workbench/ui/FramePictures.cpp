// The pictures of the pages and of an application's start.
#include "automation/Automation.h"
#include "ui/Frame.h"
#include "ui/Picture.h"

#include <map>

namespace dax::workbench {

namespace {

void MakeFolder(const std::wstring& folder) {
    if (!CreateDirectoryW(folder.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
        throw HostError(E_FAIL, folder + L": " + DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
}

} // namespace

void Frame::DispatchPending() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) HandleMessage(message);
}

std::vector<Frame::PlacedStep> Frame::StartSteps() {
    std::map<int, PlacedStep> steps;
    for (size_t i = 0; i < pages.size(); ++i) {
        if (!Show(i) || !Current()->Problem().empty())
            throw HostError(E_FAIL, L"A page cannot be shown. " + Current()->Problem());
        for (const StartStep& step : Current()->Steps()) steps[step.place] = {i, step};
    }
    std::vector<PlacedStep> ordered;
    ordered.reserve(steps.size());
    for (const auto& [place, one] : steps) ordered.push_back(one);
    return ordered;
}

std::wstring Frame::TakeStep(const PlacedStep& placed, const std::wstring& folder) {
    const auto& [page, step] = placed;
    Show(page);
    Current()->TakeFocus();
    step.enter();
    DispatchPending();
    const std::wstring name = L"start-" + std::to_wstring(step.place + 100).substr(1) + L"-" + step.name + L".png";
    SavePicture(Handle(), folder + L"\\" + name);
    if (!Current()->Failure().empty()) throw HostError(E_FAIL, step.name + L": " + Current()->Failure());
    return name;
}

int Frame::CaptureStart(const std::wstring& folder) {
    try {
        MakeFolder(folder);
        for (const PlacedStep& placed : StartSteps())
            PrintText(TakeStep(placed, folder) + L"  " + placed.second.text + L"\n", false);
    } catch (const HostError& error) {
        PrintText(L"DAXWorkbench: " + error.Text() + L"\n", true);
        return 1;
    }
    return 0;
}

int Frame::CapturePictures(const std::wstring& folder) {
    int code = 0;
    try {
        MakeFolder(folder);
        for (size_t i = 0; i < pages.size(); ++i) {
            if (!Show(i)) throw HostError(E_FAIL, L"A page's window cannot be created.");
            const std::wstring path = folder + L"\\" + pages[i].entry->fileName + L"-";
            if (!Current()->Problem().empty()) {
                DispatchPending();
                SavePicture(Handle(), path + L"problem.png");
                PrintText(L"DAXWorkbench: " + Current()->Problem() + L"\n", true);
                code = 1;
                continue;
            }
            Current()->TakeFocus();
            for (const PageState& state : Current()->States()) {
                state.enter();
                DispatchPending();
                SavePicture(Handle(), path + state.name + L".png");
                for (const auto& [name, window] : state.controls) SavePicture(window, folder + L"\\" + name + L".png");
            }
        }
    } catch (const HostError& error) {
        PrintText(L"DAXWorkbench: " + error.Text() + L"\n", true);
        return 1;
    }
    return code;
}

} // namespace dax::workbench
