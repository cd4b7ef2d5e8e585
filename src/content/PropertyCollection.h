// A named collection of named values, as the content object library keeps the properties of lessons.
#pragma once

#include "base/Value.h"

#include <functional>
#include <memory>
#include <vector>

namespace dax {

// What the controls need of such a collection, ours or the host's. Names match without regard to case (ASCII).
class PropertyCollection {
public:
    virtual ~PropertyCollection() = default;
    virtual Text Name() const = 0;
    virtual void SetName(const Text& name) = 0;
    // The default when there is no such value.
    virtual Value GetValue(TextView name, const Value& defaultValue) const = 0;
    virtual void SetValue(TextView name, const Value& value) = 0;
    // Replaces all values by those of a stored text.
    virtual void Load(TextView text) = 0;
    virtual Text Save() const = 0;
    virtual std::vector<Text> ValueNames() const = 0; // in the order in which they came
};

using PropertyCollectionFactory = std::function<std::shared_ptr<PropertyCollection>()>;

// Our own. The text format is described in docs/content-objects.md; loading takes every text, what is no property in
// it is left out.
class DefaultPropertyCollection : public PropertyCollection {
public:
    Text Name() const override { return name; }
    void SetName(const Text& newName) override { name = newName; }
    Value GetValue(TextView name, const Value& defaultValue) const override;
    void SetValue(TextView name, const Value& value) override;
    void Load(TextView text) override;
    Text Save() const override;
    std::vector<Text> ValueNames() const override;

private:
    struct Property {
        Text name;
        Value value;
    };
    // Few properties: looked for one by one.
    const Property* Find(TextView requested) const;

    Text name;
    std::vector<Property> properties;
};

std::shared_ptr<PropertyCollection> NewPropertyCollection();

// Convenience over GetValue: a value of another kind is converted, the default when it cannot be.
int32_t GetNumber(const PropertyCollection& properties, TextView name, int32_t defaultValue);
Text GetText(const PropertyCollection& properties, TextView name, const Text& defaultValue);

} // namespace dax
