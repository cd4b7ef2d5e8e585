// What a mistyped word probably meant.
#pragma once

#include "base/Text.h"

namespace dax::cli {

// How many letters differ (wrong, missing, too many, or two in the wrong order), counted no further than `most` + 1.
// Letter case makes no difference.
size_t Distance(TextView a, TextView b, size_t most);

// Collects candidates; the best one is the first of those that differ least, if any is near enough to be meant.
class Suggestion {
public:
    explicit Suggestion(TextView word);
    void Offer(TextView candidate);
    // " Did you mean 'validate'?", or empty.
    Text Question() const;

private:
    Text word, best;
    size_t least; // the best one's distance; at first one more than is allowed
};

} // namespace dax::cli
