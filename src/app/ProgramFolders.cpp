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
    const QString own = player + QStringLiteral("/skins/") + skinName;
    if (!Installed() || QFileInfo(own).isFile())
        return own;
    return data + QStringLiteral("/skins/") + skinName;
}

ProgramFolders FindProgramFolders(const QString &programFolder)
{
    const QString installedData
        = QDir::cleanPath(programFolder + QStringLiteral("/../share/games/quorvel"));
    const bool writable = ::access(QFile::encodeName(programFolder).constData(), W_OK) == 0;
    const bool installedTree = !QFileInfo::exists(programFolder + QStringLiteral("/QVL.ZHN"))
        && QFileInfo(installedData + QStringLiteral("/QVL.ZHN")).isFile();
    if (writable && !installedTree)
        return ProgramFolders(programFolder);
    return ProgramFolders(installedData,
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
            + QStringLiteral("/quorvel"));
}
