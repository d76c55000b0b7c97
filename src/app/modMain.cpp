#include "modMain.h"

#include "ProgramFolders.h"
#include "files/RawFile.h"
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
#include <unistd.h>

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

// The folder of the running program as the file system names it. Qt gives
// an empty or altered name for one its file-name encoding cannot hold, and
// every path built on that would land elsewhere, the root included: such a
// folder is refused, named as near as the encoding allows.
QString ProgramFolder(Platform &platform)
{
    QByteArray exe(4096, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", exe.data(), size_t(exe.size()));
    const QByteArray native
        = length > 0 ? exe.left(exe.left(length).lastIndexOf('/')) : QByteArray();
    QString folder = QCoreApplication::applicationDirPath();
    const bool faithful
        = native.isEmpty() || QFile::encodeName(QFile::decodeName(native)) == native;
    if (QFileInfo(folder).isAbsolute() && faithful)
        return folder;
    ReportStartupFailure(platform,
        QStringLiteral("An error has occurred while attempting to use the program's folder"),
        native.isEmpty() ? folder : QFile::decodeName(native), ErrorFromErrno(EILSEQ).description);
    return {};
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
    RemoveReplaceLeftovers(settingsPath);
    RemoveNewFileLeftovers(player + QStringLiteral("/saved"));
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
    const QString folder = ProgramFolder(platform);
    if (folder.isEmpty())
        return 1;
    const ProgramFolders folders = FindProgramFolders(folder);
    bool ok = false;
    InitAppFiles(folders, platform, ok);
    if (!ok)
        return 1;
    frmMain form(platform, folders);
    form.Form_Load();
    if (form.Ended())
        return 1;
    if (!form.isVisible())
        return 0; // left while the skin was being read
    return app.exec();
}
