// The keys of an image list: which picture of the list belongs to which key.
#pragma once

#include "base/Text.h"

#include <unordered_map>
#include <vector>

namespace dax {

class PictureKeys {
public:
    // Every list must have these; every other key is a storyboard type in lower case.
    static constexpr TextView Root = u"_root";           // a map
    static constexpr TextView Undefined = u"_undefined"; // no type, or no storyboard
    static constexpr TextView Custom = u"_custom";       // a type without a picture of its own

    PictureKeys();                                // our own pictures
    explicit PictureKeys(std::vector<Text> keys); // those of a host, in the order of its pictures

    const std::vector<Text>& Keys() const { return keys; }
    // From 1 as image lists count; 0 when the list has no such key.
    int Index(const Text& key) const;
    int Index(TextView key) const { return Index(Text(key)); }
    // For a storyboard of that type; of the key Custom when the type has none.
    int IndexOfType(TextView storyboardType) const;

private:
    std::vector<Text> keys;
    std::unordered_map<Text, int> places;
};

} // namespace dax
