#include "ProgramFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <unistd.h>

QStringList ProgramFolders::SkinFolders() const
{
    if (!Installed())
        return {data + QStringLiteral("/skins")};
    return {player + QStringLiteral("/skins"), data + QStringLiteral("/skins")};
}

QString ProgramFolders::SkinPath(const QString &skinName) const
{
    QString own = player + QStringLiteral("/skins/") + skinName;
    if (!Installed() || QFileInfo(own).isFile())
        return own;
    return data + QStringLiteral("/skins/") + skinName;
}

ProgramFolders FindProgramFolders(const QString &programFolder)
{
    const QString installedData
        = QDir::cleanPath(programFolder + QStringLiteral("/../share/games/quorvel"));
    const bool installed = QFileInfo(installedData + QStringLiteral("/QVL.ZHN")).isFile()
        && (::access(QFile::encodeName(programFolder).constData(), W_OK) != 0
            || !QFileInfo::exists(programFolder + QStringLiteral("/QVL.ZHN")));
    if (!installed)
        return ProgramFolders(programFolder);
    return ProgramFolders(installedData,
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
            + QStringLiteral("/quorvel"));
}
