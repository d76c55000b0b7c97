#include "modMain.h"

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
#include <sys/stat.h>

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

// An unreadable or empty setting, or one that would look outside the skins
// folder, counts as naming a missing skin.
bool SettingNamesPresentSkin(const QString &folder, const QString &settingsPath)
{
    QString setting;
    if (ReadSkinSetting(settingsPath, setting))
        return false;
    return IsPlainFileName(setting)
        && QFileInfo(folder + QStringLiteral("/skins/") + setting).isFile();
}

} // namespace

void InitAppFiles(const QString &programFolder, Platform &platform, bool &ok)
{
    ok = EnsureFolder(programFolder, QStringLiteral("saved"), platform)
        && EnsureFolder(programFolder, QStringLiteral("skins"), platform);
    if (!ok)
        return;
    const QString settingsPath = programFolder + QStringLiteral("/qvl.ini");
    if (QFileInfo(settingsPath).isFile() && SettingNamesPresentSkin(programFolder, settingsPath))
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
    const QString folder = QCoreApplication::applicationDirPath();
    bool ok = false;
    InitAppFiles(folder, platform, ok);
    if (!ok)
        return 1;
    frmMain form(platform, folder);
    form.Form_Load();
    if (form.Ended())
        return 1;
    return app.exec();
}
