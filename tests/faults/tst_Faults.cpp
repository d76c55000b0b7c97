// Everything a player's folder can hold that the game must survive, one row
// a fault. Every row runs the main window and reads the exact words of its
// message boxes, then checks that no saved game or setting was damaged or
// lost. Read-only media and full disks are mounted in the test's
// own mount namespace.
#include "app/modMain.h"
#include "dialogs/frmFile.h"
#include "support/BoardText.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"
#include "support/WhenModal.h"

#include <QDirIterator>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool privileged = false; // root, in a mount namespace of the test's own
using Files = QMap<QString, QByteArray>;
const char *const Played = "2003/2003/4115/4.75/86.9"; // Keep.sav's board
const char *const NearlyWon = "2113/2673/4005/4005/8..9"; // one step from the exit

// A program folder as a player leaves it: a saved game and the setting.
class Folder : public ProgramFolder
{
public:
    Folder()
    {
        QDir(path()).mkdir("saved");
        Write("saved/Keep.sav", SavedGameBytes(7, 2, "Kept game ", Played));
        Write("qvl.ini", "default.bmp\r\n");
    }
    ~Folder()
    {
        for (const int fd : locks_)
            ::close(fd);
        while (!mounts_.isEmpty())
            ::umount2(QFile::encodeName(mounts_.takeLast()).constData(), MNT_DETACH);
    }
    // Every entry: a file's bytes, a link's target, or what else it is.
    Files Snapshot() const
    {
        Files files;
        QDirIterator it(path(),
            QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
            QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QFileInfo info(it.next());
            const QString name = QDir(path()).relativeFilePath(info.filePath());
            files[name] = info.isSymLink() ? "-> " + QFile::encodeName(info.symLinkTarget())
                : info.isDir()             ? "<folder>"
                : info.isFile()            ? Read(name)
                                           : "<special>";
        }
        return files;
    }
    bool ReadOnly(const QString &name)
    {
        const QByteArray dir = Mount(name);
        return ::mount(dir, dir, nullptr, MS_BIND, nullptr) == 0
            && ::mount(nullptr, dir, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
    }
    // Moves the folder's content onto a small disk of its own and fills it.
    bool FullDisk(const QString &name)
    {
        QTemporaryDir disk;
        const QByteArray where = QFile::encodeName(disk.path());
        if (::mount("tmpfs", where, "tmpfs", 0, "size=2m") != 0
            || QProcess::execute("cp", {"-a", File(name) + "/.", disk.path()}) != 0
            || ::mount(where, Mount(name), nullptr, MS_MOVE, nullptr) != 0)
            return false;
        const int fd = ::open(QFile::encodeName(File(name + "/filler")), O_WRONLY | O_CREAT, 0644);
        while (::write(fd, QByteArray(4096, 'f').constData(), 4096) > 0) { }
        return ::close(fd) == 0;
    }
    // Held until the folder goes: a lock taken through a descriptor of its
    // own stops the game's as another copy's would.
    bool Lock(const QString &name)
    {
        locks_ << ::open(QFile::encodeName(File(name)), O_RDONLY | O_CREAT | O_CLOEXEC, 0644);
        return ::flock(locks_.last(), LOCK_EX | LOCK_NB) == 0;
    }

private:
    QByteArray Mount(const QString &name)
    {
        return QFile::encodeName(mounts_.emplaceBack(File(name)));
    }
    QStringList mounts_;
    QList<int> locks_;
};

// Save comes after a move, Load after New Game; Win loads Game.sav and
// wins it, twice. Every box is answered Yes or OK.
enum class Act { StartUp, NewGame, Save, Load, Win };

struct Fault
{
    const char *name;
    std::function<bool(Folder &)> prepare;
    QStringList boxes = {}; // "title | text", %1 the program folder
    bool ends = false; // the program ends once the box is confirmed
    bool root = false; // mounts in a namespace of its own
    Act act = Act::StartUp;
    // The level's index, the game's name, or why the wins go unrecorded.
    QString argument = {};
    Files changes = {}; // what differs afterwards, or is Gone
};

const QString LevelError = "Quorvel - Error | An error has occurred while attempting loading data "
                           "file\r\n%1/QVL.zhn\r\n";
const QString SkinError
    = "Quorvel - ERROR | An error has occurred while attempting to load picture "
      "\r\n%1/skins/default.bmp\r\nMake sure the picture exists and is of a correct format.";
const QString StartError = "Quorvel - Error | An error has occurred while attempting to ";
const QString SaveError = "Quorvel - Saving Error | An error occurred while attempting saving game "
                          "data\r\n%1/saved/%2.sav\r\nGame not saved.";
const QString Won
    = "Quorvel - Congratulations | Congratulations!! You finished the game in 8 steps.";
const QString ProgressError
    = "Quorvel - Progress | Your win of level 3 in 8 steps could not be recorded.\r\n"
      "%1/qvl-player.ini\r\n%2\r\nYou can go on playing; this is not shown again until Quorvel "
      "starts anew.";
const QByteArray Progress = "[Best]\r\n1=5\r\n";
const QByteArray Gone = "<gone>";

const std::vector<Fault> Faults = {
    {"level-file-missing", [](Folder &f) { return QFile::remove(f.File("QVL.ZHN")); },
        {LevelError + "2 No such file or directory"}, true},
    {"level-file-empty", [](Folder &f) { return f.Write("QVL.ZHN", {}); },
        {LevelError + "62 Input past end of file: 0 bytes where 2100 were expected"}, true},
    {"level-file-locked", [](Folder &f) { return f.Lock("QVL.ZHN"); },
        {LevelError + "11 Resource temporarily unavailable"}, true},
    // Only files of a writer that is gone: no process of that number can run.
    {"temporary-files-left-by-a-writer",
        [](Folder &f) {
            return f.Write("qvl.ini.999999999-0", "half")
                && f.Write("saved/.A.sav.999999999-1", "half")
                && f.Write("qvl.ini.1-0", "pid 1 runs")
                && f.Write("A.sav.999999999-1", "not the game's");
        },
        {}, false, false, Act::StartUp, {},
        {{"qvl.ini.999999999-0", Gone}, {"saved/.A.sav.999999999-1", Gone}}},
    {"setting-names-a-missing-skin", [](Folder &f) { return f.Write("qvl.ini", "gone.bmp\r\n"); },
        {}, false, false, Act::StartUp, {}, {{"qvl.ini", "default.bmp\r\n"}}},
    {"skins-folder-missing", [](Folder &f) { return QDir(f.File("skins")).removeRecursively(); },
        {SkinError}, true, false, Act::StartUp, {}, {{"skins", "<folder>"}}},
    {"folder-read-only-without-saved",
        [](Folder &f) { return QDir(f.File("saved")).removeRecursively() && f.ReadOnly({}); },
        {StartError + "create the folder\r\n%1/saved\r\nRead-only file system"}, true, true},
    {"settings-cannot-be-created",
        [](Folder &f) { return QFile::remove(f.File("qvl.ini")) && f.ReadOnly({}); },
        {StartError + "write the settings file\r\n%1/qvl.ini\r\nRead-only file system"}, true,
        true},
    {"settings-on-a-full-disk", [](Folder &f) { return f.FullDisk({}); },
        {StartError + "save the skin setting\r\n%1/qvl.ini\r\nNo space left on device"}, false,
        true},
    {"level-blocks-overlap",
        [](Folder &f) {
            f.levels[5].codes[9] = 40;
            return f.Write("QVL.ZHN", SerializeLevels(f.levels));
        },
        {"Quorvel - New Game | Level 6 cannot be played: its layout is damaged.\r\nblocks 8 and 9 "
         "overlap at row 4, column 0."},
        false, false, Act::NewGame, "5"},
    {"saved-on-a-full-disk", [](Folder &f) { return f.FullDisk("saved"); },
        {SaveError.arg("%1", "New")}, false, true, Act::Save, "New"},
    // Kept as typed: the leading spaces are part of the name.
    {"name-with-leading-spaces", [](Folder &) { return true; }, {}, false, false, Act::Save,
        "  lead", {{"saved/  lead.sav", SavedGameBytes(1, 0, "Level 01  ", Played)}}},
    {"name-links-outside",
        [](Folder &f) {
            return f.Write("outside", "kept")
                && QFile::link(f.File("outside"), f.File("saved/L.sav"));
        },
        {"Quorvel - Saving | File already exists. Overwrite it?", SaveError.arg("%1", "L")}, false,
        false, Act::Save, "L"},
    {"name-of-a-pipe",
        [](Folder &f) { return ::mkfifo(QFile::encodeName(f.File("saved/P.sav")), 0666) == 0; },
        {SaveError.arg("%1", "P")}, false, false, Act::Save, "P"},
    {"saved-game-damaged",
        [](Folder &f) { return f.Write("saved/Game.sav", SavedGameBytes(7, 70, "Kept game ")); },
        {"Quorvel - Load game | The saved game cannot be loaded:\r\n%1/saved/Game.sav\r\nIt "
         "names level 71; the levels are numbered 1 to 70."},
        false, false, Act::Load},
    // The read-only folder refuses the setting at start-up first.
    {"player-file-read-only-folder",
        [](Folder &f) { return f.Write("qvl-player.ini", Progress) && f.ReadOnly({}); },
        {StartError + "save the skin setting\r\n%1/qvl.ini\r\nRead-only file system"}, false, true,
        Act::Win, "Read-only file system"},
    {"player-file-links-elsewhere",
        [](Folder &f) {
            return f.Write("outside", Progress)
                && QFile::link(f.File("outside"), f.File("qvl-player.ini"));
        },
        {}, false, false, Act::Win, "It is a symbolic link, which the game does not write to"},
    {"player-file-a-named-pipe",
        [](Folder &f) { return ::mkfifo(QFile::encodeName(f.File("qvl-player.ini")), 0666) == 0; },
        {}, false, false, Act::Win, "Not a regular file", {{"qvl-player.ini.lock", ""}}},
    {"player-file-locked-by-a-stopped-copy",
        [](Folder &f) {
            return f.Write("qvl-player.ini", Progress) && f.Lock("qvl-player.ini.lock");
        },
        {}, false, false, Act::Win, "Another copy of the game kept the file locked"},
};

} // namespace

