// The settings file of any content: its first field is one line at most,
// and a field the game takes as a skin's name keeps the picture's path
// inside the skins folder and reads back the same once written.
#include "Checks.h"
#include "files/CodePage.h"
#include "files/Settings.h"

#include <QDir>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString field = FirstField(bytes);
    Require(!field.contains(QLatin1Char('\r')) && !field.contains(QLatin1Char('\n')));
    Require(field.size() <= bytes.size());
    if (!IsPlainFileName(field))
        return 0;
    const QString skins = QStringLiteral("/game/skins/");
    const QString path = QDir::cleanPath(skins + field);
    Require(path.startsWith(skins) && path.size() > skins.size()
        && !path.mid(skins.size()).contains(QLatin1Char('/')));
    // The line the game writes for it. A name that starts with a space or a
    // quote, or holds a comma, is cut when read again; the player chose a
    // file of such a name, and start-up then falls back to the default.
    const QString again = FirstField(ToAnsi(field) + "\r\n");
    if (!field.startsWith(QLatin1Char(' ')) && !field.startsWith(QLatin1Char('"'))
        && !field.contains(QLatin1Char(',')))
        Require(again == field);
    return 0;
}
