// Writes the hostile pictures the tests refuse, or loads one as the game
// does and tells what it cost: processor time and peak memory.
//
//     quorvel-picture-cost write FOLDER
//     quorvel-picture-cost load FILE
#include "skin/PictureLoader.h"
#include "support/HostilePictures.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>

#include <cstdio>
#include <sys/resource.h>

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() == 3 && args[1] == "write") {
        QDir().mkpath(args[2]);
        for (const HostilePicture &picture : HostilePictures()) {
            QFile file(args[2] + '/' + picture.name);
            if (!file.open(QIODevice::WriteOnly) || file.write(picture.make()) < 0)
                return 1;
        }
        return 0;
    }
    if (args.size() != 3 || args[1] != "load") {
        std::fprintf(stderr, "usage: quorvel-picture-cost write FOLDER | load FILE\n");
        return 2;
    }
    QString reason;
    const QImage picture = LoadPicture(args[2], &reason);
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%s: %s; %.2f s processor, %ld MB peak\n",
        qPrintable(QFileInfo(args[2]).fileName()),
        picture.isNull() ? qPrintable("refused, " + reason) : "applied",
        double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
            + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6,
        usage.ru_maxrss / 1024);
    return 0;
}
