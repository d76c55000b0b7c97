#include "Settings.h"

#include "CodePage.h"

#include <QList>

#include <cerrno>

namespace {

// Far longer than any file name; the rest of a huge file is never read.
constexpr qint64 SettingsReadLimit = 64 * 1024;

qsizetype LineEnd(const QByteArray &content, qsizetype from)
{
    qsizetype end = from;
    while (end < content.size() && content[end] != '\r' && content[end] != '\n')
        ++end;
    return end;
}

} // namespace

QString FirstField(const QByteArray &content)
{
    qsizetype start = 0;
    while (start < content.size() && content[start] == ' ')
        ++start;
    const qsizetype lineEnd = LineEnd(content, start);
    if (start < content.size() && content[start] == '"') {
        const qsizetype close = content.indexOf('"', start + 1);
        const qsizetype end = (close < 0 || close > lineEnd) ? lineEnd : close;
        return FromAnsi(content.mid(start + 1, end - start - 1));
    }
    qsizetype end = content.indexOf(',', start);
    if (end < 0 || end > lineEnd)
        end = lineEnd;
    return FromAnsi(content.mid(start, end - start));
}

FileError ReadSkinSetting(const QString &path, QString &setting)
{
    QByteArray content;
    setting.clear();
    if (FileError error = ReadFileStart(path, SettingsReadLimit, content))
        return error;
    setting = FirstField(content);
    return {};
}

QByteArray SettingLine(const QString &setting)
{
    const QByteArray name = ToAnsi(setting);
    for (const QByteArray &line : {name + "\r\n", '"' + name + "\"\r\n"})
        if (FirstField(line) == setting)
            return line;
    return {};
}

QString WhySettingCannotBeKept(const QString &setting)
{
    if (!SettingLine(setting).isEmpty())
        return {};
    QString lacking;
    for (const uint code : setting.toUcs4()) {
        const char32_t point = code;
        const QString character = QString::fromUcs4(&point, 1);
        if ((code == U'\r' || code == U'\n' || FromAnsi(ToAnsi(character)) != character)
            && !lacking.contains(character))
            lacking += character;
    }
    if (!lacking.isEmpty())
        return QStringLiteral("The settings file cannot hold the characters %1 of its name.")
            .arg(lacking);
    return QStringLiteral("The settings file cannot hold a name with a double quote that also "
                          "holds a comma or begins with a space or a double quote.");
}

FileError WriteSkinSetting(const QString &path, const QString &setting)
{
    const QByteArray line = SettingLine(setting);
    if (line.isEmpty())
        return {EILSEQ, WhySettingCannotBeKept(setting)};
    return ReplaceFile(path, line);
}

bool IsPlainFileName(const QString &name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..")
        && !name.contains(QLatin1Char('/')) && !name.contains(QChar(0));
}
