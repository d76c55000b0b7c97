// Everything a player's folder can hold that the game must survive, one row
// a fault. Every row runs the main window with the real Qt message boxes and
// reads their exact words; the start-up rows also run the real program in a
// real X server, where a box's title shows, and watch it end or go on. Each
// run checks that no saved game or setting was damaged or lost. Read-only
// media and full disks are mounted in the test's own mount namespace;
// unreadable files are read as an unprivileged user. Last, the real program
// plays under valgrind, which must find no memory lost.
#include "app/modMain.h"
#include "dialogs/frmFile.h"
#include "dialogs/frmLevel.h"
#include "files/SavedGame.h"
#include "game/Solver.h"
#include "platform/QtPlatform.h"
#include "support/BoardText.h"
#include "support/HostilePictures.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/XSession.h"

#include <QDirIterator>
#include <QInputDialog>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTest>
#include <QTimer>
#include <QtEndian>

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
const QByteArray SavedNow = "<the game on the board>";
const char *const Played = "2003/2003/4115/4.75/86.9"; // Keep.sav's board

// A game of level 3 named "Kept game ": Keep.sav, or a copy with the 16-bit
// field at `at` changed, or another board.
QByteArray SavedGame(int32_t steps = 7, int at = 0, int16_t value = 0, const char *board = Played)
{
    GameState game;
    game.levelIndex = 2;
    game.steps = steps;
    game.SetUp(LayoutFromPicture(board));
    QByteArray bytes = SerializeSavedGame(BuildSavedGame(game, "Kept game "));
    if (at)
        qToLittleEndian(value, bytes.data() + at);
    return bytes;
}

const char *const NearlyWon = "2113/2673/4005/4005/8..9"; // one step from the exit

QByteArray LevelFile(int index = 0, int piece = 0, int16_t code = 0)
{
    static const LevelTable sound = ProgramFolder().levels;
    LevelTable levels = sound;
    levels[index].codes[piece] = code ? code : levels[index].codes[piece];
    return SerializeLevels(levels);
}

