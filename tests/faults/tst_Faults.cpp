// Everything a player's folder can hold that the game must survive, one row
// a fault. Every row runs the main window with the real Qt message boxes and
// reads their exact words, then checks that no saved game or setting was
// damaged or lost. Read-only media and full disks are mounted in the test's
// own mount namespace; unreadable files are read as an unprivileged user.
#include "app/modMain.h"
#include "dialogs/frmFile.h"
#include "dialogs/frmLevel.h"
#include "platform/QtPlatform.h"
#include "support/BoardText.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"

#include <QDirIterator>
#include <QInputDialog>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <fcntl.h>
#include <sched.h>
#include <sys/fsuid.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace {

constexpr uid_t NobodyId = 65534;
bool privileged = false; // root, in a mount namespace of the test's own
using Files = QMap<QString, QByteArray>;
const char *const Played = "2003/2003/4115/4.75/86.9"; // Keep.sav's board
const char *const NearlyWon = "2113/2673/4005/4005/8..9"; // one step from the exit
const QByteArray Kept = SavedGameBytes(7, 2, "Kept game ", Played);

// A program folder as a player leaves it: a saved game and the setting.
class Folder : public ProgramFolder
{
public:
    Folder()
    {
        QDir(path()).mkdir("saved");
        Put("saved/Keep.sav", Kept);
        Put("qvl.ini", "default.bmp\r\n");
    }
    ~Folder()
    {
        if (holder_)
            holder_->closeWriteChannel(), holder_->waitForFinished(10000);
        while (!mounts_.isEmpty())
            ::umount2(QFile::encodeName(mounts_.takeLast()).constData(), MNT_DETACH);
    }
    bool Put(const QString &name, const QByteArray &bytes) { return Write(name, bytes); }
    bool Remove(const QString &name)
    {
        return QFile::remove(File(name)) || QDir().rmdir(File(name));
    }
    // Every entry: a file's bytes, a link's target, or what else it is.
    Files Snapshot(const QString &under = {}) const
    {
        Files files;
        QDirIterator it(File(under),
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
        const Files kept = Snapshot(name);
        QMap<QString, QFile::Permissions> modes;
        for (const QString &entry : kept.keys())
            modes[entry] = QFile::permissions(File(entry));
        // Room for what the folder holds (a sanitized program is large)
        // and a little more, which the filler then takes.
        qint64 bytes = 1 << 20;
        for (const QByteArray &content : kept)
            bytes += content.size() + 4096;
        const QByteArray size = "size=" + QByteArray::number(bytes / 1024 + 1) + "k";
        if (::mount("tmpfs", Mount(name), "tmpfs", 0, size.constData()) != 0)
            return false;
        for (auto it = kept.cbegin(); it != kept.cend(); ++it) {
            if (it.value() == "<folder>" ? !QDir(path()).mkpath(it.key())
                                         : !Write(it.key(), it.value()))
                return false;
            QFile::setPermissions(File(it.key()), modes[it.key()]);
        }
        const int fd = ::open(QFile::encodeName(File(name + "/filler")), O_WRONLY | O_CREAT, 0644);
        while (::write(fd, QByteArray(4096, 'f').constData(), 4096) > 0) { }
        return ::close(fd) == 0;
    }
    // Another process holds the file locked until the folder goes.
    bool Lock(const QString &name)
    {
        holder_ = std::make_unique<QProcess>();
        holder_->start("flock", {"--exclusive", File(name), "sh", "-c", "echo locked; exec cat"});
        return holder_->waitForReadyRead(10000) && holder_->readAll() == "locked\n";
    }
    // Only a player who owns the folder, and may not read the file.
    bool Unreadable(const QString &name)
    {
        bool ok = QFile::setPermissions(File(name), {});
        const QStringList entries = Snapshot().keys() + QStringList {""};
        for (const QString &entry : entries)
            ok = ::lchown(QFile::encodeName(File(entry)), NobodyId, NobodyId) == 0 && ok;
        return ok;
    }

private:
    QByteArray Mount(const QString &name)
    {
        return QFile::encodeName(mounts_.emplaceBack(File(name)));
    }
    QStringList mounts_;
    std::unique_ptr<QProcess> holder_;
};

// File access as the unprivileged player, for this thread only: the
// permission bits count again.
struct AsNobody
{
    explicit AsNobody(bool wanted)
        : on(wanted)
    {
        if (on)
            ::setfsgid(NobodyId), ::setfsuid(NobodyId);
    }
    ~AsNobody()
    {
        if (on)
            ::setfsuid(0), ::setfsgid(0);
    }
    bool on;
};

// Answers the real dialogs as a player would: the choosers pick what the
// row names, a name prompt gets the name, a message box Yes or OK. Every
// box is written down as "title | text".
class Player
{
public:
    Player()
    {
        QObject::connect(&timer_, &QTimer::timeout, [this] { Poll(); });
        timer_.start(10);
    }
    int level = 0;
    QString name;
    QString file = "Bad.sav"; // the saved game to load
    QStringList boxes;
    std::function<void()> meanwhile; // once, when the next dialog is up

private:
    void Poll()
    {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible() || modal == last_)
            return;
        last_ = modal;
        if (meanwhile)
            std::exchange(meanwhile, {})();
        if (auto *box = qobject_cast<QMessageBox *>(modal)) {
            boxes << box->windowTitle() + " | " + box->text();
            QAbstractButton *yes = box->button(QMessageBox::Yes);
            (yes ? yes : box->button(QMessageBox::Ok))->click();
        } else if (auto *prompt = qobject_cast<QInputDialog *>(modal)) {
            prompt->setTextValue(std::exchange(name, {}));
            prompt->textValue().isEmpty() ? prompt->reject() : prompt->accept();
        } else if (auto *levels = qobject_cast<frmLevel *>(modal)) {
            levels->lisLevel->setCurrentRow(level);
            levels->cmdSetLevel->click();
        } else if (auto *files = qobject_cast<frmFile *>(modal)) {
            files->filList->setCurrentRow(
                files->filList->row(files->filList->findItems(file, {}).value(0)));
            files->cmdSet->click();
        }
    }
    QPointer<QWidget> last_;
    QTimer timer_;
};

