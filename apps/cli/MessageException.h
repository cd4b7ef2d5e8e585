// What the program's own exceptions have in common: the message that the user reads.
#pragma once

#include "base/Text.h"

#include <exception>

namespace dax::cli {

class MessageException : public std::exception {
public:
    explicit MessageException(Text text) : message(std::move(text)) {}
    const Text& Message() const { return message; }

private:
    Text message;
};

} // namespace dax::cli