class tst_Faults : public QObject
{
    Q_OBJECT
private slots:
    void showEachBoxAndLoseNothing_data()
    {
        QTest::addColumn<int>("row");
        for (size_t i = 0; i < Faults.size(); ++i)
            QTest::newRow(Faults[i].name) << int(i);
    }

    void showEachBoxAndLoseNothing()
    {
        QFETCH(int, row);
        const Fault &fault = Faults[size_t(row)];
        Folder folder;
        if (fault.act == Act::Win)
            folder.Write("saved/Game.sav", SavedGameBytes(7, 2, "Kept game ", NearlyWon));
        if (fault.root && !privileged)
            QSKIP("needs root and a mount namespace of its own (unshare)");
        QVERIFY2(fault.prepare(folder), "the fault could not be prepared");
        QStringList boxes = fault.boxes;
        if (fault.act == Act::Win)
            boxes << Won << ProgressError.arg("%1", fault.argument) << Won;
        ScriptedPlatform platform;
        for (const QString &box : boxes)
            platform.Reply(box.endsWith('?') ? Answer::Yes : Answer::Ok);
        if (fault.act == Act::Save)
            platform.Type(fault.argument);
        Files before = folder.Snapshot();
        {
            frmMain form(platform, folder.path());
            QCOMPARE(!StartUp(form, platform), fault.ends);
            if (fault.act == Act::Save || fault.act == Act::Load)
                ChooseLevel(form, 0);
            if (fault.act == Act::Save)
                DragBlock(form, 6, {1, 3}, {{1, 4}});
            const QByteArray board = BoardPicture(form.game);
            if (fault.act == Act::NewGame)
                ChooseLevel(form, fault.argument.toInt());
            if (fault.act == Act::Save)
                form.mnuSaveGame_Click();
            for (int load = 0; load < (fault.act == Act::Win ? 2 : fault.act == Act::Load);
                 ++load) {
                WhenModal([](QWidget *chooser) {
                    auto *files = static_cast<frmFile *>(chooser);
                    files->filList->setCurrentItem(
                        files->filList->findItems("Game.sav", {}).value(0));
                    files->cmdSet->click();
                });
                form.mnuLoadGame_Click();
                if (fault.act == Act::Win)
                    DragBlock(form, 0, {1, 2}, {{1, 3}});
            }

            QCOMPARE(platform.Shown(), boxes.replaceInStrings("%1", folder.path()));
            if (fault.act == Act::NewGame)
                QVERIFY(!form.mnuSaveGame->isEnabled()); // no game began
            if (fault.act == Act::Save)
                QCOMPARE(form.gameChanged, !fault.boxes.isEmpty());
            if (fault.act == Act::Load)
                QCOMPARE(BoardPicture(form.game), board);
            QVERIFY(platform.Done());
        }

        const Files after = folder.Snapshot();
        for (auto it = fault.changes.cbegin(); it != fault.changes.cend(); ++it)
            it.value() == Gone ? void(before.remove(it.key()))
                               : void(before[it.key()] = it.value());
        QCOMPARE(after.keys(), before.keys());
        QCOMPARE(after.values(), before.values());
    }
};

int main(int argc, char **argv)
{
    // Mounts made here vanish with the test, whatever becomes of it.
    privileged = ::geteuid() == 0 && ::unshare(CLONE_NEWNS) == 0
        && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    QApplication app(argc, argv);
    tst_Faults test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Faults.moc"
