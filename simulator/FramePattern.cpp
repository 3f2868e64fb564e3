#include "FramePattern.h"

namespace {

constexpr char anyDigit = '?';
constexpr std::string_view digitsAndGap = "0123456789ABCDEF ";

bool isNumber(char letter)
{
    return letter != anyDigit && digitsAndGap.find(letter) == std::string_view::npos;
}

} // namespace

std::optional<FrameNumbers> matchFrame(const QByteArray& frame, std::string_view pattern)
{
    // Fast path: most patterns have another length.
    if (static_cast<std::size_t>(frame.size()) * 3 != pattern.size() + 1)
        return std::nullopt;
    const QByteArray given = frame.toHex(' ').toUpper();
    FrameNumbers numbers;
    for (int place = 0; place < given.size(); ++place) {
        const char wanted = pattern[static_cast<std::size_t>(place)];
        const char digit = given.at(place);
        if (isNumber(wanted))
            numbers[wanted] = numbers[wanted] * 16 + static_cast<int>(digitsAndGap.find(digit));
        else if (wanted != digit && wanted != anyDigit)
            return std::nullopt;
    }
    return numbers;
}

QByteArray makeFrame(std::string_view pattern, FrameNumbers numbers)
{
    QByteArray digits(pattern.data(), static_cast<int>(pattern.size()));
    for (auto place = digits.size() - 1; place >= 0; --place) {
        const char letter = digits.at(place);
        if (!isNumber(letter))
            continue;
        digits[place] = digitsAndGap[static_cast<std::size_t>(numbers[letter] & 0xF)];
        numbers[letter] >>= 4;
    }
    return QByteArray::fromHex(digits);
}

QString hexadecimal(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}
