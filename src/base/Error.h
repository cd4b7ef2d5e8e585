// What the portable core throws, itself or as a class derived from it.
#pragma once

#include "base/ErrorNumbers.h"
#include "base/Text.h"

#include <exception>

namespace dax {

class Error : public std::exception {
public:
    // A password in the description is masked (base/Secrets.h), also in texts of drivers, which may repeat what they
    // were given.
    Error(int32_t number, const Text& description);
    explicit Error(const Text& description) : Error(ErrorNumbers::Unspecified, description) {}
    int32_t Number() const { return number; }
    const Text& Description() const { return description; }
    const char* what() const noexcept override { return utf8.c_str(); }

private:
    int32_t number;
    Text description;
    std::string utf8;
};

// Inside a handler: whatever was thrown, as an Error with a number of ErrorNumbers.h.
Error CurrentError();

} // namespace dax
