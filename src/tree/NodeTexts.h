// The three texts of a node in one piece of memory. With three std::u16string instead, a lesson in the editor takes 521
// bytes, not 377 (100,000 lessons).
#pragma once

#include "base/PackedText.h"

#include <array>
#include <cstdint>
#include <memory>

namespace dax {

class NodeTexts {
public:
    enum Which { Key, Caption, Tag, count };

    NodeTexts() = default;
    NodeTexts(TextView key, TextView caption, TextView tag) { Assign({key, caption, tag}); }

    Text Get(Which which) const;
    bool Is(Which which, TextView text) const;
    bool IsEmpty(Which which) const { return lengths[which] == 0; }
    // Throws, and changes nothing, when memory is short or a text is too long.
    void Set(Which which, TextView text);

private:
    void Assign(const std::array<TextView, count>& texts);
    const char* Begin(Which which) const;

    std::unique_ptr<char[]> bytes;
    uint32_t lengths[count] = {}; // in units
    bool isWide = false;
};

} // namespace dax
