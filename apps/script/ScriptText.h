// The text of a script, searched for what explains an error.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace dax {

class ScriptText {
public:
    ScriptText() = default;
    explicit ScriptText(const std::wstring& text);

    // Without the blanks at its ends; the first line is 0. Empty when there is none.
    std::wstring Line(size_t number) const;

    struct Procedure {
        size_t line;
        size_t parameters;
    };
    // Where VBScript's Sub or Function of that name begins, whatever the case.
    std::optional<Procedure> FindProcedure(const std::wstring& name) const;
    // The argument of CreateObject or ActiveXObject in the line, when it is a literal.
    std::wstring ClassNameIn(size_t line) const;

private:
    std::vector<std::wstring> lines;
};

// Why no object of this class can be created, as a sentence.
std::wstring DescribeMissingClass(const std::wstring& name, long result);

} // namespace dax