// A program folder as a player leaves it: a saved game and the setting.
class Folder : public ProgramFolder
{
public:
    Folder()
    {
        QDir(path()).mkdir("saved");
        Put("saved/Keep.sav", SavedGame());
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
    Files changes = {}; // what differs afterwards
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

const auto AsItIs = [](Folder &) { return true; };

// The default skin replaced by one of the pictures that cost too much.
std::function<bool(Folder &)> Hostile(const char *name)
{
    return [name](Folder &f) {
        for (const HostilePicture &picture : HostilePictures())
            if (QByteArray(picture.name) == name)
                return f.Put("skins/default.bmp", picture.make());
        return false;
    };
}

const std::vector<Fault> Faults = {
    {"level-file-missing", [](Folder &f) { return f.Remove("QVL.ZHN"); },
        {LevelError + "2 No such file or directory"}, true},
    {"level-file-empty", [](Folder &f) { return f.Put("QVL.ZHN", {}); },
        {LevelError + "62 Input past end of file: 0 bytes where 2100 were expected"}, true},
    {"level-file-locked", [](Folder &f) { return f.Lock("QVL.ZHN"); },
        {LevelError + "11 Resource temporarily unavailable"}, true},
    {"level-file-unreadable", [](Folder &f) { return f.Unreadable("QVL.ZHN"); },
        {LevelError + "13 Permission denied"}, true, Needs::Nobody},
    {"settings-binary", [](Folder &f) { return f.Put("qvl.ini", QByteArray("\0\xFF\1\r\n", 5)); },
        {}, false, Needs::Nothing, Act::StartUp, {}, {{"qvl.ini", "default.bmp\r\n"}}},
    {"level-file-over-long",
        [](Folder &f) { return f.Put("QVL.ZHN", LevelFile() + QByteArray(5000, '\xFF')); }},
    {"skin-missing", [](Folder &f) { return f.Remove("skins/default.bmp"); }, {SkinError}, true},
    {"skin-too-small",
        [](Folder &f) { return KnownSkin(369, 380).save(f.File("skins/default.bmp"), "BMP"); },
        {SkinError}, true},
    {"skin-emf-many-records", Hostile("emf-many-records"), {SkinError}, true},
    {"skin-emf-large-drawing", Hostile("emf-large-drawing"), {SkinError}, true},
    {"skin-wmf-large-drawing", Hostile("wmf-large-drawing"), {SkinError}, true},
    {"skin-jpeg-repeated-scans", Hostile("jpeg-repeated-scans"), {SkinError}, true},
    {"skin-jpeg-many-scans", Hostile("jpeg-many-scans"), {SkinError}, true},
    {"skin-gif-frame-beyond-its-screen", Hostile("gif-frame-beyond-its-screen"), {SkinError}, true},
    {"skins-folder-missing", [](Folder &f) { return QDir(f.File("skins")).removeRecursively(); },
        {SkinError}, true, Needs::Nothing, Act::StartUp, {}, {{"skins", "<folder>"}}},
    {"settings-unreadable", [](Folder &f) { return f.Unreadable("qvl.ini"); }, {}, false,
        Needs::Nobody},
    {"settings-huge", [](Folder &f) { return QFile(f.File("qvl.ini")).resize(qint64(50) << 20); },
        {}, false, Needs::Nothing, Act::StartUp, {}, {{"qvl.ini", "default.bmp\r\n"}}},
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
    {"level-off-the-board", [](Folder &f) { return f.Put("QVL.ZHN", LevelFile(4, 0, 33)); },
        {NewGameError.arg(5) + "block 0 has the position code 33, which puts it off the board."},
        false, Needs::Nothing, Act::NewGame, "4"},
    {"level-blocks-overlap", [](Folder &f) { return f.Put("QVL.ZHN", LevelFile(5, 9, 40)); },
        {NewGameError.arg(6) + "blocks 8 and 9 overlap at row 4, column 0."}, false, Needs::Nothing,
        Act::NewGame, "5"},
    {"saved-read-only", [](Folder &f) { return f.ReadOnly("saved"); }, {SaveError.arg("%1", "New")},
        false, Needs::Root, Act::Save, "New"},
    {"saved-gone-after-start-up", AsItIs, {SaveError.arg("%1", "New")}, false, Needs::Nothing,
        Act::Save, "New", {}, [](Folder &f) { return QDir(f.File("saved")).removeRecursively(); }},
    {"saved-on-a-full-disk", [](Folder &f) { return f.FullDisk("saved"); },
        {SaveError.arg("%1", "New")}, false, Needs::Root, Act::Save, "New"},
    {"saved-is-a-plain-file",
        [](Folder &f) {
            return f.Remove("saved/Keep.sav") && f.Remove("saved") && f.Put("saved", "x");
        },
        {SaveError.arg("%1", "New")}, false, Needs::Nothing, Act::Save, "New"},
    {"name-with-a-slash", AsItIs, {SaveError.arg("%1", "a/b")}, false, Needs::Nothing, Act::Save,
        "a/b"},
    {"name-CON", AsItIs, {}, false, Needs::Nothing, Act::Save, "CON",
        {{"saved/CON.sav", SavedNow}}},
    {"name-with-leading-spaces", AsItIs, {}, false, Needs::Nothing, Act::Save, "  lead",
        {{"saved/  lead.sav", SavedNow}}},
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
    {"saved-game-over-long",
        [](Folder &f) { return f.Put("saved/Bad.sav", SavedGame() + "older tail"); }, {}, false,
        Needs::Nothing, Act::Load},
    {"saved-game-negative-steps", [](Folder &f) { return f.Put("saved/Bad.sav", SavedGame(-1)); },
        {LoadError + "Its step count -1 is negative."}, false, Needs::Nothing, Act::Load},
    {"saved-game-level-71", [](Folder &f) { return f.Put("saved/Bad.sav", SavedGame(7, 4, 70)); },
        {LoadError + "It names level 71; the levels are numbered 1 to 70."}, false, Needs::Nothing,
        Act::Load},
    {"saved-game-block-off-the-board",
        [](Folder &f) { return f.Put("saved/Bad.sav", SavedGame(7, 16, 3)); },
        {LoadError
            + "Its layout is damaged: block 0 has the position code 3, which puts it off the "
              "board."},
        false, Needs::Nothing, Act::Load},
    {"saved-game-vanished-after-it-was-listed",
        [](Folder &f) { return f.Put("saved/Bad.sav", SavedGame()); },
        {LoadError + "It cannot be read: No such file or directory."}, false, Needs::Nothing,
        Act::Load, {}, {}, [](Folder &f) { return f.Remove("saved/Bad.sav"); }},
    {"saved-game-unreadable",
        [](Folder &f) {
            return f.Put("saved/Bad.sav", SavedGame()) && f.Unreadable("saved/Bad.sav");
        },
        {LoadError + "It cannot be read: Permission denied."}, false, Needs::Nobody, Act::Load},
    {"player-file-new", AsItIs, {Won, Won}, false, Needs::Nothing, Act::Win, {},
        {{"qvl-player.ini", "[Best]\r\n3=8\r\n\r\n[View]\r\nFewestStepsLeft=false\r\n"},
            {"qvl-player.ini.lock", ""}}},
    {"player-file-read-only-folder",
        [](Folder &f) { return f.Put("qvl-player.ini", Progress) && f.ReadOnly({}); },
        {SettingError + "Read-only file system", Won,
            ProgressError.arg("%1", "Read-only file system"), Won},
        false, Needs::Root, Act::Win},
    {"player-file-on-a-full-disk",
        [](Folder &f) { return f.Put("qvl-player.ini", Progress) && f.FullDisk({}); },
        {SettingError + "No space left on device", Won,
            ProgressError.arg("%1", "No space left on device"), Won},
        false, Needs::Root, Act::Win, {}, LockMade},
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
    {"player-file-huge",
        [](Folder &f) {
            return f.Put("qvl-player.ini", Progress)
                && QFile(f.File("qvl-player.ini")).resize(qint64(50) << 20);
        },
        {Won, Won}, false, Needs::Nothing, Act::Win, {},
        {{"qvl-player.ini", ProgressWon}, {"qvl-player.ini.lock", ""}}},
    {"player-file-binary",
        [](Folder &f) {
            return f.Put(
                "qvl-player.ini", QByteArray("\xFF\0\r\n[Best]\r\n\x01\x02\r\n1=5\r\n\xFE", 22));
        },
        {Won, Won}, false, Needs::Nothing, Act::Win, {},
        {{"qvl-player.ini", ProgressWon}, {"qvl-player.ini.lock", ""}}},
};

// What the process has read through read() and the like so far.
qint64 BytesRead(qint64 pid)
{
    QFile io(QString("/proc/%1/io").arg(pid));
    const QByteArray text = io.open(QIODevice::ReadOnly) ? io.readAll() : QByteArray();
    const qsizetype at = text.indexOf("rchar: ");
    return at < 0 ? -1 : text.mid(at + 7, text.indexOf('\n', at) - at - 7).toLongLong();
}

void CompareFiles(
    Files before, const Files &after, const Files &changes, const QByteArray &savedNow)
{
    for (auto it = changes.cbegin(); it != changes.cend(); ++it)
        before[it.key()] = it.value() == SavedNow ? savedNow : it.value();
    QCOMPARE(after.keys(), before.keys());
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        QVERIFY2(after[it.key()] == it.value(), qPrintable(it.key() + " differs"));
}

} // namespace

class tst_Faults : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void cleanupTestCase() { keeper.kill(), keeper.waitForFinished(); }
    void withTheRealMessageBoxes_data() { Rows(false); }
    void withTheRealMessageBoxes();
    void theRealProgram_data() { Rows(true); }
    void theRealProgram();
    void aPlayedGameLosesNoMemory();
    void installedGameCannotMakeThePlayersFolder_data();
    void installedGameCannotMakeThePlayersFolder();

private:
    void Rows(bool startUpOnly);
    XSession &Session();
    // Prepares the row's folder; false when this machine cannot.
    bool Prepare(const Fault &fault, Folder &folder);
    std::unique_ptr<XSession> session;
    QProcess keeper;
};

