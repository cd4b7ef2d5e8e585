#include "selftest/StartChecks.h"

#include "selftest/Course.h"
#include "ui/Frame.h"

namespace dax::workbench::selftest {

namespace {

std::wstring TakeStep(const Setting& setting, Frame& frame, const Frame::PlacedStep& step, bool hasPictures,
                      std::string& former) {
    const std::wstring name = frame.TakeStep(step, setting.folder);
    std::string picture = ReadBytes(setting.folder + L"\\" + name);
    Require(!picture.empty() && picture != former, L"The window looks as it did before.");
    former = std::move(picture);
    if (hasPictures) setting.recorder.Add({step.second.text, setting.folder + L"\\" + name});
    return {};
}

std::wstring RequireStarted(const std::wstring& connector, const std::wstring& content) {
    const auto ask = [&](const std::wstring& query) { return AskDatabase(content, query); };
    const std::wstring lesson = ask(L"SELECT lessonData FROM velmoraLessons WHERE lessonID = 'l2'");
    Require(lesson.find(L"A page of today") != std::wstring::npos, L"The lesson's new title was not saved.");
    Require(lesson.find(L"page\t1\tl2c\npage\t1\tl2b") != std::wstring::npos, L"The page's new place was not saved.");
    RequireSame(L"Locks left", ask(L"SELECT Count(*) FROM velmoraUserLocks"),
                std::to_wstring(lockCount - staleLockCount));
    RequireSame(L"Entries left", ask(L"SELECT Count(*) FROM velmoraLessons"), std::to_wstring(Entries().size()));
    RequireSame(L"Connections recorded",
                AskDatabase(connector, L"SELECT Count(*) FROM velmoraConnectionHistory WHERE username = 'anna'"), L"1");
    return {};
}

} // namespace

std::vector<Check> StartOn(const Setting& setting, const std::wstring& connector, const std::wstring& content,
                           bool hasPictures) {
    Options options;
    options.connector = connector;
    options.user = courseUser;
    options.start = setting.folder; // shows no questions
    options.registered = setting.options.registered;
    const auto frame = std::make_shared<Frame>(options, setting.library);
    Require(frame->Create(true), L"The workbench's window could not be created.");
    const auto former = std::make_shared<std::string>(); // the picture of the step before
    std::vector<Check> checks;
    for (const Frame::PlacedStep& step : frame->StartSteps()) {
        std::wstring name = step.second.text;
        CharUpperBuffW(name.data(), 1);
        checks.push_back({name, [&setting, frame, step, hasPictures, former] {
                              return TakeStep(setting, *frame, step, hasPictures, *former);
                          }});
    }
    checks.push_back(
        {L"The database holds all that was done", [connector, content] { return RequireStarted(connector, content); }});
    return checks;
}

std::vector<Check> StartChecks(const Setting& setting) {
    const CourseFiles files = MakeCourseFiles(setting.folder, L"start");
    return StartOn(setting, files.connector, files.content, true);
}

} // namespace dax::workbench::selftest
