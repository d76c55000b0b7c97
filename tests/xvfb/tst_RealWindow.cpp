// The real program in a real X server, driven by a real pointer and keyboard:
// the only place where mouse capture, keyboard access and the window's
// pixels are seen exactly as a player sees them.
#include "files/LevelFile.h"
#include "files/SavedGame.h"
#include "game/Moves.h"
#include "game/Solver.h"
#include "skin/SkinLayout.h"
#include "support/XSession.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

const QString BinDir = QStringLiteral(QUORVEL_BIN_DIR);

// A program folder of the test's own, holding the built program and data.
struct Folder
{
    Folder()
    {
        QDir(dir.path()).mkdir(QStringLiteral("skins"));
        for (const char *file : {"quorvel", "QVL.ZHN", "qvl.html", "skins/default.bmp"})
            ok = QFile::copy(BinDir + QLatin1Char('/') + QLatin1String(file),
                     dir.path() + QLatin1Char('/') + QLatin1String(file))
                && ok;
        ok = QFile::setPermissions(dir.path() + QStringLiteral("/quorvel"),
                 QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner)
            && ok;
    }
    QString File(const QString &name) const { return dir.path() + QLatin1Char('/') + name; }
    QTemporaryDir dir;
    bool ok = true;
};

QImage SkinPicture(int piece)
{
    static const QImage skin = QImage(BinDir + QStringLiteral("/skins/default.bmp"))
                                   .convertToFormat(QImage::Format_RGB32);
    for (const SkinArea &area : SkinAreas)
        if (area.piece == piece)
            return skin.copy(area.rect.x, area.rect.y, area.rect.width, area.rect.height);
    return {};
}

QImage BannerArea()
{
    return QImage(BinDir + QStringLiteral("/skins/default.bmp"))
        .convertToFormat(QImage::Format_RGB32)
        .copy(0, 340, 370, 40);
}

// The client area's top-left corner on the screen: below the menu bar.
QPoint ClientOrigin(const QRect &window)
{
    return {window.x(), window.bottom() + 1 - 405};
}

QPoint CellPixel(Cell cell)
{
    return {30 + 60 * cell.col, 30 + 60 * cell.row};
}

Cell CellOfCode(int16_t code)
{
    return {int16_t(code % 10), int16_t(code / 10)};
}

// Pixel by pixel: a screenshot carries a colour space the skin file does not,
// which QImage's own comparison would count as a difference.
bool Shows(const QImage &shot, QPoint at, const QImage &picture)
{
    if (!shot.rect().contains(QRect(at, picture.size())))
        return false;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if ((shot.pixel(at.x() + x, at.y() + y) ^ picture.pixel(x, y)) & 0xFFFFFF)
                return false;
    return true;
}

bool BlockShownOn(const QImage &shot, QPoint origin, int piece, Cell topLeft)
{
    return Shows(shot, origin + CellPixel(topLeft), SkinPicture(piece));
}

// Opens a menu item by its access keys and waits for the window it opens. A
// menu that was still opening when the item's key arrived is closed and
// tried again, a bounded number of times.
qulonglong OpenFromMenu(XSession &x, qulonglong window, const QString &item, const QString &title)
{
    for (int attempt = 0; attempt < 5; ++attempt) {
        if (!x.Key(window, QStringLiteral("alt+f")))
            return 0;
        x.Key(window, item);
        if (const qulonglong opened = x.WaitForWindow(title, 3000))
            return opened;
        x.Key(window, QStringLiteral("Escape Escape"));
    }
    return 0;
}

// The window is up and drawn: its menu bar shows more than one colour.
bool WaitUntilDrawn(XSession &x, const QRect &geometry)
{
    return x.WaitForScreen([&](const QImage &shot) {
        const QImage menu
            = shot.copy(QRect(geometry.topLeft(), QSize(100, geometry.height() - 405)));
        for (int y = 0; y < menu.height(); ++y)
            for (int xx = 0; xx < menu.width(); ++xx)
                if (menu.pixel(xx, y) != menu.pixel(0, 0))
                    return true;
        return false;
    });
}

} // namespace

class tst_RealWindow : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();
    void startsEmptyAndCentred();
    void playsALevelToTheCongratulation();
    void savesChangesAndLoadsTheGameBack();

private:
    // One X server for the whole suite; every test starts its own program.
    std::unique_ptr<XSession> session;
    void DragAlong(XSession &x, QPoint origin, Cell from, std::initializer_list<Cell> path);
    qulonglong StartLevel(XSession &x, qulonglong window, int levelIndex);
};

void tst_RealWindow::DragAlong(
    XSession &x, QPoint origin, Cell from, std::initializer_list<Cell> path)
{
    const QPoint centre(30, 30);
    QVERIFY(x.MouseMove(origin + CellPixel(from) + centre));
    QVERIFY(x.MouseDown());
    for (const Cell cell : path)
        QVERIFY(x.MouseMove(origin + CellPixel(cell) + centre));
    QVERIFY(x.MouseUp());
}