void tst_Faults::Rows(bool startUpOnly)
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < Faults.size(); ++i)
        if (!startUpOnly || Faults[i].act == Act::StartUp)
            QTest::newRow(Faults[i].name) << int(i);
}

bool tst_Faults::Prepare(const Fault &fault, Folder &folder)
{
    if (fault.needs != Needs::Nothing && !privileged)
        return false;
    [&] { QVERIFY2(fault.prepare(folder), "the fault could not be prepared"); }();
    return true;
}

void tst_Faults::withTheRealMessageBoxes()
{
    QFETCH(int, row);
    const Fault &fault = Faults[size_t(row)];
    Folder folder;
    if (fault.act == Act::Win)
        QVERIFY(folder.Put("saved/Won.sav", SavedGame(7, 0, 0, NearlyWon)));
    if (!Prepare(fault, folder))
        QSKIP("needs root and a mount namespace of its own (unshare)");
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
            board = BoardPicture(form.game);
        }
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
            QCOMPARE(BoardPicture(form.game), fault.boxes.isEmpty() ? QByteArray(Played) : board);
        board = SerializeSavedGame(
            BuildSavedGame(form.game, form.levels[form.game.levelIndex].levelName));
    }
    CompareFiles(before, folder.Snapshot(), fault.changes, board);
}

