#include "selftest/Report.h"

#include "com/Variant.h"

#include <cwchar>

namespace dax::workbench::selftest {

namespace {

constexpr char head[] = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><meta name="viewport" content="width=device-width, initial-scale=1">
<title>DAXControls self-test</title>
<style>
body { font: 15px/1.45 "Segoe UI", "Noto Sans", Arial, sans-serif; color: #1b1b1b; background: #fff;
  max-width: 76rem; margin: 0 auto; padding: 1.5rem; }
h1 { font-size: 1.7rem; margin: 0 0 .3rem; }
h2 { font-size: 1.15rem; margin: 2rem 0 .4rem; border-bottom: 1px solid #c8c8c8; padding-bottom: .2rem; }
h2 small { font-weight: normal; color: #5a5a5a; font-size: .9rem; }
.result { font-size: 1.2rem; padding: .5rem .8rem; margin: .8rem 0; border-left: .4rem solid; }
.good { border-color: #197a2e; background: #eaf6ec; }
.bad { border-color: #b3261e; background: #fcebea; }
table { border-collapse: collapse; width: 100%; }
td, th { text-align: left; vertical-align: top; padding: .25rem .6rem .25rem 0; border-bottom: 1px solid #e6e6e6; }
th { width: 16rem; } td.name { width: 34%; } td.time { width: 5rem; text-align: right; color: #5a5a5a; white-space: nowrap; }
td.details { overflow-wrap: anywhere; color: #3a3a3a; }
td.outcome { width: 5rem; font-weight: 600; }
.passed { color: #197a2e; } .failed { color: #b3261e; } .skipped { color: #765b00; }
figure { margin: .8rem 0; } figcaption { color: #3a3a3a; margin-bottom: .2rem; }
img { max-width: 100%; border: 1px solid #b8b8b8; }
</style></head><body>
)";

const char* Word(Outcome outcome) {
    return outcome == Outcome::Passed ? "passed" : outcome == Outcome::Failed ? "failed" : "skipped";
}

std::string Base64(const std::string& bytes) {
    static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        unsigned bits = 0;
        for (size_t k = 0; k < 3; ++k)
            bits = bits << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (size_t k = 0; k < 4; ++k) text += i + k <= bytes.size() ? digits[bits >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

class Writer {
public:
    explicit Writer(const Report& shown) : report(shown) {}

    std::string Write() {
        const Counts counts = CountResults(report.groups);
        const bool isGood = counts.failed == 0 && counts.passed > 0;
        html = head;
        html += "<h1>DAXControls self-test</h1>\n<p>" + Escaped(Now()) + ", " + Seconds(report.milliseconds) + "</p>\n";
        html += std::string("<p class=\"result ") + (isGood ? "good" : "bad") + "\">" +
                (isGood ? "The controls work on this machine: " : "Something does not work on this machine: ") +
                Escaped(Describe(counts)) + ".</p>\n";
        AddFacts();
        AddFailures();
        for (const ReportGroup& group : report.groups) AddGroup(group);
        html += "</body></html>\n";
        return std::move(html);
    }

private:
    static std::wstring Now() {
        SYSTEMTIME time;
        GetLocalTime(&time);
        wchar_t text[40];
        std::swprintf(text, std::size(text), L"%04d-%02d-%02d %02d:%02d", time.wYear, time.wMonth, time.wDay,
                      time.wHour, time.wMinute);
        return text;
    }
    static std::string Seconds(ULONGLONG milliseconds) {
        return std::to_string(milliseconds / 1000) + '.' + std::to_string(milliseconds % 1000 / 100) + " s";
    }
    std::string Escaped(std::wstring text) const {
        for (const auto& [folder, name] : report.hiddenFolders)
            for (size_t at; !folder.empty() && (at = text.find(folder)) != std::wstring::npos;)
                text.replace(at, folder.size(), name);
        std::string escaped;
        for (const char unit : ToUtf8(FromWide(text))) {
            if (unit == '&')
                escaped += "&amp;";
            else if (unit == '<')
                escaped += "&lt;";
            else if (unit == '>')
                escaped += "&gt;";
            else if (unit == '"')
                escaped += "&quot;";
            else if (unit == '\n')
                escaped += "<br>";
            else
                escaped += unit;
        }
        return escaped;
    }

    void AddFacts() {
        html += "<table>\n";
        for (const ReportGroup& group : report.groups)
            for (const auto& [name, value] : group.findings.facts)
                html += "<tr><th>" + Escaped(name) + "</th><td>" + Escaped(value) + "</td></tr>\n";
        html += "</table>\n";
    }

    // First, where they are seen.
    void AddFailures() {
        bool isFirst = true;
        for (const ReportGroup& group : report.groups)
            for (const Result& result : group.findings.results) {
                if (result.outcome != Outcome::Failed) continue;
                if (isFirst) html += "<h2>What has failed</h2>\n<table>\n";
                isFirst = false;
                html += "<tr><td class=\"name\">" + Escaped(group.title) + ": " + Escaped(result.name) +
                        "</td><td class=\"details\">" + Escaped(result.text) + "</td></tr>\n";
            }
        if (!isFirst) html += "</table>\n";
    }

    void AddGroup(const ReportGroup& group) {
        html += "<h2>" + Escaped(group.title) + " <small>" + Seconds(group.milliseconds) + "</small></h2>\n<table>\n";
        for (const Result& result : group.findings.results) {
            const std::string word = Word(result.outcome);
            html += "<tr><td class=\"outcome " + word + "\">" + word + "</td><td class=\"name\">" +
                    Escaped(result.name) + "</td><td class=\"details\">" + Escaped(result.text) +
                    "</td><td class=\"time\">" + std::to_string(result.milliseconds) + " ms</td></tr>\n";
        }
        html += "</table>\n";
        for (const Result& result : group.findings.results)
            for (const Shot& shot : result.shots) {
                const std::string bytes = ReadBytes(shot.path);
                if (bytes.empty()) continue;
                html += "<figure><figcaption>" + Escaped(shot.caption) + "</figcaption><img alt=\"" +
                        Escaped(shot.caption) + "\" src=\"data:image/png;base64," + Base64(bytes) + "\"></figure>\n";
            }
    }

    const Report& report;
    std::string html;
};

} // namespace

Counts CountResults(const std::vector<ReportGroup>& groups) {
    Counts counts;
    for (const ReportGroup& group : groups)
        for (const Result& result : group.findings.results)
            ++(result.outcome == Outcome::Passed   ? counts.passed
               : result.outcome == Outcome::Failed ? counts.failed
                                                   : counts.skipped);
    return counts;
}

std::wstring Describe(const Counts& counts) {
    return std::to_wstring(counts.passed) + L" passed, " + std::to_wstring(counts.failed) + L" failed, " +
           std::to_wstring(counts.skipped) + L" skipped";
}

std::string WriteHtml(const Report& report) { return Writer(report).Write(); }

} // namespace dax::workbench::selftest