qulonglong tst_RealWindow::StartLevel(XSession &x, qulonglong window, int levelIndex)
{
    const qulonglong chooser
        = OpenFromMenu(x, window, QStringLiteral("n"), QStringLiteral("Choose Level"));
    if (!chooser)
        return 0;
    QString keys = QStringLiteral("Home");
    for (int i = 0; i < levelIndex; ++i)
        keys += QStringLiteral(" Down");
    // Space selects the current row, which the list's focus made the first.
    x.Key(chooser, keys + QStringLiteral(" space Return"));
    return x.WaitForNoWindow(QStringLiteral("Choose Level")) ? chooser : 0;
}

void tst_RealWindow::initTestCase()
{
    session = std::make_unique<XSession>();
    QVERIFY2(session->Started(), "Xvfb did not start");
}

void tst_RealWindow::cleanup()
{
    session->EndProgram();
}

void tst_RealWindow::startsEmptyAndCentred()
{
    Folder folder;
    QVERIFY(folder.ok);
    XSession &x = *session;
    QVERIFY(x.Launch(folder.File("quorvel")));
    const qulonglong window = x.WaitForWindow(QStringLiteral("Quorvel"));
    QVERIFY(window);
    const QRect geometry = x.Geometry(window);
    QCOMPARE(geometry.width(), 408);
    QCOMPARE(geometry.x(), (1024 - geometry.width()) / 2);
    QCOMPARE(geometry.y(), (768 - geometry.height()) / 2);
    const QPoint origin = ClientOrigin(geometry);
    // Nothing but the background in the client area: the board waits for a game.
    QVERIFY(x.WaitForScreen([&](const QImage &shot) {
        const QImage client = shot.copy(QRect(origin, QSize(408, 405)));
        const QRgb background = client.pixel(0, 0);
        for (int y = 0; y < client.height(); ++y)
            for (int xx = 0; xx < client.width(); ++xx)
                if (client.pixel(xx, y) != background)
                    return false;
        // The menu bar above it is drawn (its captions are not background).
        const QImage menu
            = shot.copy(QRect(geometry.topLeft(), QSize(100, origin.y() - geometry.y())));
        for (int y = 0; y < menu.height(); ++y)
            for (int xx = 0; xx < menu.width(); ++xx)
                if (menu.pixel(xx, y) != menu.pixel(0, 0))
                    return true;
        return false;
    }));
    QCOMPARE(QFile(folder.File("qvl.ini")).size(), qint64(13)); // "default.bmp" CR LF
    QVERIFY(x.Key(window, QStringLiteral("alt+f x")));
    QCOMPARE(x.WaitForExit(), 0);
}

void tst_RealWindow::playsALevelToTheCongratulation()
{
    Folder folder;
    QVERIFY(folder.ok);
    LevelTable levels;
    QVERIFY(!ReadLevelFile(folder.File("QVL.ZHN"), levels));
    const std::optional<Solution> solution = Solve(levels[0].codes);
    QVERIFY(solution && solution->Steps() > 0);

    XSession &x = *session;
    QVERIFY(x.Launch(folder.File("quorvel")));
    const qulonglong window = x.WaitForWindow(QStringLiteral("Quorvel"));
    QVERIFY(window);
    const QRect geometry = x.Geometry(window);
    QVERIFY(WaitUntilDrawn(x, geometry));
    const QPoint origin = ClientOrigin(geometry);
    QVERIFY(StartLevel(x, window, 0));
    Layout codes = levels[0].codes;
    QVERIFY(x.WaitForScreen([&](const QImage &shot) {
        for (int piece = 0; piece < PieceCount; ++piece)
            if (!BlockShownOn(shot, origin, piece, CellOfCode(codes[piece])))
                return false;
        return true;
    }));

    // The first move, slowly: the block follows the held pointer from cell
    // to cell, even outside its own image, and refuses a diagonal cell.
    const SolverMove first = solution->moves.front();
    const Cell from = CellOfCode(first.from), to = CellOfCode(first.to);
    const QPoint centre(30, 30);
    QVERIFY(x.MouseMove(origin + CellPixel(from) + centre));
    QVERIFY(x.MouseDown());
    QVERIFY(x.MouseMove(origin + CellPixel(to) + centre));
    QVERIFY(x.WaitForScreen(
        [&](const QImage &shot) { return BlockShownOn(shot, origin, first.piece, to); }));
    const Cell diagonal = from.col == to.col
        ? Cell {int16_t(from.col == 0 ? 1 : from.col - 1), to.row}
        : Cell {to.col, int16_t(from.row == 0 ? 1 : from.row - 1)};
    QVERIFY(x.MouseMove(origin + CellPixel(diagonal) + centre));
    QVERIFY(x.MouseMove(origin + CellPixel(diagonal) + QPoint(40, 40)));
    QVERIFY(x.WaitForScreen(
        [&](const QImage &shot) { return BlockShownOn(shot, origin, first.piece, to); }));
    QVERIFY(x.MouseMove(origin + CellPixel(to) + centre));
    QVERIFY(x.MouseUp());
    codes[first.piece] = first.to;
    QVERIFY(x.WaitForScreen(
        [&](const QImage &shot) { return BlockShownOn(shot, origin, first.piece, to); }));

    // The rest of an optimal solution, each drop checked on the screen.
    for (size_t i = 1; i < solution->moves.size(); ++i) {
        const SolverMove &move = solution->moves[i];
        DragAlong(x, origin, CellOfCode(move.from), {CellOfCode(move.to)});
        if (i + 1 < solution->moves.size())
            QVERIFY(x.WaitForScreen([&](const QImage &shot) {
                return BlockShownOn(shot, origin, move.piece, CellOfCode(move.to));
            }));
    }
    const qulonglong message = x.WaitForWindow(QStringLiteral("Quorvel - Congratulations"));
    QVERIFY2(message, "no congratulation");
    QVERIFY(x.Key(message, QStringLiteral("Return")));
    QVERIFY(x.WaitForNoWindow(QStringLiteral("Quorvel - Congratulations")));
    // The banner stands alone in the middle of the client area.
    QVERIFY(x.WaitForScreen([&](const QImage &shot) {
        return Shows(shot, origin + QPoint(19, 182), BannerArea())
            && !BlockShownOn(shot, origin, 0, {1, 3});
    }));
    QVERIFY(x.Key(window, QStringLiteral("alt+f x")));
    QCOMPARE(x.WaitForExit(), 0); // a won game leaves without a question
}

