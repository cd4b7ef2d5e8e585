#include "Suggestion.h"

#include "base/TextComparison.h"

#include <algorithm>

namespace dax::cli {

size_t Distance(TextView first, TextView second, size_t most) {
    const Text a = FoldCase(first), b = FoldCase(second);
    const size_t difference = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
    if (difference > most) return most + 1;
    // Row i holds the distances of a's first i letters to each beginning of b.
    std::vector<size_t> before, last(b.size() + 1), row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) last[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0u : 1u)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = last;
        last = row;
    }
    return std::min(last.back(), most + 1);
}

Suggestion::Suggestion(TextView mistyped)
    : word(mistyped), least(std::clamp<size_t>(mistyped.size() / 3, mistyped.size() > 1 ? 1 : 0, 3) + 1) {}

void Suggestion::Offer(TextView candidate) {
    if (candidate.empty() || least == 0) return;
    // The beginning of a word that is long enough to be distinguished from others means that word.
    const bool isBeginning = word.size() >= 4 && candidate.starts_with(word);
    const size_t distance = isBeginning ? std::min<size_t>(least, 2) - 1 : Distance(word, candidate, least - 1);
    if (distance >= least) return;
    least = distance;
    best = candidate;
}

Text Suggestion::Question() const { return best.empty() ? Text() : u" Did you mean '" + best + u"'?"; }

} // namespace dax::cli
