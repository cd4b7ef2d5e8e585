// The one exception of the system.
#pragma once

#include "base/Text.h"

#include <cstdint>
#include <exception>

namespace dax {

// Numbers are those that hosts know from ADO and automation (0x80004005 is -2147467259).
namespace ErrorNumbers {
inline constexpr int32_t OutOfMemory = 7;
inline constexpr int32_t PathFileAccess = 75;
inline constexpr int32_t TypeMismatch = 13;
inline constexpr int32_t InvalidUseOfNull = 94;
inline constexpr int32_t Automation = -2147221504;     // 80040000: raised by the controls themselves
inline constexpr int32_t Conflict = -2147221503;       // 80040001: another author has changed what would be saved
inline constexpr int32_t Unspecified = -2147467259;    // 80004005
inline constexpr int32_t SyntaxOrColumn = -2147217900; // 80040E14
inline constexpr int32_t NoTable = -2147217865;        // 80040E37
inline constexpr int32_t Integrity = -2147217873;      // 80040E2F
inline constexpr int32_t Authentication = -2147217843; // 80040E4D
inline constexpr int32_t DataOverflow = -2147217833;   // 80040E57
inline constexpr int32_t DataMismatch = -2147217913;   // 80040E07
inline constexpr int32_t Permission = -2147217911;     // 80040E09
inline constexpr int32_t Timeout = -2147217871;        // 80040E31
} // namespace ErrorNumbers

class Error : public std::exception {
public:
    // A password in the description is masked (base/Secrets.h), whoever wrote it: drivers repeat what they were given.
    Error(int32_t number, const Text& description);
    int32_t Number() const { return number; }
    const Text& Description() const { return description; }
    const char* what() const noexcept override { return utf8.c_str(); }

private:
    int32_t number;
    Text description;
    std::string utf8;
};

// Inside a handler: whatever was thrown, as an Error with a number that hosts know.
Error CurrentError();

} // namespace dax
