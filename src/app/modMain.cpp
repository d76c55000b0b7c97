#include "modMain.h"

#include "ProgramFolders.h"
#include "files/Settings.h"
#include "frmMain.h"
#include "platform/QtPlatform.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>

namespace {

// Anything of that name counts, a plain file or a dangling link too: only a
// name that is free is made into a folder.
bool NameExists(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

void ReportStartupFailure(
    Platform &platform, const QString &what, const QString &path, const QString &reason)
{
    platform.MsgBox(nullptr,
        what + QStringLiteral("\r\n") + QDir::toNativeSeparators(path) + QStringLiteral("\r\n")
            + reason,
        Buttons::Ok, Icon::Critical, QStringLiteral("Quorvel - Error"));
}

bool EnsureFolder(const QString &folder, const QString &name, Platform &platform)
{
    const QString path = folder + QLatin1Char('/') + name;
    if (NameExists(path))
        return true;
    if (::mkdir(QFile::encodeName(path).constData(), 0777) == 0)
        return true;
    ReportStartupFailure(platform,
        QStringLiteral("An error has occurred while attempting to create the folder"), path,
        QString::fromLocal8Bit(std::strerror(errno)));
    return false;
}

// The player's folder of an installed game, with every folder above it
// that is missing.
bool EnsurePlayerFolder(const QString &folder, Platform &platform)
{
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(folder).toStdString(), error);
    if (!error)
        return true;
    ReportStartupFailure(platform,
        QStringLiteral("An error has occurred while attempting to create the folder"), folder,
        QString::fromLocal8Bit(error.message()));
    return false;
}

// An unreadable or empty setting, or one that would look outside the skins
// folders, counts as naming a missing skin.
bool SettingNamesPresentSkin(const ProgramFolders &folders, const QString &settingsPath)
{
    QString setting;
    if (ReadSkinSetting(settingsPath, setting))
        return false;
    return IsPlainFileName(setting) && QFileInfo(folders.SkinPath(setting)).isFile();
}

} // namespace

void InitAppFiles(const ProgramFolders &folders, Platform &platform, bool &ok)
{
    const QString &player = folders.player;
    ok = (!folders.Installed() || EnsurePlayerFolder(player, platform))
        && EnsureFolder(player, QStringLiteral("saved"), platform)
        && EnsureFolder(player, QStringLiteral("skins"), platform);
    if (!ok)
        return;
    const QString settingsPath = player + QStringLiteral("/qvl.ini");
    if (QFileInfo(settingsPath).isFile() && SettingNamesPresentSkin(folders, settingsPath))
        return;
    if (const FileError error = WriteSkinSetting(settingsPath, DefaultSkin)) {
        ReportStartupFailure(platform,
            QStringLiteral("An error has occurred while attempting to write the settings file"),
            settingsPath, error.description);
        ok = false;
    }
}

int Main(int argc, char **argv)
{
    QApplication app(argc, argv);
    app.setWindowIcon(QIcon(QStringLiteral(":/quorvel/icon.png")));
    QtPlatform platform;
    const ProgramFolders folders = FindProgramFolders(QCoreApplication::applicationDirPath());
    bool ok = false;
    InitAppFiles(folders, platform, ok);
    if (!ok)
        return 1;
    frmMain form(platform, folders);
    form.Form_Load();
    if (form.Ended())
        return 1;
    return app.exec();
}
