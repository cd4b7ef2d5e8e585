// The classification of lessons: a text property of each, and what several have in common.
#pragma once

#include "content/PropertyCollection.h"

namespace dax::modClassification {

// The text of the property "Classification"; empty when there is none.
Text GetClassification(const PropertyCollection& properties);

// What was added so far: the classification when all agree, "[multiple classifications]" when they differ, empty
// when there is none at all.
class Summary {
public:
    void Add(const PropertyCollection& properties);
    Text Result() const;

private:
    bool isEmpty = true;
    bool isMixed = false;
    Text common;
};

} // namespace dax::modClassification