XSession &tst_Faults::Session()
{
    if (!session) {
        session = std::make_unique<XSession>();
        // The server starts afresh whenever its last client leaves, and
        // refuses connections meanwhile; one client stays the whole time.
        keeper.start("xprop", {"-display", session->Display(), "-root", "-spy"});
        keeper.waitForReadyRead(10000);
    }
    return *session;
}

void tst_Faults::theRealProgram()
{
    QFETCH(int, row);
    const Fault &fault = Faults[size_t(row)];
    XSession &x = Session();
    QVERIFY2(x.Started(), "Xvfb did not start");
    Folder folder;
    QString program = folder.File("quorvel");
    QVERIFY(QFile::copy(QUORVEL_BIN_DIR "/quorvel", program));
    if (!Prepare(fault, folder))
        QSKIP("needs root and a mount namespace of its own (unshare)");
    if (fault.needs == Needs::Nobody) {
        program = folder.File("as-player");
        folder.Put("as-player",
            "#!/bin/sh\nexec setpriv --reuid=65534 --regid=65534 --clear-groups "
            "\"$(dirname \"$0\")/quorvel\"\n");
        QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner);
    }
    const Files before = folder.Snapshot();

    QVERIFY(x.Launch(program));
    if (!fault.boxes.isEmpty()) {
        const qulonglong box = x.WaitForWindow(fault.boxes.first().section(" | ", 0, 0));
        QVERIFY2(box, "no message box");
        QVERIFY(x.Key(box, "Return"));
    }
    if (fault.ends) {
        QCOMPARE(x.WaitForExit(), 1);
    } else {
        const qulonglong window = x.WaitForWindow("Quorvel");
        QVERIFY(window);
        // Start-up ends by writing the setting back, or by the box above.
        QTRY_VERIFY_WITH_TIMEOUT(QFile(folder.File("qvl.ini")).size() == 13, 20000);
        const qint64 read = BytesRead(x.Program().processId());
        QVERIFY2(
            read > 0 && read < qint64(20) << 20, qPrintable(QString("%1 bytes read").arg(read)));
        // File > Exit; a key that came before the menu was open is tried again.
        int code = -1;
        for (int attempt = 0; attempt < 5 && code == -1; ++attempt) {
            x.Key(window, "alt+f");
            x.Key(window, "x");
            code = x.WaitForExit(3000);
        }
        QCOMPARE(code, 0);
    }
    CompareFiles(before, folder.Snapshot(), fault.changes, {});
}