// Save and Load come after a move; Win loads Won.sav and wins it, twice.
enum class Act { StartUp, NewGame, Save, Load, Win };
enum class Needs { Nothing, Root, Nobody };

struct Fault
{
    const char *name;
    std::function<bool(Folder &)> prepare;
    QStringList boxes = {}; // "title | text", %1 the program folder
    bool ends = false; // the program ends once the box is confirmed
    Needs needs = Needs::Nothing;
    Act act = Act::StartUp;
    QString argument = {}; // the level's index or the game's name
    Files changes = {}; // what differs afterwards, or is Gone
    std::function<bool(Folder &)> meanwhile = {}; // while the command's first dialog is up
};

const QString LevelError = "Quorvel - Error | An error has occurred while attempting loading data "
                           "file\n%1/QVL.zhn\n";
const QString SkinError
    = "Quorvel - ERROR | An error has occurred while attempting to load picture "
      "\n%1/skins/default.bmp\nMake sure the picture exists and is of a correct format.";
const QString StartError = "Quorvel - Error | An error has occurred while attempting to ";
const QString SettingError = StartError + "save the skin setting\n%1/qvl.ini\n";
const QString SaveError = "Quorvel - Saving Error | An error occurred while attempting saving game "
                          "data\n%1/saved/%2.sav\nGame not saved.";
const QString LoadError
    = "Quorvel - Load game | The saved game cannot be loaded:\n%1/saved/Bad.sav\n";
const QString NewGameError
    = "Quorvel - New Game | Level %1 cannot be played: its layout is damaged.\n";
const QString Won
    = "Quorvel - Congratulations | Congratulations!! You finished the game in 8 steps.";
const QString ProgressError
    = "Quorvel - Progress | Your win of level 3 in 8 steps could not be recorded.\n"
      "%1/qvl-player.ini\n%2\nYou can go on playing; this is not shown again until Quorvel "
      "starts anew.";
const QByteArray Progress = "[Best]\r\n1=5\r\n";
const QByteArray ProgressWon = "[Best]\r\n1=5\r\n3=8\r\n\r\n[View]\r\nFewestStepsLeft=false\r\n";
const Files LockMade = {{"qvl-player.ini.lock", ""}};
const QByteArray Gone = "<gone>";
const auto AsItIs = [](Folder &) { return true; };

