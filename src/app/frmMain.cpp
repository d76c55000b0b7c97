// The main window's construction, start-up, skin, board display and status
// line. Moves and commands have files of their own.
#include "frmMain.h"

#include "FormGeometry.h"
#include "ImageControl.h"
#include "files/Settings.h"
#include "skin/PictureLoader.h"

#include <QCloseEvent>
#include <QDir>
#include <QEventLoop>
#include <QLabel>
#include <QMenuBar>
#include <QThread>
#include <QWindow>

#include <functional>

namespace {

QString JoinLines(std::initializer_list<QString> lines)
{
    return QStringList(lines).join(QStringLiteral("\r\n"));
}

// The outer size as the window system has it. The widget's own copy of the
// frame is only brought up to date when the window moves or changes size,
// which a window manager framing it where it stands does not do.
QSize OuterSize(QWidget &window)
{
    return window.windowHandle() ? window.windowHandle()->frameGeometry().size()
                                 : window.frameGeometry().size();
}

// Puts the window's outer frame in the middle of the screen, by the size the
// frame has now, and gives that size.
QSize CentreOnScreen(QWidget &window, const ScreenMetrics &screen)
{
    const QSize outer = OuterSize(window);
    const int left = CentredOrigin(0, screen.width, outer.width() * screen.unitsPerPixelX);
    const int top = CentredOrigin(0, screen.height, outer.height() * screen.unitsPerPixelY);
    window.move(
        RoundHalfEven(left / screen.unitsPerPixelX), RoundHalfEven(top / screen.unitsPerPixelY));
    return outer;
}

// A window manager frames the window only after it is shown. The window was
// placed by its frame's corner, so the frame going round it moves the client
// down and right, and by then the window system knows the frame's size: at
// the first event after which the outer size differs from the one the window
// was centred by, it is centred once more. Without a manager that never
// happens and nothing moves.
class CentreWhenFramed : public QObject
{
public:
    CentreWhenFramed(frmMain &form, QSize centredBy)
        : QObject(&form)
        , form_(form)
        , centredBy_(centredBy)
    {
        form.windowHandle()->installEventFilter(this);
    }

    bool eventFilter(QObject *window, QEvent *event) override
    {
        const QEvent::Type type = event->type();
        if ((type == QEvent::Expose || type == QEvent::Move || type == QEvent::Resize)
            && OuterSize(form_) != centredBy_) {
            window->removeEventFilter(this);
            CentreOnScreen(form_, form_.Screen());
            deleteLater();
        }
        return false;
    }

private:
    frmMain &form_;
    QSize centredBy_;
};

// Reads the picture on a thread of its own: the window repaints meanwhile
// and Exit still works, while every other command waits for the picture.
// `left` tells whether the window was closed before the picture came.
QImage ReadPictureAside(
    QMainWindow &window, const QAction *exit, bool &left, const std::function<QImage()> &read)
{
    const bool shown = window.isVisible();
    QList<std::pair<QAction *, bool>> paused;
    for (QAction *action : window.findChildren<QAction *>())
        if (action != exit && !action->menu())
            paused.append({action, action->isEnabled()}), action->setEnabled(false);
    QImage picture;
    QThread *reader = QThread::create([&picture, &read] { picture = read(); });
    QEventLoop waiting;
    QObject::connect(reader, &QThread::finished, &waiting, &QEventLoop::quit);
    reader->start();
    // Leaving the program ends the wait early; the reader still ends first.
    if (!reader->isFinished())
        waiting.exec();
    reader->wait();
    delete reader;
    for (const auto &[action, enabled] : paused)
        action->setEnabled(enabled);
    left = shown && !window.isVisible();
    return picture;
}

} // namespace

frmMain::frmMain(Platform &platform, const ProgramFolders &folders)
    : levels(ClearedLevels())
    , platform_(platform)
    , folders_(folders)
{
    setWindowTitle(QStringLiteral("Quorvel"));
    // A fixed border and no maximize button: the layout is absolute.
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
        | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint
        | Qt::MSWindowsFixedSizeDialogHint);
    auto *client = new QWidget(this);
    client->setFixedSize(PxSize(6120, 6075));
    setCentralWidget(client);
    BuildMenus();
    BuildImages();
    setFixedSize(sizeHint());
}