// The real program under valgrind: start-up, a level, three moves and
// leaving lose no memory. valgrind.supp holds what the system's libraries
// keep to the end, nothing of ours.
void tst_Faults::aPlayedGameLosesNoMemory()
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("valgrind cannot watch a program built with the sanitizers");
#endif
    if (QStandardPaths::findExecutable("valgrind").isEmpty())
        QSKIP("valgrind is not installed");
    constexpr int Patience = 180000; // valgrind makes everything slower
    XSession &x = Session();
    QVERIFY2(x.Started(), "Xvfb did not start");
    Folder folder;
    QVERIFY(QFile::copy(QUORVEL_BIN_DIR "/quorvel", folder.File("quorvel")));
    folder.Put("run",
        "#!/bin/sh\nexec valgrind --leak-check=full --errors-for-leak-kinds=definite "
        "--error-exitcode=99 --num-callers=40 --suppressions=" QUORVEL_VALGRIND_SUPP
        " --log-file=\"$(dirname \"$0\")/valgrind.log\" \"$(dirname \"$0\")/quorvel\"\n");
    QFile::setPermissions(folder.File("run"), QFile::ReadOwner | QFile::ExeOwner);
    QVERIFY(x.Launch(folder.File("run")));
    const qulonglong window = x.WaitForWindow("Quorvel", Patience);
    QVERIFY(window);
    const qulonglong chooser = x.FromFileMenu(window, "n", "Choose Level", Patience / 5);
    QVERIFY(chooser && x.Key(chooser, "Home space alt+s"));
    QVERIFY(x.WaitForNoWindow("Choose Level", Patience));
    // Read only now: the window is centred after it first shows.
    const QRect frame = x.Geometry(window);
    const QPoint client(frame.x(), frame.bottom() + 1 - 405);
    const auto cell = [&](int16_t code) {
        return client + QPoint(60 * (code % 10) + 60, 60 * (code / 10) + 60);
    };
    // Events wait their turn, so each move starts where the last one left
    // the board.
    Layout codes = folder.levels[0].codes;
    for (size_t step = 0; step < 3; ++step) {
        const std::vector<Move> moves = LegalMoves(codes);
        const Move move = moves.at(step % moves.size());
        QVERIFY(x.MouseMove(cell(CodeOf(move.from))) && x.MouseDown()
            && x.MouseMove(cell(CodeOf(move.to))) && x.MouseUp());
        codes = ApplyMove(codes, move);
    }
    // Leaving saves the game, which holds every move.
    const qulonglong question = x.FromFileMenu(window, "x", "Quorvel - Exit", Patience / 5);
    QVERIFY(question && x.Key(question, "alt+y"));
    const qulonglong prompt = x.WaitForWindow("Quorvel - Saving Game", Patience);
    QVERIFY(prompt && x.Type(prompt, "played") && x.Key(prompt, "Return"));
    const int code = x.WaitForExit(Patience);
    SavedGameRecord saved;
    QCOMPARE(ReadSavedGame(folder.File("saved/played.sav"), saved), QString());
    QCOMPARE(saved.codes, codes);
    const QString log = folder.Read("valgrind.log");
    for (const QString &line : log.split('\n')) // the figures, for the record
        if (line.contains(
                QRegularExpression("(lost|reachable|suppressed|ERROR SUMMARY|in use at exit):")))
            qInfo("%s", qPrintable(line.section(' ', 1)));
    QVERIFY2(code == 0, qPrintable(log.right(6000)));
    // Every process valgrind watched, a fork of the program's too.
    for (const auto &lost :
        QRegularExpression(R"(definitely lost: ([\d,]+) bytes)").globalMatch(log))
        QCOMPARE(lost.captured(1), "0");
}

void tst_Faults::installedGameCannotMakeThePlayersFolder_data()
{
    QTest::addColumn<QString>("dataHome"); // relative to the test's folder; empty for unset
    QTest::addColumn<QString>("home");
    QTest::addColumn<QString>("box"); // %1 the test's folder
    QTest::newRow("XDG_DATA_HOME-is-a-file")
        << "a-file"
        << "home" << StartError + "create the folder\n%1/a-file/quorvel\nNot a directory";
    QTest::newRow("home-not-writable")
        << ""
        << "locked"
        << StartError + "create the folder\n%1/locked/.local/share/quorvel\nPermission denied";
}

// An installed game as a player starts it: the folder of the program holds
// no level file and the installed data lies beside it.
void tst_Faults::installedGameCannotMakeThePlayersFolder()
{
    QFETCH(QString, dataHome);
    QFETCH(QString, home);
    QFETCH(QString, box);
    if (!privileged)
        QSKIP("needs root to act as a player who may not write");
    QTemporaryDir dir;
    QFile::setPermissions(dir.path(),
        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther
            | QFile::ExeOther);
    const QString tree = dir.filePath("usr");
    QVERIFY(QDir().mkpath(tree + "/games") && QDir().mkpath(tree + "/share/games/quorvel/skins"));
    QFile levels(tree + "/share/games/quorvel/QVL.ZHN");
    QVERIFY(levels.open(QIODevice::WriteOnly) && levels.write(LevelFile()) == 2100);
    levels.close();
    QFile(dir.filePath("a-file")).open(QIODevice::WriteOnly);
    QVERIFY(QDir().mkdir(dir.filePath("home")) && QDir().mkdir(dir.filePath("locked")));
    const auto restore = qScopeGuard([old = qgetenv("XDG_DATA_HOME"), oldHome = qgetenv("HOME")] {
        qputenv("XDG_DATA_HOME", old), qputenv("HOME", oldHome);
    });
    dataHome.isEmpty() ? qunsetenv("XDG_DATA_HOME")
                       : qputenv("XDG_DATA_HOME", QFile::encodeName(dir.filePath(dataHome)));
    qputenv("HOME", QFile::encodeName(dir.filePath(home)));

    QtPlatform platform;
    Player player;
    AsNobody nobody(true);
    const ProgramFolders folders = FindProgramFolders(tree + "/games");
    QCOMPARE(folders.data, tree + "/share/games/quorvel");
    bool ok = true;
    InitAppFiles(folders, platform, ok);
    QVERIFY(!ok);
    QCOMPARE(player.boxes, QStringList {box.arg(dir.path())});
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
