#include "content/PropertyCollection.h"

#include "base/modGeneric.h"
#include "content/PropertyText.h"

namespace dax {

const DefaultPropertyCollection::Property* DefaultPropertyCollection::Find(TextView requested) const {
    for (const Property& property : properties) {
        if (EqualNoCase(property.name, requested)) return &property;
    }
    return nullptr;
}

Value DefaultPropertyCollection::GetValue(TextView requested, const Value& defaultValue) const {
    const Property* const property = Find(requested);
    return property ? property->value : defaultValue;
}

void DefaultPropertyCollection::SetValue(TextView requested, const Value& value) {
    if (const Property* const property = Find(requested)) {
        properties[static_cast<size_t>(property - properties.data())].value = value;
    } else {
        properties.push_back({Text(requested), value});
    }
}

void DefaultPropertyCollection::Load(TextView text) {
    properties.clear();
    PropertyText::Read(text, [this](bool isHeading, Text&& property, Value&& value) {
        if (isHeading) {
            name = std::move(property);
        } else if (Find(property)) {
            SetValue(property, value);
        } else {
            properties.push_back({std::move(property), std::move(value)});
        }
    });
}

Text DefaultPropertyCollection::Save() const {
    Text text;
    if (!name.empty()) PropertyText::WriteHeading(text, name);
    for (const Property& property : properties) PropertyText::WriteValue(text, property.name, property.value);
    return text;
}

std::vector<Text> DefaultPropertyCollection::ValueNames() const {
    std::vector<Text> names;
    for (const Property& property : properties) names.push_back(property.name);
    return names;
}

std::shared_ptr<PropertyCollection> NewPropertyCollection() { return std::make_shared<DefaultPropertyCollection>(); }

int32_t GetNumber(const PropertyCollection& properties, TextView name, int32_t defaultValue) {
    return modGeneric::VariantToLong(properties.GetValue(name, Value()), defaultValue);
}

Text GetText(const PropertyCollection& properties, TextView name, const Text& defaultValue) {
    return modGeneric::VariantToString(properties.GetValue(name, Value()), defaultValue);
}

} // namespace dax