void tst_RealWindow::savesChangesAndLoadsTheGameBack()
{
    Folder folder;
    QVERIFY(folder.ok);
    LevelTable levels;
    QVERIFY(!ReadLevelFile(folder.File("QVL.ZHN"), levels));
    const std::optional<Solution> solution = Solve(levels[0].codes);
    QVERIFY(solution && solution->Steps() >= 3);

    XSession &x = *session;
    QVERIFY(x.Launch(folder.File("quorvel")));
    const qulonglong window = x.WaitForWindow(QStringLiteral("Quorvel"));
    QVERIFY(window);
    const QRect geometry = x.Geometry(window);
    QVERIFY(WaitUntilDrawn(x, geometry));
    const QPoint origin = ClientOrigin(geometry);
    QVERIFY(StartLevel(x, window, 0));

    const SolverMove one = solution->moves[0], two = solution->moves[1];
    DragAlong(x, origin, CellOfCode(one.from), {CellOfCode(one.to)});
    QVERIFY(x.WaitForScreen(
        [&](const QImage &s) { return BlockShownOn(s, origin, one.piece, CellOfCode(one.to)); }));

    const qulonglong prompt
        = OpenFromMenu(x, window, QStringLiteral("s"), QStringLiteral("Quorvel - Saving Game"));
    QVERIFY(prompt);
    QVERIFY(x.Type(prompt, QStringLiteral("first move")));
    QVERIFY(x.Key(prompt, QStringLiteral("Return")));
    QTRY_VERIFY_WITH_TIMEOUT(QFile(folder.File("saved/first move.sav")).size() == 36, 10000);
    SavedGameRecord saved;
    QCOMPARE(ReadSavedGame(folder.File("saved/first move.sav"), saved), QString());
    QCOMPARE(saved.steps, 1);
    QCOMPARE(saved.codes[one.piece], one.to);

    DragAlong(x, origin, CellOfCode(two.from), {CellOfCode(two.to)});
    QVERIFY(x.WaitForScreen(
        [&](const QImage &s) { return BlockShownOn(s, origin, two.piece, CellOfCode(two.to)); }));

    // The second move is unsaved: loading asks first; No goes on.
    const qulonglong question
        = OpenFromMenu(x, window, QStringLiteral("l"), QStringLiteral("Quorvel - Load game"));
    QVERIFY(question);
    QVERIFY(x.Key(question, QStringLiteral("alt+n")));
    const qulonglong chooser = x.WaitForWindow(QStringLiteral("Load Game"));
    QVERIFY(chooser);
    QVERIFY(x.Key(chooser, QStringLiteral("Home space Return")));
    QVERIFY(x.WaitForNoWindow(QStringLiteral("Load Game")));
    QVERIFY(x.WaitForScreen([&](const QImage &s) {
        return BlockShownOn(s, origin, one.piece, CellOfCode(one.to))
            && BlockShownOn(s, origin, two.piece, CellOfCode(two.from));
    }));
    QVERIFY(x.Key(window, QStringLiteral("alt+f x")));
    QCOMPARE(x.WaitForExit(), 0); // a game just loaded leaves without a question
}

QTEST_GUILESS_MAIN(tst_RealWindow)
#include "tst_RealWindow.moc"
