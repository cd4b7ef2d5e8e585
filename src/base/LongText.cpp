#include "base/LongText.h"

#include "base/TextReader.h"

#include <algorithm>
#include <limits>

namespace dax {

namespace {

constexpr int64_t MaxExponent = 1'000'000'000; // far beyond what any text has digits for

class LongReader {
public:
    explicit LongReader(TextView text) : rest(text) {}

    std::optional<int32_t> Read() {
        SkipSpaces();
        if (Take(u'&')) return ReadBits();
        while (TakeMark(true)) {
        }
        if (!ReadDigits()) return {};
        while (TakeMark(false)) {
        }
        if (!rest.empty() || isOpen) return {};
        return Rounded();
    }

private:
    bool Take(char16_t unit) {
        if (rest.empty() || rest.front() != unit) return false;
        rest.remove_prefix(1);
        return true;
    }
    void SkipSpaces() {
        while (!rest.empty() && TextReader::IsBlank(rest.front())) rest.remove_prefix(1);
    }

    // One of the marks before or after the digits; of signs and brackets there is one, on one side.
    bool TakeMark(bool isInFront) {
        if (rest.empty()) return false;
        const char16_t unit = rest.front();
        if (unit == u'$' && !hasCurrency) {
            hasCurrency = true;
        } else if (unit == u')' && isOpen && !isInFront) {
            isOpen = false;
        } else if (!hasSign && (unit == u'+' || unit == u'-' || (unit == u'(' && isInFront))) {
            hasSign = true;
            isNegative = unit != u'+';
            isOpen = unit == u'(';
        } else if (!TextReader::IsBlank(unit)) {
            return false;
        }
        rest.remove_prefix(1);
        return true;
    }

    // The number is 0.DIGITS times ten to the power of `magnitude`.
    bool ReadDigits() {
        bool isBehindPoint = false, hasDigits = false;
        for (; !rest.empty(); rest.remove_prefix(1)) {
            const char16_t unit = rest.front();
            if (TextReader::IsDigit(unit)) {
                hasDigits = true;
                if (!digits.empty() || unit != u'0') {
                    digits.push_back(unit);
                    if (!isBehindPoint) ++magnitude;
                } else if (isBehindPoint) {
                    --magnitude;
                }
            } else if (unit == u'.' && !isBehindPoint) {
                isBehindPoint = true;
            } else if (unit != u',' || isBehindPoint || !hasDigits) {
                break;
            }
        }
        return hasDigits && ReadExponent();
    }

    bool ReadExponent() {
        if (!Take(u'e') && !Take(u'E') && !Take(u'd') && !Take(u'D')) return true;
        const bool isBelow = Take(u'-');
        if (!isBelow) (void)Take(u'+');
        if (rest.empty() || !TextReader::IsDigit(rest.front())) return false;
        int64_t exponent = 0;
        for (; !rest.empty() && TextReader::IsDigit(rest.front()); rest.remove_prefix(1))
            exponent = std::min(exponent * 10 + (rest.front() - u'0'), MaxExponent);
        magnitude += isBelow ? -exponent : exponent;
        return true;
    }

    std::optional<int32_t> ReadBits() {
        const bool isHexadecimal = Take(u'H') || Take(u'h');
        if (!isHexadecimal && !Take(u'O') && !Take(u'o')) return {};
        const int base = isHexadecimal ? 16 : 8;
        uint64_t bits = 0;
        bool hasDigits = false;
        for (; !rest.empty(); rest.remove_prefix(1), hasDigits = true) {
            const char16_t unit = rest.front();
            int digit = base;
            if (TextReader::IsDigit(unit)) digit = unit - u'0';
            if (unit >= u'a' && unit <= u'f') digit = unit - u'a' + 10;
            if (unit >= u'A' && unit <= u'F') digit = unit - u'A' + 10;
            if (digit >= base) break;
            bits = bits * static_cast<uint64_t>(base) + static_cast<uint64_t>(digit);
            if (bits > std::numeric_limits<uint32_t>::max()) return {};
        }
        (void)Take(u'&');
        SkipSpaces();
        if (!hasDigits || !rest.empty()) return {};
        return static_cast<int32_t>(static_cast<uint32_t>(bits));
    }

    // Digit by digit: a conversion through a binary fraction would take a little more than a half for a half.
    std::optional<int32_t> Rounded() const {
        if (digits.empty() || magnitude < 0) return 0;
        if (magnitude > std::numeric_limits<int32_t>::digits10 + 1) return {};
        const auto whole = static_cast<size_t>(magnitude);
        int64_t number = 0;
        for (size_t i = 0; i < whole; ++i) number = number * 10 + (i < digits.size() ? digits[i] - u'0' : 0);
        if (whole < digits.size()) {
            const bool isAboveHalf = digits[whole] > u'5' ||
                                     (digits[whole] == u'5' && digits.find_first_not_of(u'0', whole + 1) != Text::npos);
            if (isAboveHalf || (digits[whole] == u'5' && number % 2 != 0)) ++number;
        }
        if (isNegative) number = -number;
        if (number < std::numeric_limits<int32_t>::min() || number > std::numeric_limits<int32_t>::max()) return {};
        return static_cast<int32_t>(number);
    }

    TextView rest;
    Text digits; // without zeros in front
    int64_t magnitude = 0;
    bool hasSign = false, isNegative = false, isOpen = false, hasCurrency = false;
};

} // namespace

std::optional<int32_t> ReadLong(TextView text) { return LongReader(text).Read(); }

} // namespace dax
