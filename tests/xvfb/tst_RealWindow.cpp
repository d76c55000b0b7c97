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

const QString BinDir = QUORVEL_BIN_DIR;

const QImage &Skin()
{
    static const QImage skin
        = QImage(BinDir + "/skins/default.bmp").convertToFormat(QImage::Format_RGB32);
    return skin;
}

QImage SkinPicture(int piece)
{
    for (const SkinArea &area : SkinAreas)
        if (area.piece == piece)
            return Skin().copy(area.rect.x, area.rect.y, area.rect.width, area.rect.height);
    return {};
}

QPoint CellPixel(int16_t code)
{
    return {30 + 60 * (code % 10), 30 + 60 * (code / 10)};
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

bool Uniform(const QImage &image)
{
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, y) != image.pixel(0, 0))
                return false;
    return true;
}

} // namespace

class tst_RealWindow : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void startsEmptyAndCentred();
    void playsALevelToTheCongratulation();
    void savesChangesAndLoadsTheGameBack();

private:
    // The pressed block wears the selection frame, five pixels wide: only
    // the picture inside it is compared.
    bool BlockOn(const QImage &shot, int piece, int16_t code) const
    {
        const QImage picture = SkinPicture(piece);
        return Shows(shot, origin + CellPixel(code) + QPoint(5, 5),
            picture.copy(picture.rect().adjusted(5, 5, -5, -5)));
    }
    bool WaitForBlock(int piece, int16_t code)
    {
        return x->WaitForScreen([&](const QImage &shot) { return BlockOn(shot, piece, code); });
    }
    void Drag(std::initializer_list<int16_t> cells);
    bool StartFirstLevel();
    int Leave();

    // One X server for the whole suite; every test starts its own program
    // from a program folder of its own.
    std::unique_ptr<XSession> x;
    std::unique_ptr<QTemporaryDir> folder;
    LevelTable levels;
    std::vector<Move> moves; // an optimal solution of the first level
    qulonglong window = 0;
    QRect geometry;
    QPoint origin; // the client area's top-left corner, below the menu bar
};

void tst_RealWindow::initTestCase()
{
    x = std::make_unique<XSession>();
    QVERIFY2(x->Started(), "Xvfb did not start");
    QVERIFY(!ReadLevelFile(BinDir + "/QVL.ZHN", levels));
    const std::optional<Solution> solution = Solve(levels[0].codes);
    QVERIFY(solution && solution->Steps() >= 3);
    moves = solution->moves;
}

void tst_RealWindow::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(folder->path()).mkdir("skins"));
    for (const char *file : {"quorvel", "QVL.ZHN", "skins/default.bmp"})
        QVERIFY(QFile::copy(BinDir + '/' + file, folder->filePath(file)));
    QVERIFY(x->Launch(folder->filePath("quorvel")));
    window = x->WaitForWindow("Quorvel");
    QVERIFY(window);
    geometry = x->Geometry(window);
    origin = {geometry.x(), geometry.bottom() + 1 - 405};
    // Up and drawn: the menu bar shows its captions.
    QVERIFY(x->WaitForScreen([&](const QImage &shot) {
        return !Uniform(
            shot.copy(QRect(geometry.topLeft(), QSize(100, origin.y() - geometry.y()))));
    }));
}

void tst_RealWindow::cleanup()
{
    x->EndProgram();
}

void tst_RealWindow::Drag(std::initializer_list<int16_t> cells)
{
    QVERIFY(x->MouseMove(origin + CellPixel(*cells.begin()) + QPoint(30, 30)));
    QVERIFY(x->MouseDown());
    for (const int16_t cell : cells)
        QVERIFY(x->MouseMove(origin + CellPixel(cell) + QPoint(30, 30)));
    QVERIFY(x->MouseUp());
}

bool tst_RealWindow::StartFirstLevel()
{
    const qulonglong chooser = x->FromFileMenu(window, "n", "Choose Level");
    // Space selects the current row, which the list's focus made the first;
    // Return would not choose it, as neither button is the default.
    return chooser && x->Key(chooser, "Home space alt+s") && x->WaitForNoWindow("Choose Level");
}

// File > Exit; the exit code, or -1 when the program did not end. A key
// that came before the menu was open is tried again.
int tst_RealWindow::Leave()
{
    for (int attempt = 0; attempt < 5; ++attempt) {
        x->Key(window, "alt+f");
        x->Key(window, "x");
        if (const int code = x->WaitForExit(3000); code != -1)
            return code;
        x->Key(window, "Escape Escape");
    }
    return -1;
}

void tst_RealWindow::startsEmptyAndCentred()
{
    QCOMPARE(geometry.width(), 408);
    QCOMPARE(geometry.x(), (1024 - geometry.width()) / 2);
    QCOMPARE(geometry.y(), (768 - geometry.height()) / 2);
    // Nothing but the background in the client area: the board waits for a game.
    QVERIFY(x->WaitForScreen(
        [&](const QImage &shot) { return Uniform(shot.copy(QRect(origin, QSize(408, 405)))); }));
    QCOMPARE(QFile(folder->filePath("qvl.ini")).size(), qint64(13)); // "default.bmp" CR LF
    QCOMPARE(Leave(), 0);
}