const std::vector<Fault> Faults = {
    {"level-file-missing", [](Folder &f) { return f.Remove("QVL.ZHN"); },
        {LevelError + "2 No such file or directory"}, true},
    {"level-file-empty", [](Folder &f) { return f.Put("QVL.ZHN", {}); },
        {LevelError + "62 Input past end of file: 0 bytes where 2100 were expected"}, true},
    {"level-file-locked", [](Folder &f) { return f.Lock("QVL.ZHN"); },
        {LevelError + "11 Resource temporarily unavailable"}, true},
    {"level-file-over-long",
        [](Folder &f) { return f.Put("QVL.ZHN", f.Read("QVL.ZHN") + QByteArray(5000, '\xFF')); }},
    {"settings-binary", [](Folder &f) { return f.Put("qvl.ini", QByteArray("\0\xFF\1\r\n", 5)); },
        {}, false, Needs::Nothing, Act::StartUp, {}, {{"qvl.ini", "default.bmp\r\n"}}},
    {"settings-unreadable", [](Folder &f) { return f.Unreadable("qvl.ini"); }, {}, false,
        Needs::Nobody},
    {"settings-huge", [](Folder &f) { return QFile(f.File("qvl.ini")).resize(qint64(50) << 20); },
        {}, false, Needs::Nothing, Act::StartUp, {}, {{"qvl.ini", "default.bmp\r\n"}}},
    // Only files of a writer that is gone: no process of that number can run.
    {"temporary-files-left-by-a-writer",
        [](Folder &f) {
            return f.Put("qvl.ini.999999999-0", "half") && f.Put("saved/.A.sav.999999999-1", "half")
                && f.Put("qvl.ini.1-0", "pid 1 runs")
                && f.Put("A.sav.999999999-1", "not the game's");
        },
        {}, false, Needs::Nothing, Act::StartUp, {},
        {{"qvl.ini.999999999-0", Gone}, {"saved/.A.sav.999999999-1", Gone}}},
    {"skins-folder-missing", [](Folder &f) { return QDir(f.File("skins")).removeRecursively(); },
        {SkinError}, true, Needs::Nothing, Act::StartUp, {}, {{"skins", "<folder>"}}},
    {"folder-read-only-without-saved",
        [](Folder &f) { return f.Remove("saved/Keep.sav") && f.Remove("saved") && f.ReadOnly({}); },
        {StartError + "create the folder\n%1/saved\nRead-only file system"}, true, Needs::Root},
    {"settings-cannot-be-created", [](Folder &f) { return f.Remove("qvl.ini") && f.ReadOnly({}); },
        {StartError + "write the settings file\n%1/qvl.ini\nRead-only file system"}, true,
        Needs::Root},
    {"settings-cannot-be-saved", [](Folder &f) { return f.ReadOnly({}); },
        {SettingError + "Read-only file system"}, false, Needs::Root},
    {"settings-on-a-full-disk", [](Folder &f) { return f.FullDisk({}); },
        {SettingError + "No space left on device"}, false, Needs::Root},
    {"level-blocks-overlap",
        [](Folder &f) {
            f.levels[5].codes[9] = 40;
            return f.Put("QVL.ZHN", SerializeLevels(f.levels));
        },
        {NewGameError.arg(6) + "blocks 8 and 9 overlap at row 4, column 0."}, false, Needs::Nothing,
        Act::NewGame, "5"},
    {"saved-read-only", [](Folder &f) { return f.ReadOnly("saved"); }, {SaveError.arg("%1", "New")},
        false, Needs::Root, Act::Save, "New"},
    {"saved-gone-after-start-up", AsItIs, {SaveError.arg("%1", "New")}, false, Needs::Nothing,
        Act::Save, "New", {}, [](Folder &f) { return QDir(f.File("saved")).removeRecursively(); }},
    {"saved-on-a-full-disk", [](Folder &f) { return f.FullDisk("saved"); },
        {SaveError.arg("%1", "New")}, false, Needs::Root, Act::Save, "New"},
    // Kept as typed: the leading spaces are part of the name.
    {"name-with-leading-spaces", AsItIs, {}, false, Needs::Nothing, Act::Save, "  lead",
        {{"saved/  lead.sav", SavedGameBytes(1, 0, "Level 01  ", Played)}}},
    {"name-links-outside",
        [](Folder &f) {
            return f.Put("outside", "kept")
                && QFile::link(f.File("outside"), f.File("saved/L.sav"));
        },
        {"Quorvel - Saving | File already exists. Overwrite it?", SaveError.arg("%1", "L")}, false,
        Needs::Nothing, Act::Save, "L"},
    {"name-of-a-pipe",
        [](Folder &f) { return ::mkfifo(QFile::encodeName(f.File("saved/P.sav")), 0666) == 0; },
        {SaveError.arg("%1", "P")}, false, Needs::Nothing, Act::Save, "P"},
    {"saved-game-vanished-after-it-was-listed",
        [](Folder &f) { return f.Put("saved/Bad.sav", Kept); },
        {LoadError + "It cannot be read: No such file or directory."}, false, Needs::Nothing,
        Act::Load, {}, {}, [](Folder &f) { return f.Remove("saved/Bad.sav"); }},
    {"player-file-read-only-folder",
        [](Folder &f) { return f.Put("qvl-player.ini", Progress) && f.ReadOnly({}); },
        {SettingError + "Read-only file system", Won,
            ProgressError.arg("%1", "Read-only file system"), Won},
        false, Needs::Root, Act::Win},
    {"player-file-is-a-folder", [](Folder &f) { return QDir(f.path()).mkdir("qvl-player.ini"); },
        {Won, ProgressError.arg("%1", "Is a directory"), Won}, false, Needs::Nothing, Act::Win, {},
        LockMade},
    {"player-file-links-elsewhere",
        [](Folder &f) {
            return f.Put("outside", Progress)
                && QFile::link(f.File("outside"), f.File("qvl-player.ini"));
        },
        {Won, ProgressError.arg("%1", "It is a symbolic link, which the game does not write to"),
            Won},
        false, Needs::Nothing, Act::Win},
    {"player-file-a-named-pipe",
        [](Folder &f) { return ::mkfifo(QFile::encodeName(f.File("qvl-player.ini")), 0666) == 0; },
        {Won, ProgressError.arg("%1", "Not a regular file"), Won}, false, Needs::Nothing, Act::Win,
        {}, LockMade},
    {"player-file-unreadable",
        [](Folder &f) {
            return f.Put("qvl-player.ini", Progress) && f.Unreadable("qvl-player.ini");
        },
        {Won, ProgressError.arg("%1", "Permission denied"), Won}, false, Needs::Nobody, Act::Win,
        {}, LockMade},
    {"player-file-locked-by-a-stopped-copy",
        [](Folder &f) {
            return f.Put("qvl-player.ini", Progress) && f.Lock("qvl-player.ini.lock");
        },
        {Won, ProgressError.arg("%1", "Another copy of the game kept the file locked"), Won}, false,
        Needs::Nothing, Act::Win},
};

} // namespace

