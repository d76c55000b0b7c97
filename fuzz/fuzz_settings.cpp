// The settings file of any content: its first field is one line at most,
// a field the game takes as a skin's name keeps the picture's path inside
// the skins folder, and every field reads back the same once written.
#include "Checks.h"
#include "files/Settings.h"

#include <QDir>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString field = FirstField(bytes);
    Require(!field.contains(QLatin1Char('\r')) && !field.contains(QLatin1Char('\n')));
    Require(field.size() <= bytes.size());
    // The line the game writes for it reads back the same: whatever a file
    // can hold survives being written again.
    const QByteArray line = SettingLine(field);
    Require(!line.isEmpty() && FirstField(line) == field);
    if (!IsPlainFileName(field))
        return 0;
    const QString skins = QStringLiteral("/game/skins/");
    const QString path = QDir::cleanPath(skins + field);
    Require(path.startsWith(skins) && path.size() > skins.size()
        && !path.mid(skins.size()).contains(QLatin1Char('/')));
    return 0;
}