void tst_RealWindow::playsALevelToTheCongratulation()
{
    QVERIFY(StartFirstLevel());
    QVERIFY(x->WaitForScreen([&](const QImage &shot) {
        for (int piece = 0; piece < PieceCount; ++piece)
            if (!BlockOn(shot, piece, levels[0].codes[piece]))
                return false;
        return true;
    }));
    // The first move, slowly: the block follows the held pointer from cell
    // to cell, even outside its own image, and refuses a diagonal cell.
    const Move first = moves.front();
    // A cell one step across the line of the move: diagonal from the start.
    const bool vertical = CodeOf(first.from) % 10 == CodeOf(first.to) % 10;
    const int16_t diagonal = int16_t(CodeOf(first.to)
        + (vertical ? (CodeOf(first.from) % 10 == 0 ? 1 : -1)
                    : (CodeOf(first.from) < 10 ? 10 : -10)));
    QVERIFY(x->MouseMove(origin + CellPixel(CodeOf(first.from)) + QPoint(30, 30)));
    QVERIFY(x->MouseDown());
    QVERIFY(x->MouseMove(origin + CellPixel(CodeOf(first.to)) + QPoint(30, 30)));
    QVERIFY(WaitForBlock(first.piece, CodeOf(first.to)));
    QVERIFY(x->MouseMove(origin + CellPixel(diagonal) + QPoint(30, 30)));
    QVERIFY(x->MouseMove(origin + CellPixel(diagonal) + QPoint(40, 40)));
    QVERIFY(WaitForBlock(first.piece, CodeOf(first.to)));
    QVERIFY(x->MouseMove(origin + CellPixel(CodeOf(first.to)) + QPoint(30, 30)));
    QVERIFY(x->MouseUp());
    // The rest of the solution, each drop checked on the screen.
    for (size_t i = 1; i < moves.size(); ++i) {
        Drag({CodeOf(moves[i].from), CodeOf(moves[i].to)});
        if (i + 1 < moves.size())
            QVERIFY(WaitForBlock(moves[i].piece, CodeOf(moves[i].to)));
    }
    const qulonglong message = x->WaitForWindow("Quorvel - Congratulations");
    QVERIFY2(message, "no congratulation");
    QVERIFY(x->Key(message, "Return"));
    QVERIFY(x->WaitForNoWindow("Quorvel - Congratulations"));
    // The banner stands alone in the middle of the client area.
    QVERIFY(x->WaitForScreen([&](const QImage &shot) {
        return Shows(shot, origin + QPoint(19, 182), Skin().copy(0, 340, 370, 40))
            && !BlockOn(shot, 0, 31);
    }));
    QCOMPARE(Leave(), 0); // a won game leaves without a question
}

void tst_RealWindow::savesChangesAndLoadsTheGameBack()
{
    QVERIFY(StartFirstLevel());
    const Move one = moves[0], two = moves[1];
    Drag({CodeOf(one.from), CodeOf(one.to)});
    QVERIFY(WaitForBlock(one.piece, CodeOf(one.to)));
    const qulonglong prompt = x->FromFileMenu(window, "s", "Quorvel - Saving Game");
    QVERIFY(prompt);
    QVERIFY(x->Type(prompt, "first move"));
    QVERIFY(x->Key(prompt, "Return"));
    const QString saved = folder->filePath("saved/first move.sav");
    QTRY_VERIFY_WITH_TIMEOUT(QFile(saved).size() == 36, 10000);
    SavedGameRecord record;
    QCOMPARE(ReadSavedGame(saved, record), QString());
    QCOMPARE(record.steps, 1);
    QCOMPARE(record.codes[one.piece], CodeOf(one.to));
    Drag({CodeOf(two.from), CodeOf(two.to)});
    QVERIFY(WaitForBlock(two.piece, CodeOf(two.to)));
    // The second move is unsaved: loading asks first; No goes on.
    const qulonglong question = x->FromFileMenu(window, "l", "Quorvel - Load game");
    QVERIFY(question);
    QVERIFY(x->Key(question, "alt+n"));
    const qulonglong chooser = x->WaitForWindow("Load Game");
    QVERIFY(chooser);
    // The confirm button comes after Cancel in the tab order.
    QVERIFY(x->Key(chooser, "Home space Tab Tab space"));
    QVERIFY(x->WaitForScreen([&](const QImage &shot) {
        return BlockOn(shot, one.piece, CodeOf(one.to))
            && BlockOn(shot, two.piece, CodeOf(two.from));
    }));
    QCOMPARE(Leave(), 0); // a game just loaded leaves without a question
}

QTEST_GUILESS_MAIN(tst_RealWindow)
#include "tst_RealWindow.moc"