class tst_Faults : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void withTheRealMessageBoxes_data();
    void withTheRealMessageBoxes();
};

void tst_Faults::withTheRealMessageBoxes_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < Faults.size(); ++i)
        QTest::newRow(Faults[i].name) << int(i);
}

void tst_Faults::withTheRealMessageBoxes()
{
    QFETCH(int, row);
    const Fault &fault = Faults[size_t(row)];
    Folder folder;
    if (fault.act == Act::Win)
        folder.Put("saved/Won.sav", SavedGameBytes(7, 2, "Kept game ", NearlyWon));
    if (fault.needs != Needs::Nothing && !privileged)
        QSKIP("needs root and a mount namespace of its own (unshare)");
    QVERIFY2(fault.prepare(folder), "the fault could not be prepared");
    QtPlatform platform;
    Player player;
    Files before = folder.Snapshot();
    QByteArray board;
    {
        frmMain form(platform, folder.path());
        AsNobody nobody(fault.needs == Needs::Nobody);
        bool ok = false;
        InitAppFiles(folder.path(), platform, ok);
        if (ok)
            form.Form_Load();
        QCOMPARE(!ok || form.Ended(), fault.ends);
        if (fault.act == Act::Save || fault.act == Act::Load) {
            player.level = fault.act == Act::Save ? 0 : 2;
            form.mnuNewGame_Click();
            if (fault.act == Act::Save)
                DragBlock(form, 6, {1, 3}, {{1, 4}});
        }
        board = BoardPicture(form.game);
        if (fault.meanwhile)
            player.meanwhile = [&] {
                QVERIFY(fault.meanwhile(folder));
                before = folder.Snapshot();
            };
        player.level = fault.argument.toInt();
        player.name = fault.argument;
        if (fault.act == Act::NewGame)
            form.mnuNewGame_Click();
        if (fault.act == Act::Save)
            form.mnuSaveGame_Click();
        if (fault.act == Act::Load)
            form.mnuLoadGame_Click();
        player.file = fault.act == Act::Win ? "Won.sav" : "Bad.sav";
        for (int win = 0; fault.act == Act::Win && win < 2; ++win) {
            form.mnuLoadGame_Click();
            DragBlock(form, 0, {1, 2}, {{1, 3}});
        }

        QCOMPARE(player.boxes, QStringList(fault.boxes).replaceInStrings("%1", folder.path()));
        if (fault.act == Act::NewGame)
            QVERIFY(!form.mnuSaveGame->isEnabled()); // no game began
        if (fault.act == Act::Save)
            QCOMPARE(form.gameChanged, !fault.boxes.isEmpty());
        if (fault.act == Act::Load)
            QCOMPARE(BoardPicture(form.game), board);
    }

    const Files after = folder.Snapshot();
    for (auto it = fault.changes.cbegin(); it != fault.changes.cend(); ++it)
        it.value() == Gone ? void(before.remove(it.key())) : void(before[it.key()] = it.value());
    QCOMPARE(after.keys(), before.keys());
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        QVERIFY2(after[it.key()] == it.value(), qPrintable(it.key() + " differs"));
}

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
