// One page of a lesson, as the lesson map sees it. It may be a host's object.
#pragma once

#include "base/Text.h"

namespace dax {

class Storyboard {
public:
    virtual ~Storyboard() = default;
    virtual Text SBID() const = 0; // its identity
    virtual Text Title() const = 0;
    virtual Text Identifier() const = 0;     // the author's short identifier
    virtual Text StoryboardType() const = 0; // names the page type; may be empty
};

} // namespace dax
