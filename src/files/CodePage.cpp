// Windows-1252 by table. Qt's own encoder writes 0x1A for a character it
// cannot hold; the game's files want "?", and a genuine U+001A would be
// indistinguishable, so the conversion is done here. Only 0x80 to 0x9F differ
// from Latin-1; the five unassigned bytes there map to the C1 controls of the
// same value, as the desktop that wrote the first files did.
#include "CodePage.h"

#include <array>

namespace {

constexpr std::array<char16_t, 32> High = {
    0x20AC,
    0x0081,
    0x201A,
    0x0192,
    0x201E,
    0x2026,
    0x2020,
    0x2021,
    0x02C6,
    0x2030,
    0x0160,
    0x2039,
    0x0152,
    0x008D,
    0x017D,
    0x008F,
    0x0090,
    0x2018,
    0x2019,
    0x201C,
    0x201D,
    0x2022,
    0x2013,
    0x2014,
    0x02DC,
    0x2122,
    0x0161,
    0x203A,
    0x0153,
    0x009D,
    0x017E,
    0x0178,
};

constexpr bool IsUnassigned(char16_t code)
{
    return code == 0x81 || code == 0x8D || code == 0x8F || code == 0x90 || code == 0x9D;
}

} // namespace

int AnsiCode(QChar character)
{
    const char16_t code = character.unicode();
    if (code < 0x80 || (code >= 0xA0 && code <= 0xFF))
        return code;
    if (IsUnassigned(code))
        return code;
    for (size_t i = 0; i < High.size(); ++i)
        if (High[i] == code)
            return static_cast<int>(0x80 + i);
    return '?';
}

QByteArray ToAnsi(const QString &text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (const QChar character : text)
        bytes.append(static_cast<char>(AnsiCode(character)));
    return bytes;
}

QString FromAnsi(const QByteArray &bytes)
{
    QString text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        text.append(code >= 0x80 && code < 0xA0 ? QChar(High[code - 0x80]) : QChar(code));
    }
    return text;
}
