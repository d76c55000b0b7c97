// Any file dropped into the skins folder, in any of the formats a skin may
// have: loading it must not crash, hang or take the machine's memory, a
// refusal says why, and a picture that loads is cut into the board's
// pictures as applying a skin cuts it.
#include "Checks.h"
#include "skin/PictureClip.h"
#include "skin/PictureLoader.h"
#include "skin/SkinLayout.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPixmap>

#include <unistd.h>

namespace {

// The loader reads a path, as the game gives it one; the input goes to a
// file in memory where there is such a folder.
QString InputPath()
{
    const QString folder
        = QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm") : QDir::tempPath();
    return folder + QStringLiteral("/quorvel-fuzz-picture-%1").arg(::getpid());
}

QString path;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int qtArgc = 1;
    static char *qtArgv[] = {(*argv)[0], nullptr};
    static QGuiApplication app(qtArgc, qtArgv);
    path = InputPath();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    {
        QFile file(path);
        Require(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        Require(file.write(reinterpret_cast<const char *>(data), qint64(size)) == qint64(size));
    }
    QString reason;
    const QImage picture = LoadPicture(path, &reason);
    QFile::remove(path);
    if (picture.isNull()) {
        Require(!reason.isEmpty());
        return 0;
    }
    Require(qint64(picture.width()) * picture.height() * 4 <= qint64(64) << 20);
    PictureClip clip;
    clip.SetPicture(picture);
    for (const SkinArea &area : SkinAreas) {
        clip.SetClip(area.rect);
        const QPixmap cut = clip.Clip();
        Require(cut.isNull() || cut.size() == QSize(area.rect.width, area.rect.height));
        Require(cut.isNull()
            == (picture.width() < area.rect.x + area.rect.width
                || picture.height() < area.rect.y + area.rect.height));
    }
    return 0;
}
