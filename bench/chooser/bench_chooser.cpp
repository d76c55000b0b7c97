// The work of opening the level chooser with the player's marks: the
// dialog, its seventy rows, the record read from qvl-player.ini, the fewest
// steps of every level, and the first painting of the list. The first
// opening of a run solves the levels; later ones look them up.
//
//     QT_QPA_PLATFORM=offscreen build/bench/bench_chooser
#include "app/Progress.h"
#include "app/frmMain.h"
#include "dialogs/frmLevel.h"
#include "platform/QtPlatform.h"

#include <QApplication>
#include <QFile>
#include <QImage>
#include <QListWidget>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

namespace {

// The shipped levels, and a record of a player who has won every one.
struct Folder
{
    Folder()
        : form(platform, dir.path())
    {
        if (const FileError error
            = ReadLevelFile(QStringLiteral(QUORVEL_BIN_DIR "/QVL.ZHN"), form.levels)) {
            std::fprintf(stderr, "bench_chooser: %s\n", qPrintable(error.description));
            std::exit(EXIT_FAILURE);
        }
        QByteArray record = "[Best]\r\n";
        for (int level = 1; level <= LevelCount; ++level)
            record += QByteArray::number(level) + '=' + QByteArray::number(level + 20) + "\r\n";
        QFile file(PlayerFilePath(dir.path()));
        if (!file.open(QIODevice::WriteOnly) || file.write(record) != record.size())
            std::exit(EXIT_FAILURE);
    }
    QTemporaryDir dir;
    QtPlatform platform;
    frmMain form;
};

// What NewGame does before the chooser waits for the player, and the
// chooser's first frame.
void OpenChooser(frmMain &form, Progress &progress)
{
    frmLevel chooser(form);
    for (int i = 0; i < LevelCount; ++i)
        chooser.lisLevel->addItem(QStringLiteral("Level ") + QString::number(i + 1)
            + QStringLiteral(" - ") + form.levels[size_t(i)].levelName);
    progress.ShowIn(chooser, form.levels);
    chooser.show();
    QImage frame(chooser.size(), QImage::Format_ARGB32_Premultiplied);
    chooser.render(&frame);
    benchmark::DoNotOptimize(frame.constBits());
}

void OpenChooserFirstTime(benchmark::State &state)
{
    Folder folder;
    for (auto _ : state) {
        Progress progress(folder.platform, folder.dir.path());
        OpenChooser(folder.form, progress);
    }
}
BENCHMARK(OpenChooserFirstTime)->Unit(benchmark::kMillisecond);

void OpenChooserAgain(benchmark::State &state)
{
    Folder folder;
    Progress progress(folder.platform, folder.dir.path());
    OpenChooser(folder.form, progress);
    for (auto _ : state)
        OpenChooser(folder.form, progress);
}
BENCHMARK(OpenChooserAgain)->Unit(benchmark::kMillisecond);

// The solver's share of the first opening.
void FewestStepsOfEveryLevel(benchmark::State &state)
{
    Folder folder;
    for (auto _ : state)
        benchmark::DoNotOptimize(FewestStepsOf(folder.form.levels));
}
BENCHMARK(FewestStepsOfEveryLevel)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