frmMain::~frmMain() = default;

void frmMain::BuildMenus()
{
    QMenu *mnuFile = menuBar()->addMenu(QStringLiteral("&File"));
    mnuNewGame = mnuFile->addAction(QStringLiteral("&New Game"), this, &frmMain::mnuNewGame_Click);
    mnuLoadGame
        = mnuFile->addAction(QStringLiteral("&Load Game"), this, &frmMain::mnuLoadGame_Click);
    mnuSaveGame
        = mnuFile->addAction(QStringLiteral("&Save Game"), this, &frmMain::mnuSaveGame_Click);
    mnuFile->addSeparator();
    mnuSetSkin = mnuFile->addAction(QStringLiteral("Set S&kin"), this, &frmMain::mnuSetSkin_Click);
    mnuFile->addSeparator();
    mnuExit = mnuFile->addAction(QStringLiteral("E&xit"), this, &frmMain::mnuExit_Click);
    QMenu *mnuGame = menuBar()->addMenu(QStringLiteral("&Game"));
    mnuUndo = mnuGame->addAction(QStringLiteral("&Undo"), this, &frmMain::mnuUndo_Click);
    mnuUndo->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
    mnuRedo = mnuGame->addAction(QStringLiteral("&Redo"), this, &frmMain::mnuRedo_Click);
    mnuRedo->setShortcuts(
        {QKeySequence(Qt::CTRL | Qt::Key_Y), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)});
    mnuRestart
        = mnuGame->addAction(QStringLiteral("Re&start Level"), this, &frmMain::mnuRestart_Click);
    mnuRestart->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    mnuGame->addSeparator();
    mnuHint = mnuGame->addAction(QStringLiteral("&Hint"), this, &frmMain::mnuHint_Click);
    mnuHint->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_H));
    mnuFewestSteps = mnuGame->addAction(QStringLiteral("Show &Fewest Steps Left"));
    mnuFewestSteps->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_F));
    mnuFewestSteps->setCheckable(true);
    connect(mnuFewestSteps, &QAction::triggered, this, &frmMain::mnuFewestSteps_Click);
    UpdateGameMenu();
    QMenu *mnuHelp = menuBar()->addMenu(QStringLiteral("&Help"));
    mnuHTP = mnuHelp->addAction(QStringLiteral("H&ow to Play"), this, &frmMain::mnuHTP_Click);
    mnuHelp->addSeparator();
    mnuAbout = mnuHelp->addAction(QStringLiteral("&About"), this, &frmMain::mnuAbout_Click);
    mnuFile->setObjectName(QStringLiteral("mnuFile"));
    mnuGame->setObjectName(QStringLiteral("mnuGame"));
    mnuHelp->setObjectName(QStringLiteral("mnuHelp"));
}

void frmMain::BuildImages()
{
    QWidget *client = centralWidget();
    // Created in drawing order: the frame below the blocks, the banner on top.
    imgUpFrame = new ImageControl(client);
    imgLeftFrame = new ImageControl(client);
    imgRightFrame = new ImageControl(client);
    imgExit = new ImageControl(client);
    imgTitle = new ImageControl(client);
    for (int16_t i = 0; i < PieceCount; ++i)
        imgPieces[i] = new BlockImage(*this, i, client);
    imgCong = new ImageControl(client);

    const QFont font = SansFont(9.75);
    lblStatus = new QLabel(client);
    lblStatus->setGeometry(PxRect(120, 5640, 2895, 375));
    lblSteps = new QLabel(client);
    lblSteps->setGeometry(PxRect(3000, 5640, 3015, 375));
    for (QLabel *label : {lblStatus, lblSteps}) {
        label->setFont(font);
        label->setTextFormat(Qt::PlainText);
        label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    }
}

QString frmMain::LevelPath() const
{
    return folders_.data + QStringLiteral("/QVL.ZHN");
}

