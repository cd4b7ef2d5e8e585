#include "lessonmap/PictureKeys.h"

#include "base/TextComparison.h"

namespace dax {

PictureKeys::PictureKeys()
    : PictureKeys({Text(Root), Text(Undefined), Text(Custom), u"title", u"text", u"picture", u"video", u"audio",
                   u"animation", u"question", u"exercise", u"simulation", u"test", u"summary", u"menu"}) {}

PictureKeys::PictureKeys(std::vector<Text> newKeys) : keys(std::move(newKeys)) {
    for (size_t i = 0; i < keys.size(); ++i) {
        if (!keys[i].empty()) places.emplace(keys[i], static_cast<int>(i) + 1); // the first of equal keys counts
    }
}

int modGeneric::ImageIndexFromKey(const Text& key, const PictureKeys& imageList) {
    const auto place = imageList.Places().find(key);
    return place == imageList.Places().end() ? 0 : place->second;
}

int PictureKeys::IndexOfType(TextView storyboardType) const {
    using modGeneric::ImageIndexFromKey;
    const int index = ImageIndexFromKey(storyboardType.empty() ? Text(Undefined) : LowerCase(storyboardType), *this);
    return index ? index : ImageIndexFromKey(Text(Custom), *this);
}

} // namespace dax
