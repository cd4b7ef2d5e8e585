// A utility of the content object library for all hosts: new identifiers.
#pragma once

#include "base/Text.h"

namespace dax {

class Utility {
public:
    // A new unique text on each call, fit as a key: 32 lower-case hexadecimal digits of a random number.
    static Text NewIdentifier();
};

} // namespace dax
