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
    // Their places, from 1 as image lists count.
    const std::unordered_map<Text, int>& Places() const { return places; }
    // For a storyboard of that type; of the key Custom when the type has none.
    int IndexOfType(TextView storyboardType) const;

private:
    std::vector<Text> keys;
    std::unordered_map<Text, int> places;
};

namespace modGeneric {

// From 1 as image lists count; 0 when the list has no picture under that key.
int ImageIndexFromKey(const Text& key, const PictureKeys& imageList);

} // namespace modGeneric

} // namespace dax