QString frmMain::SkinPath(const QString &skinName) const
{
    return folders_.SkinPath(skinName);
}

QString frmMain::SettingsPath() const
{
    return folders_.player + QStringLiteral("/qvl.ini");
}

void frmMain::Form_Load()
{
    // Placed before it is shown, so that a window manager maps it where it
    // belongs and reads its position the same way both times it is placed.
    const QSize centredBy = CentreOnScreen(*this, Screen());
    show();
    // Some platforms know the frame as soon as the window is shown.
    if (OuterSize(*this) != centredBy)
        CentreOnScreen(*this, Screen());
    else
        new CentreWhenFramed(*this, centredBy);
    mnuSaveGame->setEnabled(false);
    ReadSettings();
    SetShowFewestStepsLeft(progress_.FewestStepsLeftShown());
    HideBoard();
    LoadLevels();
    if (ended_)
        return;
    ApplySkin(absFilename);
    if (ended_)
        return;
    game.steps = 0;
    gameChanged = false;
}

void frmMain::ReadSettings()
{
    // Start-up has made sure the file exists; should it have gone since, the
    // empty setting takes the skin error path.
    ReadSkinSetting(SettingsPath(), absFilename);
}

void frmMain::LoadLevels()
{
    const FileError error = ReadLevelFile(LevelPath(), levels);
    if (!error)
        return;
    platform_.MsgBox(this,
        JoinLines({QStringLiteral("An error has occurred while attempting loading data file"),
            QDir::toNativeSeparators(folders_.data + QStringLiteral("/QVL.zhn")),
            QString::number(error.number) + QLatin1Char(' ') + error.description}),
        Buttons::Ok, Icon::Critical, QStringLiteral("Quorvel - Error"));
    EndProgram();
}

void frmMain::ApplySkin(const QString &skinName)
{
    const QString path = SkinPath(skinName);
    bool cut = false;
    if (IsPlainFileName(skinName)) {
        bool left = false;
        const qreal ratio = devicePixelRatioF();
        qreal scale = 1;
        QImage fine;
        // The sharper rendering for a scaled screen is read aside too: a
        // metafile is drawn again at the screen's resolution.
        const QImage read = ReadPictureAside(*this, mnuExit, left, [&] {
            QImage picture = LoadPicture(path);
            fine = LoadFinePicture(path, picture, ratio, scale);
            return picture;
        });
        if (left)
            return; // the player left meanwhile: nothing is applied or stored
        piclipSkin.SetPicture(read);
        cut = !piclipSkin.Picture().isNull();
        if (!fine.isNull())
            piclipSkin.SetFinePicture(fine, scale);
        // Every picture is cut before any image changes: a skin too small
        // for one of them leaves the board as it was.
        std::array<QPixmap, SkinAreas.size()> cuts;
        for (size_t i = 0; cut && i < SkinAreas.size(); ++i) {
            piclipSkin.SetClip(SkinAreas[i].rect);
            cuts[i] = piclipSkin.Clip();
            cut = !cuts[i].isNull();
        }
        for (size_t i = 0; cut && i < SkinAreas.size(); ++i)
            SkinImage(SkinAreas[i])->SetPicture(cuts[i]);
    }
    if (!cut) {
        platform_.MsgBox(this,
            JoinLines({QStringLiteral("An error has occurred while attempting to load picture "),
                QDir::toNativeSeparators(path),
                QStringLiteral("Make sure the picture exists and is of a correct format.")}),
            Buttons::Ok, Icon::Critical, QStringLiteral("Quorvel - ERROR"));
        EndProgram();
        return;
    }
    if (const FileError error = WriteSkinSetting(SettingsPath(), skinName))
        platform_.MsgBox(this,
            JoinLines(
                {QStringLiteral("An error has occurred while attempting to save the skin setting"),
                    QDir::toNativeSeparators(SettingsPath()), error.description}),
            Buttons::Ok, Icon::Critical, QStringLiteral("Quorvel - Error"));
}

void frmMain::ShowSecondPictures()
{
    piclipSkin.SetClip(SecondBigBlock);
    imgPieces[0]->SetPicture(piclipSkin.Clip());
    piclipSkin.SetClip(SecondSmallBlock);
    for (int16_t i = 6; i <= 9; ++i)
        imgPieces[i]->SetPicture(piclipSkin.Clip());
}

ImageControl *frmMain::SkinImage(const SkinArea &area) const
{
    const std::array<ImageControl *, 6> frame
        = {imgUpFrame, imgLeftFrame, imgRightFrame, imgExit, imgTitle, imgCong};
    return area.piece >= 0 ? imgPieces[area.piece] : frame[size_t(area.target)];
}

void frmMain::PositionFrame()
{
    const ScreenMetrics s = Screen();
    for (const SkinArea &area : SkinAreas) {
        if (area.target >= SkinTarget::Cong)
            continue;
        ImageControl *image = SkinImage(area);
        image->SetLeft(UnitsOf(area.place.x, s.unitsPerPixelX), s.unitsPerPixelX);
        image->SetTop(UnitsOf(area.place.y, s.unitsPerPixelY), s.unitsPerPixelY);
    }
}

void frmMain::PlacePieces()
{
    game.MarkAllPieces();
    PositionFrame();
    const ScreenMetrics s = Screen();
    for (int16_t i = 0; i < PieceCount; ++i) {
        imgPieces[i]->SetLeft(LayoutEdge(game.pieces[i].col, s.unitsPerPixelX), s.unitsPerPixelX);
        imgPieces[i]->SetTop(LayoutEdge(game.pieces[i].row, s.unitsPerPixelY), s.unitsPerPixelY);
    }
}

void frmMain::ShowBoard()
{
    for (BlockImage *image : imgPieces)
        image->show();
    for (ImageControl *image : {imgUpFrame, imgLeftFrame, imgRightFrame, imgExit, imgTitle})
        image->show();
}

void frmMain::HideBoard()
{
    for (BlockImage *image : imgPieces)
        image->hide();
    for (ImageControl *image :
        {imgUpFrame, imgLeftFrame, imgRightFrame, imgExit, imgTitle, imgCong})
        image->hide();
}

void frmMain::ShowCongratulation()
{
    const ScreenMetrics s = Screen();
    const QSize inner = centralWidget()->size();
    imgCong->SetLeft(float(CentredOrigin(0, inner.width() * s.unitsPerPixelX,
                         imgCong->WidthUnits(s.unitsPerPixelX))),
        s.unitsPerPixelX);
    imgCong->SetTop(float(CentredOrigin(0, inner.height() * s.unitsPerPixelY,
                        imgCong->HeightUnits(s.unitsPerPixelY))),
        s.unitsPerPixelY);
    imgCong->show();
    gameChanged = false;
    mnuSaveGame->setEnabled(false);
}

void frmMain::ShowStatus()
{
    const int16_t number = int16_t(game.levelIndex + 1);
    lblStatus->setText(QStringLiteral("Level: ") + QString::number(number) + QStringLiteral(" - ")
        + levels[game.levelIndex].levelName);
    lblSteps->setText(QStringLiteral("Steps: ") + QString::number(game.steps)
        + (showFewest_ ? FewestStepsLeftText() : QString()));
    statusShown_ = true;
}

void frmMain::SetUpBoard(const Layout &codes)
{
    FinishGlide();
    Select(-1);
    history.Clear();
    playing_ = true;
    UpdateGameMenu();
    game.ClearBoard();
    game.DecodePositions(codes);
    PlacePieces();
    ShowBoard();
    ShowStatus();
}

void frmMain::EndProgram()
{
    ending_ = true;
    close();
    ended_ = true;
    // Whatever the close prompt answered, the program ends here.
    if (isVisible())
        hide();
}

void frmMain::closeEvent(QCloseEvent *event)
{
    bool cancel = false;
    Form_QueryUnload(cancel);
    if (cancel && !ending_)
        event->ignore();
    else
        event->accept();
}
